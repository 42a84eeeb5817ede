// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/SpectrumFit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/TextForm.h"
#include "core/Units.h"
#include "numerics/APolynomialApprox.h"

namespace lumo {

namespace {

bool isPositive(double value) {
  return value > 0.0 && std::isfinite(value);
}

struct LogPoints {
  std::vector<double> x;  // ln Hz
  std::vector<double> y;  // ln of the flux density
};

LogPoints usablePoints(const SpectrumCurve& curve) {
  LogPoints points;
  for (std::size_t i = 0; i < curve.count(); ++i) {
    if (!isPositive(curve.freqs()[i]) || !isPositive(curve.fluxes()[i])) continue;
    points.x.push_back(std::log(curve.freqs()[i]));
    points.y.push_back(std::log(curve.fluxes()[i]));
  }
  return points;
}

std::size_t differentNumbers(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return static_cast<std::size_t>(std::unique(values.begin(), values.end()) - values.begin());
}

}  // namespace

double SpectrumFit::valueAt(double freq) const {
  const double u = std::log(freq / refFreq);
  double sum = 0.0;
  for (auto c = coef.rbegin(); c != coef.rend(); ++c) sum = sum * u + *c;
  return isFitted() && freq > 0.0 ? std::exp(sum) : std::nan("");
}

std::string SpectrumFit::text() const {
  constexpr int kDigits = 4;
  if (!isFitted()) return "too few points with a positive flux density";
  std::string result = "index " + nValToStr(coef[1], kDigits);
  if (coef.size() > 2) result += ", curvature " + nValToStr(coef[2], kDigits);
  return result + " at " + nValToStr(refFreq * kMegahertzPerHertz, kDigits + 2) + " MHz";
}

std::vector<SpectrumSample> SpectrumFit::samples(const SpectrumCurve& curve) const {
  std::vector<SpectrumSample> result;
  double lowest = 0.0;
  double highest = 0.0;
  for (const double freq : curve.freqs()) {
    if (!isPositive(freq)) continue;
    lowest = lowest > 0.0 ? std::min(lowest, freq) : freq;
    highest = std::max(highest, freq);
  }
  if (!isFitted() || !(lowest > 0.0)) return result;
  for (int s = 0; s < SpectrumCurve::kSampleCount; ++s) {
    const double part = static_cast<double>(s) / (SpectrumCurve::kSampleCount - 1);
    const double freq = lowest * std::pow(highest / lowest, part);
    result.push_back({freq, valueAt(freq)});
  }
  return result;
}

SpectrumFit fitLogLog(const SpectrumCurve& curve, int order) {
  const LogPoints points = usablePoints(curve);
  const std::size_t count = points.x.size();
  if (order < 1 || differentNumbers(points.x) <= static_cast<std::size_t>(order)) return {};
  const auto [lowest, highest] = std::minmax_element(points.x.begin(), points.x.end());
  const double middle = (*lowest + *highest) / 2.0;
  const double half = (*highest - *lowest) / 2.0;
  double mean = 0.0;
  for (const double y : points.y) mean += y / static_cast<double>(count);
  std::vector<float> t(count);
  std::vector<float> y(count);
  for (std::size_t i = 0; i < count; ++i) {
    t[i] = static_cast<float>((points.x[i] - middle) / half);
    y[i] = static_cast<float>(points.y[i] - mean);
  }
  APolynomialApprox polynomial(order + 1);
  if (polynomial.fit(t.data(), y.data(), 0, static_cast<int>(count) - 1) != 0) return {};
  SpectrumFit fit;
  fit.refFreq = std::exp(middle);
  double scale = 1.0;
  for (const float c : polynomial.coef()) {
    fit.coef.push_back(c * scale);
    scale /= half;
  }
  fit.coef[0] += mean;
  return fit;
}

}  // namespace lumo
