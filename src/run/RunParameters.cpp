// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunParameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "core/Units.h"
#include "run/FrequencySurvey.h"

namespace lumo {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kKilohertzInMhz = 1e-3;

struct Rule {
  bool whole;
  double lower;
  double upper;
};

Rule ruleOf(RunField field, const FrequencySurvey& survey) {
  switch (field) {
    case RunField::kIterations:
      return {true, 1, 1000000};
    case RunField::kIndexThreshold:
      return {false, 0, 1};
    case RunField::kOrder:
      return {true, 1, static_cast<double>(survey.number)};
    case RunField::kGain:
      return {false, 1e-10, 2};
    case RunField::kReference: {
      const double lowest = survey.minHz * kMegahertzPerHertz;
      const double highest = survey.maxHz * kMegahertzPerHertz;
      return {false, lowest - centerTolerance(lowest), highest + centerTolerance(highest)};
    }
    case RunField::kIndexMin:
    case RunField::kIndexMax:
      break;
  }
  return {false, -kInfinity, kInfinity};
}

std::string numberText(const Rule& rule, double value) {
  return rule.whole ? toStr(static_cast<std::int64_t>(value)) : valToStr(value);
}

ParameterProblem problemOf(RunField field, const Rule& rule, const std::string& found) {
  ParameterProblem problem{
      field, rule.lower, rule.upper, rule.whole ? "Enter an integer" : "Enter a number", {}};
  const std::string between =
      std::isfinite(rule.lower) || std::isfinite(rule.upper)
          ? " between " + numberText(rule, rule.lower) + " and " + numberText(rule, rule.upper)
          : "";
  problem.hint += between + ".";
  const bool empty = rule.lower > rule.upper;
  problem.message = std::string(runFieldName(field)) + " must be " +
                    (rule.whole ? "an integer" : "a number") + between +
                    (field == RunField::kReference ? " and above 0" : "") +
                    (empty ? " (no frequency is selected)" : "") + "; found " + found;
  return problem;
}

ParameterProblem errorMapProblem(const FrequencySurvey& survey) {
  return {RunField::kOrder, 2, static_cast<double>(survey.number), "Enter 2 or more.",
          "an error map of the spectral index needs 2 spectral terms or more (Order); found 1"};
}

}  // namespace

double centerTolerance(double megahertz) {
  if (!std::isfinite(megahertz) || megahertz == 0) return kKilohertzInMhz;
  return std::max(kKilohertzInMhz, std::pow(10.0, std::floor(std::log10(std::abs(megahertz))) - 5));
}

const char* runFieldName(RunField field) {
  switch (field) {
    case RunField::kIterations:
      return "CLEAN Iterations";
    case RunField::kIndexThreshold:
      return "Index threshold";
    case RunField::kIndexMin:
      return "Sp. index Min";
    case RunField::kIndexMax:
      return "Sp. index Max";
    case RunField::kOrder:
      return "Order";
    case RunField::kGain:
      return "Gain";
    case RunField::kReference:
      return "Reference [MHz]";
  }
  return "";
}

ParameterProblem notANumber(RunField field, const std::string& text, const FrequencySurvey& survey) {
  return problemOf(field, ruleOf(field, survey), "'" + text + "'");
}

ParameterProblems validateRunParameters(const RunParameters& parameters, const FrequencySurvey& survey) {
  ParameterProblems problems;
  const auto check = [&](RunField field, double value) {
    const Rule rule = ruleOf(field, survey);
    const bool accepted = value >= rule.lower && value <= rule.upper;
    // A file may claim frequencies of 0 and below, but every weight is a ratio to the reference.
    if (!accepted || (field == RunField::kReference && !(value > 0)))
      problems.push_back(problemOf(field, rule, numberText(rule, value)));
  };
  check(RunField::kIterations, parameters.iterations);
  check(RunField::kIndexThreshold, parameters.indexThreshold);
  check(RunField::kIndexMin, parameters.indexMin);
  check(RunField::kIndexMax, parameters.indexMax);
  check(RunField::kOrder, parameters.order);
  if (parameters.indexError && parameters.order == 1) problems.push_back(errorMapProblem(survey));
  check(RunField::kGain, parameters.gain);
  check(RunField::kReference, parameters.referenceMhz);
  return problems;
}

Status problemStatus(const ParameterProblems& problems) {
  return problems.empty() ? Status() : Status(StatusCode::kInvalidValue, problems.front().message);
}

}  // namespace lumo
