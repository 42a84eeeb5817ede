// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "io/AUVXFile.h"

namespace lumo {

/// The header of a UVX file: extents of u and v over the unflagged groups (seconds of light travel; times a
/// frequency in Hz they are wavelengths) and the unit text of the visibilities.
struct AUVXHeader {
  explicit AUVXHeader(const AUVXFile& file)
      : uMin(file.uMin()), uMax(file.uMax()), vMin(file.vMin()), vMax(file.vMax()), unit(file.unit()) {}

  double uMin, uMax, vMin, vMax;
  std::string unit;
};

}  // namespace lumo
