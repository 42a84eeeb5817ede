// SPDX-License-Identifier: GPL-3.0-or-later

// lumo_uvx_to_ms OUT.ms IN.uvx...
//
// Writes simulated UVX files as one Measurement Set for programs that read nothing else. Every IF of every
// file becomes a spectral window. The files must hold the same baselines at the same times, as `lumo-cli
// simulate` writes the bands of one observation, and one weight for all channels of an IF.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "MsWriter.h"
#include "core/LittleEndian.h"
#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXSources.h"
#include "io/UvxLayout.h"

namespace lumo::bench {
namespace {

constexpr double kLightSpeed = 299792458.0;
constexpr double kDaySeconds = 86400;

void require(bool condition, const std::string& complaint) {
  if (!condition) throw std::runtime_error(complaint);
}

int casacoreCode(std::int32_t product) {
  switch (product) {
    case 1:
      return 1;
    case -1:
      return 5;
    case -2:
      return 8;
    case -5:
      return 9;
    case -6:
      return 12;
    default:
      throw std::runtime_error("a product other than I, RR, LL, XX and YY");
  }
}

std::vector<MsSetup::Antenna> antennasOf(const AUVXFile& file) {
  const auto table = file.GetTable("AN");
  require(table.has_value(), "no table of antennas");
  std::vector<MsSetup::Antenna> antennas;
  for (std::size_t row = 0; row + kAntennaRowBytes <= table->size(); row += kAntennaRowBytes) {
    const std::uint8_t* const at = table->data() + row;
    require(loadLittle<std::int32_t>(at) == static_cast<std::int32_t>(antennas.size()) + 1,
            "antennas not in order");
    std::string name(reinterpret_cast<const char*>(at + 4), kNameBytes);
    name.erase(name.find_last_not_of(' ') + 1);
    const std::uint8_t* const place = at + 8 + kNameBytes;
    antennas.push_back(
        {name, {loadLittle<double>(place), loadLittle<double>(place + 8), loadLittle<double>(place + 16)}});
  }
  return antennas;
}

class Converter {
 public:
  explicit Converter(const std::vector<std::string>& inputs) {
    for (const std::string& input : inputs) {
      files_.push_back(std::make_unique<AUVXFile>());
      require(files_.back()->Open(input, AFile::kRead) == 1, files_.back()->status().text());
      const AUVXFile& file = *files_.back();
      require(file.shape() == files_[0]->shape() && file.groupCount() == files_[0]->groupCount(),
              input + ": another shape or number of groups than the first file's");
      addWindows(file);
    }
    const AUVXFile& first = *files_[0];
    const AUVXSources sources(first);
    setup_.field = sources[0].name;
    setup_.direction = {sources[0].rightAscension * std::numbers::pi / 180,
                        sources[0].declination * std::numbers::pi / 180};
    setup_.antennas = antennasOf(first);
    const auto products = first.GetTable("ST");
    for (std::uint32_t k = 0; k < first.shape().products; ++k)
      setup_.products.push_back(
          casacoreCode(loadLittle<std::int32_t>(products->data() + kProductRowBytes * k)));
    const double start = UvxRecord::load(first.groupAt(0)).time;
    for (std::uint64_t g = 0; g < first.groupCount(); ++g) {
      const double time = UvxRecord::load(first.groupAt(g)).time;
      if (time == start) continue;
      setup_.intervalSeconds = (time - start) * kDaySeconds;
      break;
    }
  }

  /// Gives the number of rows.
  std::size_t write(const std::string& path) {
    const std::uint64_t groups = files_[0]->groupCount();
    const std::size_t rows = groups * setup_.windows.size();
    MsWriter writer(path, setup_, rows);
    for (std::uint64_t g = 0; g < groups; ++g) {
      const UvxRecord head = UvxRecord::load(files_[0]->groupAt(g));
      for (std::size_t f = 0; f < files_.size(); ++f) {
        const UvxRecord record = UvxRecord::load(files_[f]->groupAt(g));
        require(record.baseline == head.baseline && record.time == head.time,
                "the files hold different baselines or times");
        require(!record.isFlagged(), "a flagged group");
        addRows(writer, static_cast<int>(f), record, files_[f]->groupAt(g) + UvxRecord::kBytes);
        if (g % 4096 == 0) files_[f]->releaseBefore(g);
      }
    }
    writer.finish();
    return rows;
  }

 private:
  void addWindows(const AUVXFile& file) {
    const AUVXFqTbl table(file, AUVXSources(file)[0].id);
    require(table.GetFreqSels() == 1, "more than one frequency selection");
    for (int i = 0; i < table.GetIFs(); ++i) {
      MsSetup::Window window;
      for (int c = 0; c < table.GetChannels(); ++c) window.frequencies.push_back(table.GetFreq(c, i, 0));
      window.width = table.selections()[0].bands[static_cast<std::size_t>(i)].increment;
      setup_.windows.push_back(window);
    }
  }

  void addRows(MsWriter& writer, int file, const UvxRecord& record, const std::uint8_t* values) {
    const UvxShape& shape = files_[0]->shape();
    const std::size_t perIf = std::size_t{shape.channels} * shape.products;
    row_.antenna1 = record.baseline / 256 - 1;
    row_.antenna2 = record.baseline % 256 - 1;
    row_.time = record.time * kDaySeconds;
    row_.uvw = {record.u * kLightSpeed, record.v * kLightSpeed, record.w * kLightSpeed};
    row_.data.resize(perIf);
    row_.flags.resize(perIf);
    row_.weights.resize(shape.products);
    for (std::uint32_t i = 0; i < shape.ifs; ++i, values += perIf * kVisibilityBytes) {
      row_.window = file * static_cast<int>(shape.ifs) + static_cast<int>(i);
      for (std::uint32_t k = 0; k < shape.products; ++k)
        row_.weights[k] = std::abs(loadLittle<float>(values + k * kVisibilityBytes + 8));
      for (std::size_t n = 0; n < perIf; ++n) {
        const std::uint8_t* const at = values + n * kVisibilityBytes;
        const auto weight = loadLittle<float>(at + 8);
        require(std::abs(weight) == row_.weights[n % shape.products], "channels of different weights");
        row_.data[n] = {loadLittle<float>(at), loadLittle<float>(at + 4)};
        row_.flags[n] = weight > 0 ? 0 : 1;
      }
      writer.add(row_);
    }
  }

  std::vector<std::unique_ptr<AUVXFile>> files_;
  MsSetup setup_;
  MsRow row_;
};

}  // namespace
}  // namespace lumo::bench

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: lumo_uvx_to_ms OUT.ms IN.uvx...\n");
    return 2;
  }
  try {
    lumo::bench::Converter converter(std::vector<std::string>(argv + 2, argv + argc));
    std::printf("%s: %zu rows\n", argv[1], converter.write(argv[1]));
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "lumo_uvx_to_ms: %s\n", failure.what());
    return 1;
  }
  return 0;
}
