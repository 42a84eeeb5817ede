// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunParameterTexts.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "core/TextForm.h"
#include "run/FrequencySurvey.h"

namespace lumo {

namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool read(const std::string& text, double& value) {
  return parseDouble(trimmed(text), value);
}

bool read(const std::string& text, std::int32_t& value) {
  std::int64_t wide = 0;
  if (!parseInt(trimmed(text), wide)) return false;
  // Out of the 32-bit range is out of every field's range as well.
  value = static_cast<std::int32_t>(std::clamp<std::int64_t>(wide, std::numeric_limits<std::int32_t>::min(),
                                                             std::numeric_limits<std::int32_t>::max()));
  return true;
}

// Calls visit(field, text, parameter) with pointers to members, for every field with a rule, in their order.
template <typename Visit>
void forEachField(Visit visit) {
  visit(RunField::kIterations, &RunParameterTexts::iterations, &RunParameters::iterations);
  visit(RunField::kIndexThreshold, &RunParameterTexts::indexThreshold, &RunParameters::indexThreshold);
  visit(RunField::kIndexMin, &RunParameterTexts::indexMin, &RunParameters::indexMin);
  visit(RunField::kIndexMax, &RunParameterTexts::indexMax, &RunParameters::indexMax);
  visit(RunField::kOrder, &RunParameterTexts::order, &RunParameters::order);
  visit(RunField::kGain, &RunParameterTexts::gain, &RunParameters::gain);
  visit(RunField::kReference, &RunParameterTexts::reference, &RunParameters::referenceMhz);
}

bool concerns(const ParameterProblems& problems, RunField field) {
  return std::any_of(problems.begin(), problems.end(),
                     [field](const ParameterProblem& problem) { return problem.field == field; });
}

}  // namespace

RunParameterTexts textsOf(const RunParameters& parameters) {
  return {.iterations = toStr(parameters.iterations),
          .indexThreshold = valToStr(parameters.indexThreshold),
          .indexMin = valToStr(parameters.indexMin),
          .indexMax = valToStr(parameters.indexMax),
          .order = toStr(parameters.order),
          .gain = valToStr(parameters.gain),
          .reference = valToStr(parameters.referenceMhz),
          .prefix = parameters.prefix,
          .nonNegative = parameters.nonNegative,
          .variableGain = parameters.variableGain};
}

ParameterProblems takeChecked(const RunParameterTexts& texts, const FrequencySurvey& survey,
                              RunParameters& parameters) {
  RunParameters taken = parameters;
  ParameterProblems problems;
  forEachField([&](RunField field, auto text, auto value) {
    if (!read(texts.*text, taken.*value)) problems.push_back(notANumber(field, texts.*text, survey));
  });
  for (ParameterProblem& problem : validateRunParameters(taken, survey))
    if (!concerns(problems, problem.field)) problems.push_back(std::move(problem));
  std::stable_sort(problems.begin(), problems.end(),
                   [](const auto& a, const auto& b) { return a.field < b.field; });
  forEachField([&](RunField field, auto, auto value) {
    if (concerns(problems, field)) taken.*value = parameters.*value;
  });
  taken.prefix = texts.prefix;
  taken.nonNegative = texts.nonNegative;
  taken.variableGain = texts.variableGain;
  parameters = taken;
  return problems;
}

void takeUnchecked(const RunParameterTexts& texts, RunParameters& parameters) {
  forEachField([&](RunField, auto text, auto value) {
    if constexpr (std::is_same_v<decltype(value), double RunParameters::*>)
      parameters.*value = textToDouble(texts.*text);
    else
      parameters.*value = textToInt(texts.*text);
  });
  parameters.prefix = texts.prefix;
  parameters.nonNegative = texts.nonNegative;
  parameters.variableGain = texts.variableGain;
}

}  // namespace lumo
