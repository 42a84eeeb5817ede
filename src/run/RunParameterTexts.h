// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "run/RunParameters.h"

namespace lumo {

struct FrequencySurvey;

/// The parameter set as a person edits it: what stands in the fields, numbers or not. The folder is no field.
struct RunParameterTexts {
  std::string iterations, indexThreshold, indexMin, indexMax, order, gain, reference, prefix;
  bool nonNegative = false;
  bool variableGain = false;
};

/// What the fields show for a parameter set; the doubles read back to the same values.
[[nodiscard]] RunParameterTexts textsOf(const RunParameters& parameters);

/// Takes what stands in the fields before a run: a field whose text is not a number or is out of its range
/// keeps its old value in `parameters` and is among the problems returned; the others are taken.
[[nodiscard]] ParameterProblems takeChecked(const RunParameterTexts& texts, const FrequencySurvey& survey,
                                            RunParameters& parameters);

/// Takes what stands in the fields as it is, for saving: a text that does not begin with a number is 0, and
/// nothing is checked.
void takeUnchecked(const RunParameterTexts& texts, RunParameters& parameters);

}  // namespace lumo
