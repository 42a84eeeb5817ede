// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/ChannelAverage.h"

#include <algorithm>
#include <cmath>

namespace lumo {

ChannelAverage::ChannelAverage(std::uint32_t channels, std::uint32_t products, std::uint32_t width)
    : channels_(channels), products_(products), width_(std::min(width, channels)) {}

std::vector<UvxSelection::Band> ChannelAverage::bands(std::span<const double> frequencies,
                                                      std::span<const double> widths) const {
  std::vector<UvxSelection::Band> bands;
  for (std::uint32_t first = 0; first < channels_; first += width_) {
    const std::uint32_t count = std::min(width_, channels_ - first);
    // Relative to the first channel: sums of absolute frequencies would lose digits.
    double offset = 0;
    double total = 0;
    UvxSelection::Band band;
    for (std::uint32_t c = first; c < first + count; ++c) {
      const double width = std::abs(widths[c]);
      offset += width * (frequencies[c] - frequencies[first]);
      total += width;
      band.increment += widths[c];
    }
    band.frequency = frequencies[first];
    if (total > 0) band.frequency += offset / total;
    bands.push_back(band);
  }
  return bands;
}

void ChannelAverage::apply(std::span<const AUVXComplex> channels, std::span<AUVXComplex> averages) const {
  for (std::uint32_t block = 0; block < ifs(); ++block) {
    const std::uint32_t first = block * width_;
    const std::uint32_t last = std::min(first + width_, channels_);
    for (std::uint32_t product = 0; product < products_; ++product) {
      double re = 0, im = 0, weight = 0;
      for (std::uint32_t c = first; c < last; ++c) {
        const AUVXComplex& value = channels[std::size_t{c} * products_ + product];
        if (!value.isUsable()) continue;
        const double w = value.Weight();
        re += w * value.Re();
        im += w * value.Im();
        weight += w;
      }
      averages[std::size_t{block} * products_ + product] =
          weight > 0 ? AUVXComplex(re / weight, im / weight, weight) : AUVXComplex();
    }
  }
}

}  // namespace lumo
