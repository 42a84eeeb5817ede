// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/PointMaker.h"

#include <algorithm>
#include <cmath>

#include "core/Units.h"

// Compiled once per instruction set; the one to run is chosen when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/PointMaker.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<double, PointList::kCapacity>;

/// Whole vectors, which may reach beyond the last value: all arrays have room for kCapacity.
void multiply(const double* from, double factor, std::size_t count, double* to) {
  const Tag d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d))
    hn::Store(hn::Mul(hn::LoadU(d, from + i), hn::Set(d, factor)), d, to + i);
}

/// @return whether there may be a 0.
bool widen(const float* from, std::size_t count, double* to) {
  const Tag d;
  const hn::Rebind<float, Tag> narrow;
  auto least = hn::Set(d, 1.0);
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto value = hn::PromoteTo(d, hn::LoadU(narrow, from + i));
    least = hn::Min(least, hn::Abs(value));
    hn::Store(value, d, to + i);
  }
  return !hn::AllTrue(d, hn::Gt(least, hn::Zero(d)));
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(multiply);
HWY_EXPORT(widen);

PointMaker::PointMaker(const ABMakeParameters& parameters, const AB3DFunc& taper)
    : parameters_(parameters),
      taper_(taper),
      phaseX_(parameters.shiftX * kPhasePerArcsec),
      phaseY_(parameters.shiftY * kPhasePerArcsec) {}

namespace {

/// Closes the gaps of points with weight 0.
void dropUnusable(PointList& points) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < points.count; ++i) {
    points.selection[kept] = points.selection[i];
    points.u[kept] = points.u[i];
    points.v[kept] = points.v[i];
    points.re[kept] = points.re[i];
    points.im[kept] = points.im[i];
    points.weight[kept] = points.weight[i];
    kept += points.weight[i] != 0 ? 1 : 0;
  }
  points.count = kept;
}

}  // namespace

void PointMaker::make(const Stretch& stretch, std::size_t ifIndex, const IfBatch& batch,
                      PointList& points) const {
  const Stretch::Means& means = stretch.ifs[ifIndex];
  const std::size_t count = stretch.records;
  std::copy_n(stretch.selection, count, points.selection);
  if (batch.selections.size() == 1) {
    const double frequency = batch.frequencies[ifIndex];
    HWY_DYNAMIC_DISPATCH(multiply)(stretch.u, frequency, count, points.u);
    HWY_DYNAMIC_DISPATCH(multiply)(stretch.v, frequency, count, points.v);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      const double frequency = batch.frequencies[stretch.selection[i] * batch.ifs + ifIndex];
      points.u[i] = stretch.u[i] * frequency;
      points.v[i] = stretch.v[i] * frequency;
    }
  }
  const bool gaps = HWY_DYNAMIC_DISPATCH(widen)(means.weight, count, points.weight);
  static_cast<void>(HWY_DYNAMIC_DISPATCH(widen)(means.re, count, points.re));
  static_cast<void>(HWY_DYNAMIC_DISPATCH(widen)(means.im, count, points.im));
  points.count = count;
  if (gaps) dropUnusable(points);
  if (!keepsWeights()) weigh(points);
  if (turns()) turn(points);
}

void PointMaker::weigh(PointList& points) const {
  const bool useWeights = parameters_.useVisWeights != 0;
  for (std::size_t i = 0; i < points.count; ++i) {
    const double taper = taper_.value(points.u[i], points.v[i]);
    points.weight[i] = useWeights ? taper * points.weight[i] : taper;
  }
}

void PointMaker::turn(PointList& points) const {
  for (std::size_t i = 0; i < points.count; ++i) {
    const double phase = points.u[i] * phaseX_ + points.v[i] * phaseY_;
    const double c = std::cos(phase);
    const double s = std::sin(phase);
    const double re = points.re[i];
    const double im = points.im[i];
    points.re[i] = re * c + im * s;
    points.im[i] = im * c - re * s;
  }
}

}  // namespace lumo

#endif
