// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "io/VisibilityInputs.h"

namespace lumo {

/// What the selected frequencies of all files span. Before anything is selected the values are their starting
/// values, minima above maxima.
struct FrequencySurvey {
  static constexpr double kStartMin = 1e38;
  static constexpr double kStartMax = -1e38;

  double minHz = kStartMin;  ///< lowest and highest channel-0 frequency, Hz
  double maxHz = kStartMax;
  std::int32_t number = 0;  ///< selected (selection, IF) pairs; channels of an IF count once
  double maxU = kStartMax;  ///< largest |u| and |v|, wavelengths at the file's highest selected frequency
  double maxV = kStartMax;

  /// The three texts of the frequency group: MHz with six digits, and the number.
  [[nodiscard]] std::string minText() const;
  [[nodiscard]] std::string maxText() const;
  [[nodiscard]] std::string numberText() const;
  /// Middle of the range in MHz, rounded down to a whole kHz; "%g" of it is what the field shows.
  [[nodiscard]] double centerMhz() const;
};

/// Surveys the files under their masks. Opens each file once, for its u and v extents; one that does not open
/// contributes nothing. A mask that is missing or shorter than its table counts as clear where it is missing.
[[nodiscard]] FrequencySurvey surveyFrequencies(const VisibilityInputs& inputs);

/// Calls visit(frequency of channel 0 in Hz) for every selected IF of file `file`,
/// selections outer.
template <typename Visit>
void forEachSelectedIf(const VisibilityInputs& inputs, std::int32_t file, Visit visit) {
  if (file >= inputs.selections.count()) return;
  const AUVXFqTbl& table = inputs.tables[file];
  const ABitArray& mask = inputs.selections[file];
  for (int selection = 0; selection < table.GetFreqSels(); ++selection) {
    if (mask(selection) == 0) continue;
    for (int ifIndex = 0; ifIndex < table.GetIFs(); ++ifIndex) visit(table.GetFreq(0, ifIndex, selection));
  }
}

/// max |f / f_mid - 1| over every selected channel-0 frequency f, f_mid being the middle of the survey; -1e38
/// when nothing is selected.
[[nodiscard]] double largestFrequencyOffset(const VisibilityInputs& inputs, const FrequencySurvey& survey);

}  // namespace lumo
