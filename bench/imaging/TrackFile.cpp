// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrackFile.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "io/UvxWriter.h"

namespace lumo::bench {

namespace {

constexpr int kBaselines = 45;
constexpr double kLongest = 1e-3;  // seconds of light travel

void require(const Status& status) {
  if (!status.ok()) throw std::runtime_error(status.text());
}

}  // namespace

TrackFile::TrackFile(std::uint32_t ifs, std::uint32_t channels, std::uint64_t groups)
    : path_(std::filesystem::temp_directory_path() / ("lumo-bench-" + std::to_string(::getpid()) + ".uvx")) {
  UvxContent content;
  content.shape = {ifs, channels, 1};
  content.sources = {{1, "BENCH", UvxFrame::kIcrs, 0, 0, 2000.0}};
  content.products = {1};
  content.selections = {{1, {}}};
  for (std::uint32_t i = 0; i < ifs; ++i)
    content.selections[0].bands.push_back({kTrackFrequency * (1 + 0.08 * i / ifs), 1e6});
  UvxWriter writer;
  require(writer.begin(path_, content));
  const std::vector<AUVXComplex> values(std::size_t{ifs} * channels, AUVXComplex(1.0, 0.5, 2.0));
  for (std::uint64_t g = 0; g < groups; ++g) {
    const auto baseline = static_cast<double>(g % kBaselines);
    const double length = kLongest * (1 + baseline) / kBaselines;
    const double hour = 6.28 * static_cast<double>(g) / static_cast<double>(groups) + 0.7 * baseline;
    UvxRecord record;
    record.freqSel = 1;
    record.source = 1;
    record.u = static_cast<float>(length * std::cos(hour));
    record.v = static_cast<float>(0.6 * length * std::sin(hour));
    require(writer.append(record, values));
  }
  require(writer.finish());
}

TrackFile::~TrackFile() {
  std::remove(path_.c_str());
}

VisibilityInputs TrackFile::inputs() const {
  AUVXFile file;
  if (file.Open(path_, AFile::kRead) == 0) throw std::runtime_error(file.status().text());
  VisibilityInputs inputs;
  ABitArray all(1);
  all = 1;
  inputs.names.InsertAt(0, path_);
  inputs.tables.InsertAt(0, AUVXFqTbl(file, 1));
  inputs.selections.InsertAt(0, all);
  inputs.mixes.InsertAt(0, AStokesMix(StokesQuantity::kI, 0));
  inputs.sources.InsertAt(0, 1);
  return inputs;
}

ABMakeParameters trackParameters(std::int32_t halfSize) {
  ABMakeParameters parameters;
  parameters.halfSizeX = parameters.halfSizeY = halfSize;
  parameters.uvLimitU = parameters.uvLimitV = ABMakeParameters::kDefaultUvLimit;
  parameters.uvScaleU = 1.09 * kLongest * kTrackFrequency;
  parameters.uvScaleV = 0.66 * kLongest * kTrackFrequency;
  return parameters;
}

}  // namespace lumo::bench
