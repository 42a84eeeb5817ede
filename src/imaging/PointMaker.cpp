// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/PointMaker.h"

#include <algorithm>
#include <cmath>

#include "core/Units.h"

namespace lumo {

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

/// Turns u and v into wavelengths; frequencyOf(record) in Hz.
template <typename FrequencyOf>
void scale(const Stretch& stretch, const FrequencyOf& frequencyOf, PointList& points) {
  for (std::size_t i = 0; i < stretch.records; ++i) {
    const double frequency = frequencyOf(i);
    points.u[i] = stretch.u[i] * frequency;
    points.v[i] = stretch.v[i] * frequency;
  }
}

}  // namespace

void PointMaker::make(const Stretch& stretch, std::size_t ifIndex, const IfBatch& batch,
                      PointList& points) const {
  const Stretch::Means& means = stretch.ifs[ifIndex];
  const std::size_t count = stretch.records;
  std::copy_n(stretch.selection, count, points.selection);
  if (batch.selections.size() == 1) {
    scale(
        stretch, [frequency = batch.frequencies[ifIndex]](std::size_t /*record*/) { return frequency; },
        points);
  } else {
    scale(
        stretch, [&](std::size_t i) { return batch.frequencies[stretch.selection[i] * batch.ifs + ifIndex]; },
        points);
  }
  for (std::size_t i = 0; i < count; ++i) {
    points.weight[i] = means.weight[i];
    points.re[i] = means.re[i];
    points.im[i] = means.im[i];
  }
  points.count = count;
  if (std::any_of(means.weight, means.weight + count, [](float weight) { return weight == 0; }))
    dropUnusable(points);
  weigh(points);
  if (phaseX_ != 0 || phaseY_ != 0) turn(points);
}

void PointMaker::weigh(PointList& points) const {
  const bool useWeights = parameters_.useVisWeights != 0;
  // Without bounds the taper is 1, and 1 · weight is the weight.
  if (parameters_.taperType == kTaperNone && useWeights) return;
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
