// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/SpectrumCurve.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/TextForm.h"
#include "core/Units.h"
#include "numerics/ACubicSlineFree.h"

namespace lumo {

namespace {

constexpr const char* kLogarithmicMark = " (log scale)";

/// One axis of a frame's range.
struct AxisRange {
  double& min;
  double& max;
  int scaleMode;

  void cover(double value) const {
    if (!std::isfinite(value) || (scaleMode == kLogarithmicScale && value <= 0.0)) return;
    min = std::min(min, value);
    max = std::max(max, value);
  }
  void addMargin() const {
    constexpr double kMargin = 0.05;
    if (min > max) return;
    if (scaleMode == kLogarithmicScale) {
      const DecadeRange decades = decadeRange(min, max);
      min = decades.min;
      max = decades.max;
      return;
    }
    const double margin = kMargin * (max - min);
    min -= margin;
    max += margin;
  }
};

}  // namespace

void SpectrumCurve::setData(std::vector<double> freqs, std::vector<double> fluxes,
                            std::vector<double> errors) {
  freqs_ = std::move(freqs);
  fluxes_ = std::move(fluxes);
  errors_ = std::move(errors);
}

void SpectrumCurve::getRange(TMinMax& range, int xScaleMode, int yScaleMode) const {
  const AxisRange x{range.xMin, range.xMax, xScaleMode};
  const AxisRange y{range.yMin, range.yMax, yScaleMode};
  for (std::size_t i = 0; i < count(); ++i) {
    x.cover(freqs_[i]);
    y.cover(fluxes_[i]);
    if (!hasErrorBar(i)) continue;
    y.cover(fluxes_[i] + errors_[i]);
    y.cover(fluxes_[i] - errors_[i]);
  }
  x.addMargin();
  y.addMargin();
}

std::vector<SpectrumSample> SpectrumCurve::samples() const {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < count(); ++i)
    if (std::isfinite(freqs_[i])) order.push_back(i);
  if (order.empty()) return {};
  std::stable_sort(order.begin(), order.end(),
                   [this](std::size_t a, std::size_t b) { return freqs_[a] < freqs_[b]; });
  std::vector<double> x;
  std::vector<double> y;
  for (const std::size_t i : order) {
    if (!x.empty() && freqs_[i] == x.back()) continue;
    x.push_back(freqs_[i]);
    y.push_back(fluxes_[i]);
  }
  const ACubicSlineFree spline(x.data(), y.data(), static_cast<int>(x.size()));
  std::vector<SpectrumSample> result(kSampleCount);
  for (int s = 0; s < kSampleCount; ++s) {
    SpectrumSample& sample = result[static_cast<std::size_t>(s)];
    sample.freq = x.front() + (x.back() - x.front()) * s / (kSampleCount - 1);
    sample.flux = spline.valueAt(sample.freq);
  }
  return result;
}

std::string SpectrumCurve::legend() const {
  return "Reference freq: " + valToStr(refFreq * kMegahertzPerHertz) +
         "[MHz], Reference intensity: " + valToStr(refIntensity) +
         ", Spectral index: " + valToStr(specIndex) + " ";
}

DecadeRange decadeRange(double min, double max) {
  if (!(max > 0.0)) return {};
  constexpr double kDecadesBelow = 1e-3;
  const double lowest = std::floor(std::log10(min > 0.0 ? min : max * kDecadesBelow));
  const double highest = std::max(std::ceil(std::log10(max)), lowest + 1.0);
  return {std::pow(10.0, lowest), std::pow(10.0, highest)};
}

std::string scaledTitle(const std::string& title, int scaleMode) {
  return scaleMode == kLogarithmicScale ? title + kLogarithmicMark : title;
}

std::string bareTitle(const std::string& title) {
  return title.substr(0, title.rfind(kLogarithmicMark));
}

}  // namespace lumo
