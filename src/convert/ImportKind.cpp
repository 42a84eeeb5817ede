// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/ImportKind.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "core/AFile.h"
#include "core/Paths.h"

namespace lumo {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCardBytes = 80;
constexpr int kMostCards = 3600;
constexpr int kDeepest = 4;  ///< folders between a file of a set and the set

/// The value on a card of the keyword, "" on any other card.
std::string_view valueOn(std::string_view card, std::string_view keyword) {
  const std::string_view name = card.substr(0, 8);
  if (name.substr(0, name.find(' ')) != keyword || card.substr(8, 2) != "= ") return {};
  std::string_view value = card.substr(10);
  value = value.substr(0, value.find('/'));
  const auto first = value.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return value.substr(first, value.find_last_not_of(' ') - first + 1);
}

bool startsAsRandomGroups(const std::string& path) {
  AFile file;
  if (file.Open(path, AFile::kRead) == 0) return false;
  std::array<char, kCardBytes> bytes{};
  const std::string_view card(bytes.data(), bytes.size());
  bool isLineless = false;  // the first axis of random groups has no pixels
  bool hasGroups = false;
  for (int i = 0; i < kMostCards && file.Read(bytes.data(), bytes.size()) != 0; ++i) {
    if (i == 0 && valueOn(card, "SIMPLE") != "T") return false;
    if (card.starts_with("END ")) break;
    isLineless = isLineless || valueOn(card, "NAXIS1") == "0";
    hasGroups = hasGroups || valueOn(card, "GROUPS") == "T";
  }
  return isLineless && hasGroups;
}

bool isMeasurementSet(const fs::path& folder) {
  constexpr std::string_view kFirstLine = "Type = Measurement Set";
  std::array<char, kFirstLine.size()> bytes{};
  AFile info;
  return info.Open((folder / "table.info").string(), AFile::kRead) != 0 &&
         info.Read(bytes.data(), bytes.size()) != 0 &&
         std::string_view(bytes.data(), bytes.size()) == kFirstLine;
}

/// The set that a folder, or the folder of a table file, is or lies in; "" when there is none.
std::string setAround(const fs::path& path, bool isFolder) {
  std::error_code error;
  fs::path folder = isFolder && path.has_filename() ? path : path.parent_path();
  for (int i = 0; i < kDeepest && fs::is_regular_file(folder / "table.dat", error); ++i) {
    if (isMeasurementSet(folder)) return folder.string();
    folder = folder.parent_path();
  }
  return {};
}

}  // namespace

Importable importableAt(const std::string& path) {
  std::error_code error;
  const bool isFolder = fs::is_directory(path, error);
  if (!isFolder && !fs::is_regular_file(path, error)) return {};
  if (!isFolder && startsAsRandomGroups(path)) return {ImportKind::kUvfits, path};
  if (!isFolder && !fileName(path).starts_with("table.")) return {};
  const std::string set = setAround(fs::absolute(path, error), isFolder);
  return set.empty() ? Importable() : Importable{ImportKind::kMeasurementSet, set};
}

}  // namespace lumo
