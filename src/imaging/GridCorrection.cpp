// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/GridCorrection.h"

#include <cmath>
#include <functional>
#include <vector>

#include "core/Units.h"

namespace lumo {

namespace {

constexpr int kSamples = 1024;

/// What the two directions differ in.
struct Direction {
  double step;  ///< sampling step of the kernel
  std::function<double(double)> section;
  double min, max;  ///< arcseconds
  const char* text;
};

double samplingStep(double halfWidth, double width) {
  const double step = halfWidth * 0.0009765625;
  return step == 0 ? width * 0.00048828125 : step;
}

int computeCorrector(AArray<double>& profile, const Direction& direction, const RunIndicators& indicators) {
  const std::int32_t n = profile.count();
  const double dx = (direction.max - direction.min) / (n - 1) * kRadianPerArcsec;
  std::vector<double> samples(kSamples + 1);
  double sum = 0;
  for (int i = 1; i <= kSamples; ++i) sum += direction.section(i * direction.step);
  const double norm = direction.section(0) + 2 * sum;
  for (int i = 0; i <= kSamples; ++i)
    samples[static_cast<std::size_t>(i)] = direction.section(i * direction.step) / norm;

  indicators.setText(direction.text);
  indicators.resetBar(indicators.readingBar);
  AProgress progress(indicators.readingBar, n);
  double x = direction.min * kRadianPerArcsec;
  for (std::int32_t j = 0; j < n; ++j, x += dx) {
    progress.SetPos(j + 1);
    if (indicators.cancelled()) return 0;
    const double omega = x * kTwoPi * direction.step;
    double argument = 0;
    double total = 0;
    for (int i = 1; i <= kSamples; ++i) {
      argument += omega;
      total += std::cos(argument) * samples[static_cast<std::size_t>(i)];
    }
    profile[j] = samples[0] + 2 * total;
  }
  indicators.setText("");
  indicators.resetBar(indicators.readingBar);
  return 1;
}

}  // namespace

int computeCorrectorX(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range,
                      const RunIndicators& indicators) {
  return computeCorrector(
      profile,
      {samplingStep(kernel.halfWidthX(), kernel.widthX()), [&kernel](double x) { return kernel.value(x, 0); },
       range.xMin, range.xMax, "X Corrector..."},
      indicators);
}

int computeCorrectorY(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range,
                      const RunIndicators& indicators) {
  return computeCorrector(
      profile,
      {samplingStep(kernel.halfWidthY(), kernel.widthY()), [&kernel](double y) { return kernel.value(0, y); },
       range.yMin, range.yMax, "Y Corrector..."},
      indicators);
}

}  // namespace lumo
