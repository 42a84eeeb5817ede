// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"
#include "run/RunParameters.h"

namespace lumo {

/// What tells an input file from every other.
struct InputFileFacts {
  std::uint64_t bytes = 0;
  std::uint32_t crc = 0;  ///< CRC-32 of the whole file
};

/// The paths that a run removes before it starts: the maps and beams of indices 0..19, two names of old,
/// and the error map of the spectral index.
[[nodiscard]] std::vector<std::string> oldProductPaths(const RunParameters& parameters);
/// Removes them, ignoring failures.
void removeOldProducts(const RunParameters& parameters);

/// `inputs` with exactly one mask for each file and one bit for each of its selections: masks that were
/// loaded with other counts are cut, missing bits are clear.
[[nodiscard]] VisibilityInputs inStep(const VisibilityInputs& inputs);

/// Whether a run can use everything it is given, before it touches anything: every file opens, is the file
/// that was listed (source, frequencies, Stokes products) and can be read to its end; something is selected;
/// the parameter block can be set up and the data have an extent; the work folder is there; no file is the
/// path of a product. An empty list passes.
///
/// `inputs` must be inStep(). `facts` gets an entry for each file. Costs one sequential pass over every file
/// (checksum, about 1 GB/s from memory), in blocks of 1 MiB. kCancelled when `indicators` says so.
[[nodiscard]] Status checkInputs(const RunParameters& parameters, const VisibilityInputs& inputs,
                                 const ABMakeParameters& imaging, const RunIndicators& indicators,
                                 std::vector<InputFileFacts>& facts);

}  // namespace lumo
