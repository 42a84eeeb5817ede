// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "io/AUVXComplex.h"
#include "io/UvxTables.h"

namespace lumo {

/// Turns every N neighbouring channels of an IF into an IF of one channel; the last one takes what is left.
///
/// Gridding puts all channels of an IF at the uv point of its first one, which smears a wide IF radially. As
/// IFs of their own the averages get a uv point each, at their mean frequency.
class ChannelAverage {
 public:
  /// `channels` and `width` (N) at least 1.
  ChannelAverage(std::uint32_t channels, std::uint32_t products, std::uint32_t width);

  /// IFs that an IF becomes.
  [[nodiscard]] std::uint32_t ifs() const { return (channels_ + width_ - 1) / width_; }
  /// Frequency and width of each of them: the mean of its channels' frequencies, weighted with their widths'
  /// magnitudes (the first one's if all are 0), and the sum of the widths, both Hz, in the channels' order.
  /// Both spans have the size `channels`.
  [[nodiscard]] std::vector<UvxSelection::Band> bands(std::span<const double> frequencies,
                                                      std::span<const double> widths) const;
  /// Averages the usable ones of `channels` ([channel][product]) with their weights into `averages`
  /// ([ifs()][product]); sums are double. An average's weight is the sum of the weights; without a usable
  /// channel value and weight are 0.
  void apply(std::span<const AUVXComplex> channels, std::span<AUVXComplex> averages) const;

 private:
  std::uint32_t channels_;
  std::uint32_t products_;
  std::uint32_t width_;
};

}  // namespace lumo
