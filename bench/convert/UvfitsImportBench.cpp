// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "../../tests/convert/UvfitsBuilder.h"
#include "convert/UvfitsImporter.h"

namespace lumo {
namespace {

/// Writes a file of 8 IFs x 16 channels x 4 products with `groups` groups; gives its size.
std::size_t writeInput(const std::string& path, std::int64_t groups) {
  test::UvfitsBuilder builder;
  builder.axis("IF").pixels = 8;
  builder.axis("FREQ").pixels = 16;
  builder.axis("STOKES").pixels = 4;
  builder.tables.push_back(test::frequencyTable(8));
  std::vector<double> row = {1};
  for (int i = 0; i < 8; ++i) row.push_back(32e6 * i);
  row.resize(1 + 3 * 8, 2e6);
  row.resize(1 + 4 * 8, 1);
  builder.tables.back().numbers(row);
  builder.edit = [groups](test::FitsHeader& header) { header.whole("GCOUNT", groups); };
  const std::size_t header = builder.primaryBytes();
  builder.add(0.01, 0.02, 258, 1, 0.5, 3);
  const std::string whole = builder.bytes();
  const std::size_t groupBytes = 4 * (builder.parameterNames.size() + builder.numbers());
  std::ofstream stream(path, std::ios::binary);
  stream << whole.substr(0, header);
  for (std::int64_t i = 0; i < groups; ++i) stream << whole.substr(header, groupBytes);
  std::string padding;
  padding.resize((2880 - groupBytes * static_cast<std::size_t>(groups) % 2880) % 2880);
  stream << padding << builder.tables.back().bytes();
  return static_cast<std::size_t>(stream.tellp());
}

void BM_UvfitsImport(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / "lumo-bench-uvfits";
  std::filesystem::create_directories(folder);
  const std::string input = (folder / "input.uvf").string();
  const std::size_t bytes = writeInput(input, state.range(0));
  const ImportOptions options{folder.string(), "", {}};
  for (auto _ : state) {
    ImportReport report;
    const Status status = importUvfits(input, options, RunIndicators{}, report);
    if (!status.ok() || report.files.at(0).records != static_cast<std::uint64_t>(state.range(0)))
      state.SkipWithError("the import failed");
    benchmark::DoNotOptimize(report);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
  state.counters["visibilities/s"] = benchmark::Counter(static_cast<double>(state.range(0)) * 512,
                                                        benchmark::Counter::kIsIterationInvariantRate);
  std::filesystem::remove_all(folder);
}
BENCHMARK(BM_UvfitsImport)->Arg(100)->Arg(30000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace lumo
