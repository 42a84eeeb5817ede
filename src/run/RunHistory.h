// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"
#include "run/InputFileFacts.h"
#include "run/RunParameters.h"

namespace lumo {

/// How a run's maps were made, as lines for their history: "NAME = value" each, numbers in the form that
/// reads back to the same value. PROGRAM; the run parameters under their profile keys, and
/// INDEXERROR = 1 where an error map of the spectral index was asked for; the imaging block
/// under its field names, as it is after Setup; NUVX and for file i from 0 UVXi, UVXi.BYTES, UVXi.CRC32
/// (eight hexadecimal digits) and UVXi.SELECTED ("all", or the indices of the chosen selections, "0-3,7", or
/// "none"). `inputs` must be inStep(), `facts` have an entry for each file.
[[nodiscard]] std::vector<std::string> runHistory(const RunParameters& parameters,
                                                  const ABMakeParameters& imaging,
                                                  const VisibilityInputs& inputs,
                                                  const std::vector<InputFileFacts>& facts);

}  // namespace lumo
