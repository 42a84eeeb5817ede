// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "clean/BeamMatrix.h"
#include "clean/CleanProblem.h"
#include "clean/CleanTileKernel.h"

namespace lumo::test {

/// Maps, beams and components as the kernels of the tiled engine see them, and what is true of a pixel,
/// computed one by one.
class TileInput {
 public:
  /// @param seed of the components of term 0, uniform in -0.1 .. 1.
  TileInput(const CleanProblem& problem, bool nonNegative, unsigned seed = 1);

  [[nodiscard]] const CleanTileMaps& maps() const { return maps_; }
  [[nodiscard]] const EngineInput& input() const { return input_; }
  [[nodiscard]] const BeamMatrix& matrix() const { return matrix_; }
  [[nodiscard]] AMatrix<float>& intensity() { return intensity_; }
  [[nodiscard]] CleanTileArea wholeArea() const;

  /// S of a pixel.
  [[nodiscard]] double norm(std::size_t offset) const;
  /// E of a pixel.
  [[nodiscard]] double score(std::size_t offset, double gain) const;
  /// The pixel of the best score, the last in scan order among equals; the number of pixels if none reaches
  /// 0.
  [[nodiscard]] std::size_t best(double gain) const;
  /// Subtracts a step from all pixels, with the roundings of the plain engine.
  void subtract(const CleanUpdate& step);

 private:
  double solve(std::size_t offset, double& first) const;

  EngineInput input_;
  BeamMatrix matrix_;
  AMatrix<float> intensity_;
  CleanTileMaps maps_;
};

/// Steps on random pixels with increments in -scale .. scale.
[[nodiscard]] std::vector<CleanUpdate> randomSteps(std::size_t count, std::int32_t terms, Shape map,
                                                   double scale, unsigned seed);

}  // namespace lumo::test
