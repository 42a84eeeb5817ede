// SPDX-License-Identifier: GPL-3.0-or-later
#include "RunSample.h"

#include <gtest/gtest.h>

#include "io/UvxWriter.h"

namespace lumo::test {

void writeUvx(const std::string& path, const UvxSample& sample) {
  UvxContent content;
  const auto ifs = static_cast<std::uint32_t>(sample.selections.front().frequencies.size());
  content.shape = {ifs, 1, static_cast<std::uint32_t>(sample.products.size())};
  content.unit = "JY";
  for (int i = 0; i < sample.sources; ++i)
    content.sources.push_back({5 + i, "0235+164", UvxFrame::kFk5, 39.66, 16.62, 2000.0});
  for (const UvxSample::Selection& selection : sample.selections) {
    UvxSelection stored{selection.id, {}};
    for (const double frequency : selection.frequencies) stored.bands.push_back({frequency, 1e5});
    content.selections.push_back(stored);
  }
  content.products = sample.products;

  UvxWriter writer;
  ASSERT_TRUE(writer.begin(path, content).ok());
  for (const UvxSample::Selection& selection : sample.selections) {
    for (const UvxSample::Point& point : sample.points) {
      UvxRecord record;
      record.freqSel = static_cast<std::int8_t>(selection.id);
      record.baseline = 258;
      record.u = static_cast<float>(point.u);
      record.v = static_cast<float>(point.v);
      record.time = 60000.5;
      record.source = 5;
      std::vector<AUVXComplex> values;
      for (const double frequency : selection.frequencies) {
        const std::complex<double> value =
            sample.visibility
                ? sample.visibility(double{record.u} * frequency, double{record.v} * frequency, frequency)
                : 1.0;
        for (std::size_t product = 0; product < sample.products.size(); ++product)
          values.emplace_back(value.real(), value.imag(), 1.0);
      }
      ASSERT_TRUE(writer.append(record, values).ok());
    }
  }
  ASSERT_TRUE(writer.finish().ok());
}

}  // namespace lumo::test
