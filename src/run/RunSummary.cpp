// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunSummary.h"

#include <cmath>

#include "core/TextForm.h"

namespace lumo {

bool areTermsTold(const RunReport& report) {
  constexpr double kLargestSoundError = 1e-3;
  if (report.iterations == 0) return true;
  return std::isfinite(report.totalFlux) && report.inversionError < kLargestSoundError;
}

bool isResidualLowered(const RunReport& report) {
  // The first steps may all be about other terms than the residual map's, or about one of several equal
  // peaks.
  constexpr std::int32_t kTelling = 10;
  return report.iterations < kTelling || report.residualBefore == 0 ||
         report.residualAfter < report.residualBefore;
}

std::string runWarning(const RunReport& report) {
  if (!areTermsTold(report))
    return "the beams cannot tell the spectral terms apart, so the maps mean nothing: the order is more "
           "than the frequencies can carry, or the loop gain made CLEAN diverge";
  if (isResidualLowered(report)) return {};
  return "the CLEAN did not lower the residual, whose largest value was " +
         generalText(report.residualBefore) + " and is " + generalText(report.residualAfter) +
         ": the loop gain is too high (at 2 no step is worth more than another), or the order more than the "
         "data carry";
}

std::vector<std::string> runSummaryLines(const RunReport& report) {
  std::vector<std::string> lines;
  std::int64_t written = 0;
  for (const RunProduct& product : report.products) {
    written += product.written ? 1 : 0;
    if (!product.written) lines.push_back("Not written: " + product.path + ": " + product.why);
  }
  if (report.iterations > 0)
    lines.push_back("CLEAN: " + toStr(report.iterations) +
                    (report.stopped ? " iterations, stopped" : " iterations") + ", total flux " +
                    generalText(report.totalFlux));
  if (const std::string warning = runWarning(report); !warning.empty())
    lines.push_back("Warning: " + warning);
  lines.push_back("Run ended after " + generalText(std::round(report.time.seconds * 10) / 10) + " s, " +
                  toStr(written) + " products written");
  return lines;
}

}  // namespace lumo
