// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "imaging/TestFile.h"
#include "imaging/UvPlaneData.h"

namespace lumo::test {

/// The uv-plane data of listed files with extents of 1000 wavelengths.
inline UvPlaneData uvPlaneOf(const VisibilityInputs& inputs) {
  return {inputs.names, inputs.tables, inputs.selections, inputs.sources, 1e9, 5e9, 1000.0, 1000.0};
}

/// Values of weight 1 for a group of `count` visibilities.
inline std::vector<AUVXComplex> ones(std::size_t count) {
  return std::vector<AUVXComplex>(count, AUVXComplex(1, 0, 1));
}

}  // namespace lumo::test
