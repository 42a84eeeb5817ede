// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "imaging/AB3DFunc.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/PointList.h"
#include "imaging/Stretch.h"

namespace lumo {

/// Turns an IF's means into points: scales u and v to wavelengths, forms the weight and turns the phase by
/// the shift. Shared by threads.
class PointMaker {
 public:
  /// The references must outlive the maker.
  PointMaker(const ABMakeParameters& parameters, const AB3DFunc& taper);

  /// Makes the points of IF `ifIndex` of the batch to which the stretch belongs.
  void make(const Stretch& stretch, std::size_t ifIndex, const IfBatch& batch, PointList& points) const;
  /// Whether points are what was read: weights as they are, no turn of the phase.
  [[nodiscard]] bool leavesPoints() const { return keepsWeights() && !turns(); }

 private:
  // Without bounds the taper is 1, and 1 · weight is the weight.
  [[nodiscard]] bool keepsWeights() const {
    return parameters_.taperType == kTaperNone && parameters_.useVisWeights != 0;
  }
  [[nodiscard]] bool turns() const { return phaseX_ != 0 || phaseY_ != 0; }
  void weigh(PointList& points) const;
  void turn(PointList& points) const;

  const ABMakeParameters& parameters_;
  const AB3DFunc& taper_;
  double phaseX_, phaseY_;  ///< radians per wavelength
};

}  // namespace lumo
