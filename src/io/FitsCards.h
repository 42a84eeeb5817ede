// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lumo {

/// The cards of a FITS header as text, to look values up in or to write. Of several cards with one keyword
/// the first that is not empty counts. Values that are not finite are never added, and never found.
class FitsCards {
 public:
  /// Longest text between the quotes of a card, doubled quotes counting twice.
  static constexpr std::size_t kTextLimit = 68;

  /// A number in the shortest form that reads back to the same double.
  void add(const std::string& key, double value, std::string_view comment = {});
  /// A number with 17 significant digits.
  void addExact(const std::string& key, double value, std::string_view comment = {});
  /// A text, escaped by toFitsText() and cut where it exceeds the card.
  void addText(const std::string& key, std::string_view text, std::string_view comment = {});
  /// An entry of any length, as as many HISTORY cards as it needs.
  void addHistory(std::string_view entry);
  /// A whole card as it stands in a file (up to 80 characters).
  void addRecord(std::string record);

  [[nodiscard]] bool has(const std::string& key) const { return index_.contains(key); }
  /// Whether the card that counts for this keyword is number `place` of all, from 0.
  [[nodiscard]] bool standsAt(std::size_t place, const std::string& key) const {
    const auto found = index_.find(key);
    return found != index_.end() && found->second == place;
  }
  /// A finite number, also when it stands in quotes.
  [[nodiscard]] std::optional<double> number(const std::string& key) const;
  /// A quoted text without its trailing blanks, escapes as they stand.
  [[nodiscard]] std::optional<std::string> text(const std::string& key) const;
  /// What stands on the HISTORY cards, one line a card, without trailing blanks.
  [[nodiscard]] std::vector<std::string> historyLines() const;
  [[nodiscard]] const std::vector<std::string>& records() const { return records_; }

 private:
  void addValue(const std::string& key, const std::string& value, std::string_view comment);
  [[nodiscard]] std::string_view value(const std::string& key) const;

  std::vector<std::string> records_;
  std::unordered_map<std::string, std::size_t> index_;
};

/// Headers and data of a FITS file fill whole blocks of so many bytes.
inline constexpr std::size_t kFitsBlockBytes = 2880;

/// What stands behind the first "=" of a card, comment included, without blanks at either end; nothing on
/// cards that hold no value, like COMMENT.
[[nodiscard]] std::string_view cardValue(std::string_view card);
/// False when that is longer than the 70 characters FITS has room for, which takes a "=" too far in front.
/// cfitsio reads such values too, and writes some behind the end of its memory.
[[nodiscard]] bool valueFits(std::string_view card);

/// The keyword of an axis, e.g. "CRPIX" and 1 give "CRPIX1".
[[nodiscard]] std::string axisKey(std::string_view stem, int axis);

/// The bytes of a header: cards of 80 characters, END, blanks up to a whole block of 2880.
[[nodiscard]] std::string headerBytes(const FitsCards& cards);

}  // namespace lumo
