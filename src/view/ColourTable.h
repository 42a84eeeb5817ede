// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace lumo {

/// The colour maps on offer.
enum class ColourMap { kInferno, kGrey, kInvertedGrey, kHeat, kRainbow, kCoolWarm };

inline constexpr std::array kColourMaps{ColourMap::kInferno, ColourMap::kGrey,    ColourMap::kInvertedGrey,
                                        ColourMap::kHeat,    ColourMap::kRainbow, ColourMap::kCoolWarm};

/// Its name on screen, e.g. "Inverted grey".
[[nodiscard]] std::string_view colourMapName(ColourMap map);

/// Colours 0xAARRGGBB for values 0..1, interpolated linearly between a few control points.
class ColourTable {
 public:
  static constexpr int kSize = 1024;

  explicit ColourTable(ColourMap map);

  /// Opaque colour for `t`, clamped to 0..1; the NaN colour for NaN.
  [[nodiscard]] std::uint32_t colour(double t) const;
  /// Opaque colour of pixels without a value; one that the map itself does not contain.
  [[nodiscard]] std::uint32_t nanColour() const { return nanColour_; }

 private:
  std::array<std::uint32_t, kSize> colours_{};
  std::uint32_t nanColour_;
};

}  // namespace lumo
