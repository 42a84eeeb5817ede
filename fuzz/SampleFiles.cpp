// SPDX-License-Identifier: GPL-3.0-or-later
#include "SampleFiles.h"

#include <vector>

#include "FuzzSupport.h"
#include "io/MapProduct.h"

namespace lumo::fuzz {

UvxContent sampleContent(std::uint32_t ifs, std::uint32_t channels, std::int32_t selections) {
  UvxContent content;
  content.shape = {ifs, channels, 2};
  content.unit = "JY";
  content.sources = {{1, "SAMPLE", UvxFrame::kIcrs, 120.5, 33.25, 2000.0}};
  for (std::int32_t s = 1; s <= selections; ++s) {
    UvxSelection selection{s, {}};
    for (std::uint32_t i = 0; i < ifs; ++i) selection.bands.push_back({4.8e9 + 1e8 * s + 8e6 * i, 5e5});
    content.selections.push_back(selection);
  }
  content.products = {-1, -2};
  content.antennas = {{1, "BR", -2112065.0, -3705356.5, 4726813.7},
                      {2, "FD", -1324009.0, -5332182.0, 3231962.0}};
  content.history = {"a sample"};
  return content;
}

void writeSampleUvx(const std::string& name, const UvxContent& content, int groups) {
  UvxWriter writer;
  bool written = writer.begin(name, content).ok();
  for (int g = 0; written && g < groups; ++g) {
    UvxRecord record;
    const auto turn = static_cast<std::size_t>(g) % content.selections.size();
    record.freqSel = static_cast<std::int8_t>(content.selections[turn].id);
    record.baseline = 258;
    record.u = 0.002F * static_cast<float>(g + 1);
    record.v = -0.001F * static_cast<float>(g);
    record.time = 59000.0 + g / 1440.0;
    record.source = static_cast<std::int16_t>(content.sources[0].id);
    const std::vector<AUVXComplex> values(content.shape.visibilities(), AUVXComplex(1.0, 0.25 * g, 2.0));
    written = writer.append(record, values).ok();
  }
  require(written && writer.finish().ok(), "cannot write " + name);
}

void writeSampleUvx(const std::string& name) {
  writeSampleUvx(name, sampleContent(2, 2, 3), 6);
}

void writeSampleMap(const std::string& name, std::uint32_t rows, std::uint32_t columns) {
  AMapHeader header;
  header.unit = "Jy/Beam";
  header.sourceName = "SAMPLE";
  header.frame = UvxFrame::kIcrs;
  header.rightAscension = 120.5;
  header.declination = 33.25;
  header.epoch = 2000.0;
  header.stokes = "I";
  header.frequency = 5e9;
  header.bandwidth = 1e8;
  header.beamMajor = 2e-3;
  header.beamMinor = 1e-3;
  header.beamPa = 30.0;
  header.beamArea = 9.0;
  header.date = "2020-02-02";
  header.history = {"PROGRAM = Lumo 0.1.0", "ITER = 100"};
  TMinMax range;
  range.xMin = -1e-3 * (columns / 2.0);
  range.xMax = range.xMin + 1e-3 * (columns - 1);
  range.yMin = -1e-3 * (rows / 2.0);
  range.yMax = range.yMin + 1e-3 * (rows - 1);
  AMatrix<float> matrix(rows, columns);
  for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] = 0.01F * static_cast<float>(i);
  require(writeMap(name, header, range, matrix).ok(), "cannot write " + name);
}

}  // namespace lumo::fuzz
