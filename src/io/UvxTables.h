// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/LittleEndian.h"

namespace lumo {

// The content of a UVX file's tables as plain values; docs/formats.md gives their bytes. The reader
// (AUVXFile) and the writer (UvxWriter) share them.

/// IFs × channels per IF × stored Stokes products, the same for every group of a file.
struct UvxShape {
  std::uint32_t ifs = 0;
  std::uint32_t channels = 0;
  std::uint32_t products = 0;

  [[nodiscard]] std::uint64_t visibilities() const { return std::uint64_t{ifs} * channels * products; }
  bool operator==(const UvxShape&) const = default;
};

/// Frame of a source position.
enum class UvxFrame : std::uint32_t { kByEpoch = 0, kFk5 = 1, kIcrs = 2, kFk4 = 3 };

struct AUVXSourceItem {
  std::int32_t id = 0;
  std::string name;  ///< at most 16 bytes, no trailing blanks
  UvxFrame frame = UvxFrame::kByEpoch;
  double rightAscension = 0;  ///< degrees
  double declination = 0;     ///< degrees
  double epoch = 2000.0;      ///< 2000.0 or 1950.0
};

/// One frequency selection: where each IF lies.
struct UvxSelection {
  struct Band {
    double frequency = 0;  ///< Hz, channel 0
    double increment = 0;  ///< Hz from channel to channel, signed
  };
  std::int32_t id = 0;      ///< -128..127, as a group stores it
  std::vector<Band> bands;  ///< one per IF
};

/// Stored product codes: 1..4 I Q U V, -1..-4 RR LL RL LR, -5..-8 XX YY XY YX.
using UvxProducts = std::vector<std::int32_t>;

/// True for a code of the list above.
[[nodiscard]] bool isProductCode(std::int32_t code);

struct UvxAntenna {
  std::int32_t id = 0;
  std::string name;            ///< at most 16 bytes
  double x = 0, y = 0, z = 0;  ///< metres, geocentric
};

/// The 26-byte head of a uv group.
struct UvxRecord {
  static constexpr std::size_t kBytes = 26;

  std::uint8_t flag = 0;       ///< 0 = use the group
  std::int8_t freqSel = 0;     ///< frequency-selection ID
  std::uint16_t baseline = 0;  ///< 256 * antenna 1 + antenna 2, 0 when either is above 255
  float u = 0, v = 0, w = 0;   ///< seconds of light travel
  double time = 0;             ///< modified Julian date, days UTC
  std::int16_t source = 0;     ///< low 16 bits of the source ID

  /// True when the group is not to be used.
  [[nodiscard]] bool isFlagged() const { return flag != 0; }
  [[nodiscard]] static UvxRecord load(const std::uint8_t* bytes);
  void store(std::uint8_t* bytes) const;
};

inline UvxRecord UvxRecord::load(const std::uint8_t* bytes) {
  UvxRecord record;
  record.flag = bytes[0];
  record.freqSel = static_cast<std::int8_t>(bytes[1]);
  record.baseline = loadLittle<std::uint16_t>(bytes + 2);
  record.u = loadLittle<float>(bytes + 4);
  record.v = loadLittle<float>(bytes + 8);
  record.w = loadLittle<float>(bytes + 12);
  record.time = loadLittle<double>(bytes + 16);
  record.source = loadLittle<std::int16_t>(bytes + 24);
  return record;
}

}  // namespace lumo
