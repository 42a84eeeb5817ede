// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "core/Status.h"
#include "imaging/ABMakeParameters.h"
#include "run/InputFileFacts.h"
#include "run/RunParameters.h"
#include "run/UvxFileList.h"

namespace lumo {

/// An input of an earlier run as its history tells of it.
struct RecalledInput {
  std::string name;  ///< the path as it was given then
  InputFileFacts facts;
  std::string selected;  ///< "all", "none" or rows of the frequency table: "0-3,7"
};

/// A run as the history of its products tells of it: everything that is needed to do it again.
struct RecalledRun {
  RunParameters parameters;
  ABMakeParameters imaging;
  std::vector<RecalledInput> inputs;
};

/// Reads the lines that runHistory() writes. Fails, naming the line, when one that is needed is missing,
/// stands there twice, or has no value of its kind; lines of other names are ignored.
[[nodiscard]] Status recallRun(const std::vector<std::string>& history, RecalledRun& run);

/// Chooses in `files`, which lists the inputs of the run in their order, the rows that were chosen then.
/// Fails when a file has no such row.
[[nodiscard]] Status recallSelections(const RecalledRun& run, UvxFileList& files);

/// Fails, naming every file that differs, unless the inputs are byte for byte those of the run. `names` and
/// `facts` have an entry for each.
[[nodiscard]] Status compareInputs(const RecalledRun& run, const std::vector<std::string>& names,
                                   const std::vector<InputFileFacts>& facts);

}  // namespace lumo
