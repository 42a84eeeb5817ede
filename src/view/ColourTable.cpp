// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ColourTable.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace lumo {
namespace {

constexpr std::uint32_t kOpaque = 0xff000000U;
constexpr std::uint32_t kNeutralGrey = 0xff808080U;
constexpr std::uint32_t kSlateBlue = 0xff506a8cU;  // for the maps that are grey themselves

// Control points 0xRRGGBB at equal distances.
constexpr std::array kInferno{0x000004U, 0x280b54U, 0x65156eU, 0x9f2a63U,
                              0xd44842U, 0xf57d15U, 0xfac127U, 0xfcffa4U};
constexpr std::array kGrey{0x000000U, 0xffffffU};
constexpr std::array kInvertedGrey{0xffffffU, 0x000000U};
constexpr std::array kHeat{0x000000U, 0xe60000U, 0xffd200U, 0xffffffU};
constexpr std::array kRainbow{0x30123bU, 0x466be3U, 0x28bbecU, 0x31f299U, 0xa2fc3cU,
                              0xedd03aU, 0xfb8022U, 0xd23105U, 0x7a0403U};
constexpr std::array kCoolWarm{0x3b4cc0U, 0x8db0feU, 0xdddcdcU, 0xf49a7bU, 0xb40426U};

std::span<const std::uint32_t> controlPoints(ColourMap map) {
  switch (map) {
    case ColourMap::kInferno:
      return kInferno;
    case ColourMap::kGrey:
      return kGrey;
    case ColourMap::kInvertedGrey:
      return kInvertedGrey;
    case ColourMap::kHeat:
      return kHeat;
    case ColourMap::kRainbow:
      return kRainbow;
    case ColourMap::kCoolWarm:
      return kCoolWarm;
  }
  return kGrey;
}

std::uint32_t mixed(std::uint32_t first, std::uint32_t second, double share) {
  std::uint32_t colour = kOpaque;
  for (const unsigned shift : {0U, 8U, 16U}) {
    const double a = (first >> shift) & 0xffU;
    const double b = (second >> shift) & 0xffU;
    colour |= static_cast<std::uint32_t>(std::lround(a + (b - a) * share)) << shift;
  }
  return colour;
}

}  // namespace

std::string_view colourMapName(ColourMap map) {
  switch (map) {
    case ColourMap::kInferno:
      return "Inferno";
    case ColourMap::kGrey:
      return "Grey";
    case ColourMap::kInvertedGrey:
      return "Inverted grey";
    case ColourMap::kHeat:
      return "Heat";
    case ColourMap::kRainbow:
      return "Rainbow";
    case ColourMap::kCoolWarm:
      return "Cool-warm";
  }
  return "";
}

ColourTable::ColourTable(ColourMap map)
    : nanColour_(map == ColourMap::kGrey || map == ColourMap::kInvertedGrey ? kSlateBlue : kNeutralGrey) {
  const auto points = controlPoints(map);
  const double last = static_cast<double>(points.size() - 1);
  for (int i = 0; i < kSize; ++i) {
    const double place = last * i / (kSize - 1);
    const auto below = std::min(static_cast<std::size_t>(place), points.size() - 2);
    colours_[static_cast<std::size_t>(i)] =
        mixed(points[below], points[below + 1], place - static_cast<double>(below));
  }
}

std::uint32_t ColourTable::colour(double t) const {
  if (std::isnan(t)) return nanColour_;
  return colours_[static_cast<std::size_t>(std::lround(std::clamp(t, 0.0, 1.0) * (kSize - 1)))];
}

}  // namespace lumo
