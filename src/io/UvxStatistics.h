// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/AUVXComplex.h"
#include "io/UvxTables.h"

namespace lumo {

class AUVXFile;

/// What the groups of a UVX file hold in one band: one IF of one frequency selection.
struct UvxBand {
  std::int32_t selection = 0;  ///< frequency-selection ID
  std::uint32_t ifNumber = 1;  ///< from 1
  double frequency = 0;        ///< Hz, channel 0
  double width = 0;            ///< Hz from channel to channel, signed
  std::uint32_t channels = 0;
  std::uint64_t records = 0;       ///< uv groups of the selection
  std::uint64_t visibilities = 0;  ///< stored: records x channels x products
  std::uint64_t usable = 0;        ///< of them finite with weight > 0, in records that are not flagged
  double weightSum = 0;            ///< over the usable visibilities
  /// Shortest and longest baseline of the records that are not flagged, wavelengths at the lowest and the
  /// highest channel; both 0 when there is none.
  double uvMin = 0, uvMax = 0;

  /// Share of the visibilities that cannot be used, 0..1; 0 when there is none.
  [[nodiscard]] double rejectedShare() const {
    return visibilities == 0 ? 0.0
                             : static_cast<double>(visibilities - usable) / static_cast<double>(visibilities);
  }
};

/// Counts groups band by band, while they are written or read.
class UvxStatistics {
 public:
  UvxStatistics() { firstBand_.fill(kNoBand); }
  UvxStatistics(const UvxShape& shape, std::span<const UvxSelection> selections);

  /// Counts a group; `visibilities` is [IF][channel][product]. A group whose selection is not listed counts
  /// only towards records().
  void add(const UvxRecord& record, std::span<const AUVXComplex> visibilities);

  /// Selection by selection, IF by IF, whether or not groups came.
  [[nodiscard]] const std::vector<UvxBand>& bands() const { return bands_; }
  [[nodiscard]] std::uint64_t records() const { return records_; }
  [[nodiscard]] std::uint64_t flaggedRecords() const { return flagged_; }

 private:
  static constexpr auto kNoBand = static_cast<std::size_t>(-1);

  UvxShape shape_;
  std::vector<UvxBand> bands_;
  std::array<std::size_t, 256> firstBand_;  ///< of the first selection of an ID, by the ID's byte
  std::uint64_t records_ = 0;
  std::uint64_t flagged_ = 0;
};

/// Reads all groups of an open file once; memory stays bounded. Ends early when the file is not intact() any
/// more.
[[nodiscard]] UvxStatistics countGroups(AUVXFile& file);

}  // namespace lumo
