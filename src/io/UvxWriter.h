// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/AFile.h"
#include "core/Status.h"
#include "io/AUVXComplex.h"
#include "io/UvxTables.h"

namespace lumo {

/// Everything a UVX file holds besides its groups.
struct UvxContent {
  UvxShape shape;
  std::string unit;  ///< at most 15 bytes; "JY" for calibrated data, empty for uncalibrated
  std::vector<AUVXSourceItem> sources;
  std::vector<UvxSelection> selections;
  UvxProducts products;
  std::vector<UvxAntenna> antennas;
  std::vector<std::string> history;  ///< lines without line ends
};

/// Writes a UVX file group by group, in memory that does not grow with their number.
///
/// begin(), append() any number of times, finish(). The file appears under its name only when finish()
/// succeeds. The tables are written by finish(), so `history` may still grow until then through content().
class UvxWriter {
 public:
  /// Checks the content (at least one source, selection and product; shape agreeing with the tables; finite
  /// frequencies and positions; IDs that fit) and creates the file.
  [[nodiscard]] Status begin(const std::string& name, UvxContent content);
  /// Adds a group. `visibilities`: [ifs][channels][products], product fastest; its size must be the shape's.
  /// Groups are written as given; the u and v extents follow the ones with flag 0 and finite u and v.
  [[nodiscard]] Status append(const UvxRecord& record, std::span<const AUVXComplex> visibilities);
  [[nodiscard]] Status finish();

  [[nodiscard]] UvxContent& content() { return content_; }
  [[nodiscard]] std::uint64_t groups() const { return groups_; }

 private:
  [[nodiscard]] Status writeTables(std::vector<std::uint8_t>& directory, std::uint32_t& count);

  AFile file_;
  UvxContent content_;
  std::vector<std::uint8_t> group_;
  std::uint64_t groups_ = 0;
  std::uint64_t position_ = 0;
  double uMin_ = 0, uMax_ = 0, vMin_ = 0, vMax_ = 0;
  bool extentKnown_ = false;
};

}  // namespace lumo
