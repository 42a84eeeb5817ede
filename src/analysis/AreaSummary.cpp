// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/AreaSummary.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "io/MapForm.h"

namespace lumo {

namespace {

std::string valueText(double value, const std::string& unit) {
  return nValToStr(value, 4) + (unit.empty() ? "" : " " + unit);
}

}  // namespace

AreaSummary summarise(const AreaShape& area, const AMatrix<float>& map, const TMinMax& range) {
  AreaSummary summary;
  double maximum = -std::numeric_limits<double>::infinity();
  forEachPixel(area, map.rows(), map.columns(), range, [&](std::uint32_t row, std::uint32_t column) {
    const double value = map(row, column);
    ++summary.pixels;
    if (!std::isfinite(value)) return;
    ++summary.usable;
    summary.sum += value;
    maximum = std::max(maximum, value);
  });
  summary.maximum = summary.usable > 0 ? maximum : std::numeric_limits<double>::quiet_NaN();
  return summary;
}

std::string summaryText(const AreaSummary& summary, const AMapHeader& header, double pixelsPerBeam) {
  std::string text =
      toStr(static_cast<std::int64_t>(summary.pixels)) + (summary.pixels == 1 ? " pixel" : " pixels");
  if (summary.usable == 0) return text + (summary.pixels > 0 ? ", none with a value" : "");
  text += ", sum " + valueText(summary.sum, header.unit);
  if (unitOfFits(header.unit) == "Jy/Beam" && std::isfinite(pixelsPerBeam) && pixelsPerBeam > 0.0)
    text += ", flux density " + valueText(summary.sum / pixelsPerBeam, "Jy");
  return text + ", maximum " + valueText(summary.maximum, header.unit);
}

}  // namespace lumo
