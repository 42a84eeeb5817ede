// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "core/Status.h"
#include "io/FitsCards.h"
#include "io/FitsHeader.h"
#include "io/MapForm.h"

namespace lumo {

/// Where the sky lies in an image: how its pixels become matrix rows (south to north) and columns (west to
/// east).
struct MapLayout {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  bool fastIsX = true;   ///< neighbours in the file are neighbours in x; false: in y
  bool mirrorX = true;   ///< the file's first pixel in x is the easternmost
  bool mirrorY = false;  ///< the file's first pixel in y is the northernmost
  int xAxis = 1;         ///< FITS number of the axis along x
  int yAxis = 2;
  bool equatorial = false;  ///< the axes are right ascension and declination
  bool scaled = true;       ///< the header tells the size of a pixel; false: it is made up
  PixelAxis x;              ///< as the file counts, so x.step < 0 when mirrorX
  PixelAxis y;
};

/// Degrees per unit of an axis (its CUNIT, degrees without one); nothing for a unit that is not an angle.
[[nodiscard]] std::optional<double> degreesPerUnit(const FitsCards& cards, int axis);

/// Finds the two sky axes and their geometry. Refuses, with a sentence, what is not one plane of the sky with
/// north up or to a side: a cube, a cut along another axis, a rotated or sheared image.
[[nodiscard]] Status findLayout(const FitsCards& cards, const ImageShape& shape, MapLayout& layout);

}  // namespace lumo
