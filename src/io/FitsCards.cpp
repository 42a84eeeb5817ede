// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsCards.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/TextForm.h"
#include "io/FitsText.h"

namespace lumo {

namespace {

constexpr std::size_t kCardWidth = 80;
constexpr std::size_t kKeyWidth = 8;
constexpr std::size_t kValueStart = 10;
constexpr std::size_t kFixedValueWidth = 20;
constexpr std::size_t kShortestText = 8;
constexpr std::string_view kHistory = "HISTORY ";

std::string_view trimRight(std::string_view text) {
  const auto last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

// FITS wants a capital E, and a point that tells a real number from an integer.
std::string realForm(std::string number) {
  const auto exponent = number.find('e');
  if (number.find('.') == std::string::npos)
    number.insert(exponent == std::string::npos ? number.size() : exponent, ".0");
  std::replace(number.begin(), number.end(), 'e', 'E');
  return number;
}

// Content of the quoted text at the start of a value field; nothing when there is none.
std::optional<std::string> quotedText(std::string_view field) {
  if (!field.starts_with('\'')) return std::nullopt;
  std::string text;
  for (std::size_t i = 1; i < field.size(); ++i) {
    if (field[i] == '\'') {
      if (i + 1 >= field.size() || field[i + 1] != '\'') break;
      ++i;
    }
    text += field[i];
  }
  text.resize(trimRight(text).size());
  return text;
}

}  // namespace

void FitsCards::add(const std::string& key, double value, std::string_view comment) {
  if (std::isfinite(value)) addValue(key, realForm(valToStr(value)), comment);
}

void FitsCards::addExact(const std::string& key, double value, std::string_view comment) {
  constexpr int kExactDigits = 17;
  if (std::isfinite(value)) addValue(key, realForm(nValToStr(value, kExactDigits)), comment);
}

void FitsCards::addText(const std::string& key, std::string_view text, std::string_view comment) {
  const std::string escaped = toFitsText(text);
  const auto quotes = [](std::string_view part) { return std::count(part.begin(), part.end(), '\''); };
  std::string_view fitting = cutFitsText(escaped, kTextLimit);
  while (fitting.size() + static_cast<std::size_t>(quotes(fitting)) > kTextLimit)
    fitting = cutFitsText(escaped, fitting.size() - 1);
  std::string quoted = "'";
  for (const char c : fitting) quoted.append(c == '\'' ? 2 : 1, c);
  quoted.resize(std::max(quoted.size(), kShortestText + 1), ' ');
  addValue(key, quoted + '\'', comment);
}

void FitsCards::addHistory(std::string_view entry) {
  for (const std::string& line : toHistoryLines(entry)) addRecord(std::string(kHistory) + line);
}

void FitsCards::addValue(const std::string& key, const std::string& value, std::string_view comment) {
  std::string card = key;
  card.resize(kKeyWidth, ' ');
  card += "= ";
  const bool quoted = value.starts_with('\'');
  if (!quoted && value.size() < kFixedValueWidth) card.append(kFixedValueWidth - value.size(), ' ');
  card += value;
  if (quoted && value.size() < kFixedValueWidth) card.append(kFixedValueWidth - value.size(), ' ');
  if (!comment.empty() && card.size() + 3 + comment.size() <= kCardWidth) card.append(" / ").append(comment);
  addRecord(std::move(card));
}

void FitsCards::addRecord(std::string record) {
  if (record.size() > kValueStart && record.compare(kKeyWidth, 2, "= ") == 0)
    index_.try_emplace(std::string(trimRight(std::string_view(record).substr(0, kKeyWidth))),
                       records_.size());
  records_.push_back(std::move(record));
}

std::string_view FitsCards::value(const std::string& key) const {
  const auto found = index_.find(key);
  if (found == index_.end()) return {};
  std::string_view field = std::string_view(records_[found->second]).substr(kValueStart);
  const auto start = field.find_first_not_of(' ');
  return start == std::string_view::npos ? std::string_view() : field.substr(start);
}

std::optional<std::string> FitsCards::text(const std::string& key) const {
  return quotedText(value(key));
}

std::optional<double> FitsCards::number(const std::string& key) const {
  const std::string_view field = value(key);
  std::string number = quotedText(field).value_or(std::string(field.substr(0, field.find('/'))));
  number.resize(trimRight(number).size());
  number.erase(0, number.find_first_not_of(' '));
  std::replace_if(
      number.begin(), number.end(), [](char c) { return c == 'D' || c == 'd'; }, 'E');
  double read = 0.0;
  if (!parseDouble(number, read) || !std::isfinite(read)) return std::nullopt;
  return read;
}

std::vector<std::string> FitsCards::historyLines() const {
  std::vector<std::string> lines;
  for (const std::string& record : records_) {
    // Trailing blanks of a card may be missing, so an empty line is the bare keyword.
    const std::string_view line = record;
    if (line.starts_with(kHistory) || line == trimRight(kHistory))
      lines.emplace_back(trimRight(line.substr(std::min(line.size(), kKeyWidth))));
  }
  return lines;
}

std::string_view cardValue(std::string_view card) {
  constexpr std::array<std::string_view, 4> kWithoutValue{"COMMENT ", "HISTORY ", "CONTINUE", "        "};
  const std::string_view key = card.substr(0, kKeyWidth);
  if (std::find(kWithoutValue.begin(), kWithoutValue.end(), key) != kWithoutValue.end()) return {};
  const std::size_t sign = card.find('=');
  const std::size_t start = sign == std::string_view::npos ? sign : card.find_first_not_of(' ', sign + 1);
  return start == std::string_view::npos ? std::string_view() : trimRight(card.substr(start));
}

bool valueFits(std::string_view card) {
  return cardValue(card).size() <= kCardWidth - kValueStart;
}

std::string axisKey(std::string_view stem, int axis) {
  return std::string(stem) + std::to_string(axis);
}

std::string headerBytes(const FitsCards& cards) {
  std::string bytes;
  const auto add = [&bytes](std::string_view card) {
    bytes += card.substr(0, kCardWidth);
    bytes.resize((bytes.size() + kCardWidth - 1) / kCardWidth * kCardWidth, ' ');
  };
  for (const std::string& record : cards.records()) add(record);
  add("END");
  bytes.resize((bytes.size() + kFitsBlockBytes - 1) / kFitsBlockBytes * kFitsBlockBytes, ' ');
  return bytes;
}

}  // namespace lumo
