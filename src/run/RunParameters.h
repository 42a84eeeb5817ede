// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Status.h"

namespace lumo {

struct FrequencySurvey;

/// What the user chooses for a run besides the files and the imaging parameter block.
struct RunParameters {
  std::int32_t iterations = 1000;  ///< CLEAN iterations
  double indexThreshold = 0.01;    ///< of the index map, as a fraction of the peak of the first dirty map
  double indexMin = -3;            ///< lowest spectral index kept
  double indexMax = 3;             ///< highest spectral index kept
  std::int32_t order = 2;          ///< number of spectral terms
  double gain = 0.1;               ///< CLEAN loop gain
  double referenceMhz = 0;
  std::string prefix = "MFS";
  bool nonNegative = false;
  bool variableGain = false;
  /// Prepended to the prefix as it stands, so it ends in a separator unless it is to be part of the name. The
  /// default is the character 0, which names no folder.
  std::string folder = "0";
  /// Let CLEAN round once where it may (CleanEngineKind::kMerged): faster, without the exact engine's last
  /// bits.
  bool fastClean = false;
  bool indexError = false;  ///< make the error map of the spectral index too
};

/// The fields that have a rule.
enum class RunField { kIterations, kIndexThreshold, kIndexMin, kIndexMax, kOrder, kGain, kReference };

/// The field's name as the dialog shows it, e.g. "CLEAN Iterations".
[[nodiscard]] const char* runFieldName(RunField field);

/// MHz by which a reference frequency may lie outside the selected ones near this frequency, MHz: "Center"
/// rounds down to a kHz and shows six digits.
[[nodiscard]] double centerTolerance(double megahertz);

/// A value that a run does not accept.
struct ParameterProblem {
  RunField field;
  double lower = 0;  ///< bounds, inclusive; infinite where the field has none
  double upper = 0;
  std::string hint;     ///< what to enter: "Enter an integer between 1 and 1000000."
  std::string message;  ///< field, bounds and value found
};
using ParameterProblems = std::vector<ParameterProblem>;

/// The problem of a value that is not even a number.
[[nodiscard]] ParameterProblem notANumber(RunField field, const std::string& text,
                                          const FrequencySurvey& survey);

/// All values against their bounds: iterations 1..1000000; threshold 0..1; index limits any number; order
/// 1..survey.number; gain 1e-10..2; reference above 0 and inside the surveyed range in MHz, widened at each
/// end by 1 kHz or one unit of the sixth significant digit, whichever is larger. NaN is in no range. Empty
/// when everything is accepted; in the order of RunField. An error map of the spectral index needs order 2.
[[nodiscard]] ParameterProblems validateRunParameters(const RunParameters& parameters,
                                                      const FrequencySurvey& survey);

/// The first problem as a status (kInvalidValue), ok when there is none.
[[nodiscard]] Status problemStatus(const ParameterProblems& problems);

}  // namespace lumo
