// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "imaging/UvPlaneData.h"

namespace lumo {

/// Which part of the uv plane falls on which pixels.
struct UvFrame {
  UvRange visible;  ///< wider and higher than 0
  int width = 1;    ///< pixels of the device
  int height = 1;
  int uDirection = -1;    ///< -1: u grows from right to left
  int vDirection = 1;     ///< 1: v grows upwards
  int pixelsPerUnit = 1;  ///< pixels of the device in the unit that marks are measured in

  bool operator==(const UvFrame&) const = default;
};

/// Counts how many points fall on each pixel: a picture of any number of points in memory that depends on the
/// picture alone.
class UvHitGrid {
 public:
  /// The widest and highest picture; larger frames are cut down to it.
  static constexpr int kMostPixels = 8192;

  explicit UvHitGrid(const UvFrame& frame);

  /// Counts P and its mirror, each where it lies in the frame. A point on the frame's border counts to the
  /// pixel inside.
  void add(const UvPoint& point);

  [[nodiscard]] const UvFrame& frame() const { return frame_; }
  /// Hits of a pixel.
  [[nodiscard]] std::uint32_t operator()(int row, int column) const {
    return hits_[static_cast<std::size_t>(row) * static_cast<std::size_t>(frame_.width) +
                 static_cast<std::size_t>(column)];
  }
  /// Points and mirrors inside the frame: the sum of all hits.
  [[nodiscard]] std::uint64_t crosses() const { return crosses_; }
  /// The most hits on one pixel.
  [[nodiscard]] std::uint32_t largest() const;
  /// Size of the marks that suits what was counted; see uvMarkSize().
  [[nodiscard]] int markSize() const;

 private:
  void hit(double u, double v);

  UvFrame frame_;
  double columnsPerU_ = 0.0;
  double rowsPerV_ = 0.0;
  std::vector<std::uint32_t> hits_;  ///< [height][width]
  std::uint64_t crosses_ = 0;
};

/// The full size of a cross, and the smallest that is still one.
inline constexpr int kUvCrossSize = 16;
inline constexpr int kUvSmallestCross = 3;

/// Size of a mark with `occupied` places marked on `area` places: crosses of 16, from arm's end to arm's end,
/// while they cover no more than a tenth of the picture (one of size s covers about 2·s places), then as much
/// smaller as keeps them to it; marks of sizes 2 and 1 are dots of so many places each way. So dense coverage
/// never becomes a blot, and a few points are never overlooked.
[[nodiscard]] int uvMarkSize(std::size_t occupied, std::size_t area);

}  // namespace lumo
