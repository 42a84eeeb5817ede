// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "io/AUVXFile.h"
#include "io/UvxTables.h"

namespace lumo {

/// The frequency table "FQ" of a file for one source; a copyable value.
class AUVXFqTbl {
 public:
  AUVXFqTbl() = default;
  /// In UVX files the selections are common to all sources; the ID is there for the day they are not.
  AUVXFqTbl(const AUVXFile& file, std::int32_t sourceId);

  /// Number of frequency selections.
  [[nodiscard]] int GetFreqSels() const { return static_cast<int>(selections_.size()); }
  /// IFs per selection.
  [[nodiscard]] int GetIFs() const { return static_cast<int>(ifs_); }
  /// Channels per IF.
  [[nodiscard]] int GetChannels() const { return static_cast<int>(channels_); }
  /// ID of a selection as stored in the groups.
  [[nodiscard]] int GetFreqSelID(int selection) const {
    return selections_[static_cast<std::size_t>(selection)].id;
  }
  /// Selection index of an ID (the first one), -1 if no selection has it.
  [[nodiscard]] int GetFreqSelNum(int id) const;
  /// The selections as the table holds them.
  [[nodiscard]] const std::vector<UvxSelection>& selections() const { return selections_; }
  /// Frequency of one channel, Hz: channel 0's plus channel times the IF's increment.
  [[nodiscard]] double GetFreq(int channel, int ifIndex, int selection) const;

 private:
  std::vector<UvxSelection> selections_;
  std::uint32_t ifs_ = 0;
  std::uint32_t channels_ = 0;
};

}  // namespace lumo
