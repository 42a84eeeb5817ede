// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "convert/ImportReport.h"
#include "convert/UvfitsFile.h"
#include "core/Status.h"
#include "io/UvxTables.h"

namespace lumo {

/// The data axes of a random-groups visibility file, found by their CTYPE, in whatever order they stand.
///
/// Strides count numbers within a group's array. An axis that is not there has length 1.
struct UvfitsAxes {
  std::uint32_t complexParts = 3;  ///< 3: real, imaginary, weight; 2: no weights
  std::uint32_t channels = 1;
  std::uint32_t ifs = 1;
  UvxProducts products;  ///< along the STOKES axis
  std::uint64_t complexStride = 1;
  std::uint64_t stokesStride = 1;
  std::uint64_t channelStride = 1;
  std::uint64_t ifStride = 1;
  std::uint64_t numbers = 1;  ///< of one group's array

  double frequency = 0;                  ///< Hz, CRVAL of the FREQ axis
  double referencePixel = 1;             ///< CRPIX of the FREQ axis, counted from 1
  double increment = 0;                  ///< Hz, CDELT of the FREQ axis
  std::optional<double> rightAscension;  ///< degrees, CRVAL of the RA axis
  std::optional<double> declination;     ///< degrees, CRVAL of the DEC axis

  [[nodiscard]] UvxShape shape() const {
    return {ifs, channels, static_cast<std::uint32_t>(products.size())};
  }
};

/// Reads the axes from the primary header (the current HDU). Fails on an axis of several pixels that means
/// nothing here, on a STOKES axis that is no sequence of known products of one kind, and when COMPLEX, STOKES
/// or FREQ is missing.
[[nodiscard]] Status readUvfitsAxes(const UvfitsFile& file, UvfitsAxes& axes, ImportReport& report);

}  // namespace lumo
