// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "core/AMatrix.h"
#include "core/APtrArray.h"

namespace lumo::test {

/// Maps and beams as plain values, and as the pointer arrays that an engine takes.
struct CleanProblem {
  std::vector<AMatrix<float>> maps;
  std::vector<AMatrix<float>> beams;

  [[nodiscard]] std::int32_t terms() const { return static_cast<std::int32_t>(maps.size()); }
};

/// Owned copies of the maps and beams of a problem in the form that an engine takes.
struct EngineInput {
  explicit EngineInput(const CleanProblem& problem);

  APtrArray<AMatrix<float>*> residuals;
  APtrArray<AMatrix<float>*> beams;
};

struct Shape {
  std::uint32_t rows;
  std::uint32_t columns;
};

/// A component: position and value per term.
struct Source {
  std::uint32_t row;
  std::uint32_t column;
  std::vector<double> values;
};

/// Random maps in -1..1 and random beams whose centres are the moments of a spread of frequencies, so that
/// the beam matrix is positive definite as that of real data.
[[nodiscard]] CleanProblem randomProblem(std::int32_t terms, Shape map, Shape beam, unsigned seed);

/// Beams summed directly over a random uv coverage observed at several frequencies,
/// B_m(x, y) = mean over (u, v) and f of f^m cos(2 pi (1 + f)(u x + v y)), and the dirty maps of the sources:
/// map k = sum over sources and terms j of value_j B_{k+j}. Beams are twice the size of the maps.
[[nodiscard]] CleanProblem sourceProblem(std::int32_t terms, Shape map, const std::vector<Source>& sources);

/// A map filled with one value.
[[nodiscard]] AMatrix<float> flatMap(Shape shape, float value);

/// True when the two have one size and the same bits.
[[nodiscard]] bool sameBits(const AMatrix<float>& a, const AMatrix<float>& b);

}  // namespace lumo::test
