// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/OptionText.h"

#include <limits>
#include <string_view>

#include "core/TextForm.h"

namespace lumo {

namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const auto at = text.find(separator);
    parts.push_back(text.substr(0, at));
    if (at == std::string_view::npos) return parts;
    text.remove_prefix(at + 1);
  }
}

Status wrong(const std::string& option, const std::string& text, const char* expected) {
  return {StatusCode::kInvalidValue, option + " " + text + ": expected " + expected};
}

}  // namespace

Status parseNumberList(const std::string& option, const std::string& text, std::vector<double>& values) {
  std::vector<double> read;
  for (const std::string_view part : split(text, ',')) {
    double value = 0;
    if (!parseDouble(part, value)) return wrong(option, text, "numbers separated by commas");
    read.push_back(value);
  }
  values = std::move(read);
  return {};
}

Status parseNumberOrPair(const std::string& option, const std::string& text, double& a, double& b) {
  std::vector<double> values;
  const Status status = parseNumberList(option, text, values);
  if (!status.ok() || values.size() > 2) return wrong(option, text, "one number or two separated by a comma");
  a = values.front();
  b = values.back();
  return {};
}

Status parsePair(const std::string& option, const std::string& text, double& a, double& b) {
  std::vector<double> values;
  const Status status = parseNumberList(option, text, values);
  if (!status.ok() || values.size() != 2) return wrong(option, text, "two numbers separated by a comma");
  a = values[0];
  b = values[1];
  return {};
}

Status parseWholeNumbers(const std::string& option, const std::string& text, std::int32_t& a,
                         std::int32_t& b) {
  std::vector<std::int32_t> values;
  for (const std::string_view part : split(text, ',')) {
    std::int64_t value = 0;
    if (!parseInt(part, value) || value < 0 || value > std::numeric_limits<std::int32_t>::max())
      return wrong(option, text, "one whole number or two separated by a comma");
    values.push_back(static_cast<std::int32_t>(value));
  }
  if (values.size() > 2) return wrong(option, text, "one whole number or two separated by a comma");
  a = values.front();
  b = values.back();
  return {};
}

Status parseSelection(const std::string& text, SelectionText& selection) {
  constexpr const char* kExpected = "FILE_NUMBER:ID[,ID...] or FILE_NUMBER:none";
  const auto colon = text.find(':');
  if (colon == std::string::npos) return wrong("--select", text, kExpected);
  SelectionText read;
  if (!parseInt(std::string_view(text).substr(0, colon), read.file))
    return wrong("--select", text, kExpected);
  const std::string_view ids = std::string_view(text).substr(colon + 1);
  if (ids != "none") {
    for (const std::string_view part : split(ids, ',')) {
      std::int64_t id = 0;
      if (!parseInt(part, id)) return wrong("--select", text, kExpected);
      read.ids.push_back(id);
    }
  }
  selection = std::move(read);
  return {};
}

}  // namespace lumo
