// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Status.h"
#include "io/FitsCards.h"

namespace lumo {

/// Shape of a FITS image: bits a pixel and the lengths of its axes, fastest first.
struct ImageShape {
  int bitpix = 0;
  std::vector<std::int64_t> lengths;
};

/// The header of a primary HDU that holds an image.
struct FitsHeader {
  FitsCards cards;
  ImageShape shape;
  std::uint64_t dataBytes = 0;  ///< what the file holds behind the header
};

/// Reads the header of a file and checks all that a FITS library takes on trust: the mandatory cards and
/// their order, the type of the pixels, the numbers that scale them. Refuses compressed files, visibilities,
/// headers beyond 64 MiB, and axes longer than 2^31 - 1. Whether the pixels are all there is left to the
/// caller.
[[nodiscard]] Status readFitsHeader(const std::string& path, FitsHeader& header);

}  // namespace lumo
