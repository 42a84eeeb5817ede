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

 private:
  void weigh(PointList& points) const;
  void turn(PointList& points) const;

  const ABMakeParameters& parameters_;
  const AB3DFunc& taper_;
  double phaseX_, phaseY_;  ///< radians per wavelength
};

}  // namespace lumo
