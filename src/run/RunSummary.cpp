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

const char* termsNotToldText() {
  return "the beams cannot tell the spectral terms apart, so the maps mean nothing: the order is more than "
         "the "
         "frequencies can carry, or the loop gain made CLEAN diverge";
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
  if (!areTermsTold(report)) lines.push_back(std::string("Warning: ") + termsNotToldText());
  double seconds = 0;
  for (const auto& phase : report.phases) seconds += phase.second;
  lines.push_back("Run ended after " + generalText(std::round(seconds * 10) / 10) + " s, " + toStr(written) +
                  " products written");
  return lines;
}

}  // namespace lumo
