// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "core/AMatrix.h"

namespace lumo {

/// A beam model: a function of two coordinates with its extent and its Fourier transform, and the base of the
/// family. This one is 1 everywhere and has no extent.
class A3DBFunc {
 public:
  /// Largest half size in pixels that MakeMatrix gives when it is told no limit.
  static constexpr std::uint32_t kMaxHalfSize = 4096;

  virtual ~A3DBFunc() = default;

  /// Extent along x and along y, in the units of x and y.
  [[nodiscard]] virtual double GetSizeX() const { return 0.0; }
  [[nodiscard]] virtual double GetSizeY() const { return 0.0; }
  [[nodiscard]] virtual double Value(double x, double y) const;
  /// The transform at (u, v).
  [[nodiscard]] virtual double FourierValue(double u, double v) const;

  /// Samples the function in steps of dx (columns) and dy (rows), the extent taken as a half width:
  /// 2 trunc(extent / step + 0.5) + 1 pixels, the origin at (rows / 2, columns / 2).
  /// Half sizes are cut at kMaxHalfSize; one that is not a number or negative counts as 0.
  [[nodiscard]] std::unique_ptr<AMatrix<float>> MakeMatrix(double dx, double dy) const;
  /// The same with limits of its own for the half sizes, in pixels.
  [[nodiscard]] std::unique_ptr<AMatrix<float>> MakeMatrix(double dx, double dy, std::uint32_t maxHalfRows,
                                                           std::uint32_t maxHalfColumns) const;
  /// The same with the extent taken as a full width: trunc(extent / step + 0.5) pixels, its lowest bit
  /// cleared, plus 1. Cut at 2 kMaxHalfSize + 1 pixels.
  [[nodiscard]] std::unique_ptr<AMatrix<float>> MakeMatrixFull(double dx, double dy) const;

 private:
  [[nodiscard]] std::unique_ptr<AMatrix<float>> sample(double dx, double dy, std::uint32_t rows,
                                                       std::uint32_t columns) const;
};

}  // namespace lumo
