// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/FrequencySurvey.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "core/Units.h"
#include "io/AUVXHeader.h"

namespace lumo {

std::string FrequencySurvey::minText() const {
  return generalText(minHz * kMegahertzPerHertz);
}

std::string FrequencySurvey::maxText() const {
  return generalText(maxHz * kMegahertzPerHertz);
}

std::string FrequencySurvey::numberText() const {
  return toStr(number);
}

double FrequencySurvey::centerMhz() const {
  const double middle = (minHz + maxHz) / 2 * kMegahertzPerHertz;
  return std::floor(middle * 1000) / 1000;
}

FrequencySurvey surveyFrequencies(const VisibilityInputs& inputs) {
  FrequencySurvey survey;
  for (std::int32_t i = 0; i < inputs.count(); ++i) {
    AUVXFile file;
    if (file.Open(inputs.names[i], AFile::kRead) == 0) continue;
    double fileMin = FrequencySurvey::kStartMin;
    double fileMax = FrequencySurvey::kStartMax;
    forEachSelectedIf(inputs, i, [&](double frequency) {
      if (survey.number < std::numeric_limits<std::int32_t>::max()) ++survey.number;
      fileMin = std::min(fileMin, frequency);
      fileMax = std::max(fileMax, frequency);
    });
    const bool onlyOneAndClear =
        i < inputs.selections.count() && inputs.selections[i].count() == 1 && inputs.selections[i](0) == 0;
    if (onlyOneAndClear) continue;
    const AUVXHeader header(file);
    survey.maxU = std::max(survey.maxU, std::max(std::abs(header.uMin), std::abs(header.uMax)) * fileMax);
    survey.maxV = std::max(survey.maxV, std::max(std::abs(header.vMin), std::abs(header.vMax)) * fileMax);
    survey.minHz = std::min(survey.minHz, fileMin);
    survey.maxHz = std::max(survey.maxHz, fileMax);
  }
  return survey;
}

double largestFrequencyOffset(const VisibilityInputs& inputs, const FrequencySurvey& survey) {
  const double middle = (survey.minHz + survey.maxHz) / 2;
  double largest = -1e38;
  for (std::int32_t i = 0; i < inputs.count(); ++i)
    forEachSelectedIf(
        inputs, i, [&](double frequency) { largest = std::max(largest, std::abs(frequency / middle - 1)); });
  return largest;
}

}  // namespace lumo
