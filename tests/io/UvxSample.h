// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/UvxWriter.h"

namespace lumo::test {

/// Content of a small file: one source (ID 7), `selections` frequency selections (IDs 3, 4, ...), products
/// RR, LL.
inline UvxContent sampleContent(std::uint32_t ifs = 2, std::uint32_t channels = 3, int selections = 1) {
  UvxContent content;
  content.shape = {ifs, channels, 2};
  content.unit = "JY";
  content.sources = {{7, "0235+164", UvxFrame::kIcrs, 39.662209, 16.616465, 2000.0}};
  for (int s = 0; s < selections; ++s) {
    UvxSelection selection{3 + s, {}};
    for (std::uint32_t i = 0; i < ifs; ++i) selection.bands.push_back({1.5e9 + 1e8 * s + 1e7 * i, -2.5e5});
    content.selections.push_back(selection);
  }
  content.products = {-1, -2};
  content.antennas = {{1, "BR", -2112065.0, -3705356.5, 4726813.7}};
  content.history = {"first line", "second line"};
  return content;
}

/// Writes a file whose group g holds u = g, v = -2g seconds, source 7, the first selection, and visibilities
/// (100 g + index, -index, 1).
inline void writeSample(const std::string& path, const UvxContent& content, int groups) {
  UvxWriter writer;
  ASSERT_TRUE(writer.begin(path, content).ok());
  for (int g = 0; g < groups; ++g) {
    UvxRecord record;
    record.freqSel = static_cast<std::int8_t>(content.selections[0].id);
    record.baseline = 258;
    record.u = static_cast<float>(g);
    record.v = static_cast<float>(-2 * g);
    record.time = 59792.25;
    record.source = static_cast<std::int16_t>(content.sources[0].id);
    std::vector<AUVXComplex> values;
    for (std::uint64_t i = 0; i < content.shape.visibilities(); ++i)
      values.emplace_back(100.0 * g + static_cast<double>(i), -static_cast<double>(i), 1.0);
    ASSERT_TRUE(writer.append(record, values).ok());
  }
  ASSERT_TRUE(writer.finish().ok());
}

}  // namespace lumo::test
