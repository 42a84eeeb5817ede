// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "io/AUVXComplex.h"
#include "io/AUVXFile.h"

namespace lumo {

/// A buffer for the visibilities of one uv group, ordered IF, channel, product with the product fastest.
class AUVXVisibility {
 public:
  /// Sized for the groups of an open file.
  explicit AUVXVisibility(const AUVXFile& file);

  /// Reads the visibilities of the file's current group. Returns 0 when there is none.
  int load(const AUVXFile& file);
  [[nodiscard]] std::size_t index(int ifIndex, int channel, int product) const {
    return (static_cast<std::size_t>(ifIndex) * channels_ + static_cast<std::size_t>(channel)) * products_ +
           static_cast<std::size_t>(product);
  }
  const AUVXComplex& operator()(int ifIndex, int channel, int product) const {
    return values_[index(ifIndex, channel, product)];
  }
  /// All of them in their order.
  [[nodiscard]] std::span<const AUVXComplex> values() const { return values_; }
  [[nodiscard]] int channels() const { return static_cast<int>(channels_); }

 private:
  std::size_t channels_;
  std::size_t products_;
  std::vector<AUVXComplex> values_;
};

}  // namespace lumo
