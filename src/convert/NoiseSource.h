// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <complex>
#include <cstdint>

namespace lumo {

/// Reproducible Gaussian noise: its bits depend on the seed only, not on the standard library's distributions
/// (two mathematical libraries may still round a logarithm or a sine differently in the last bit).
///
/// Generator xoshiro256++ (Blackman & Vigna 2021), its state filled by SplitMix64 from the seed. A pair of
/// normal deviates comes from two outputs a and b by the transform of Box & Muller (1958): with
/// p = ((a >> 11) + 1) · 2^-53 and q = (b >> 11) · 2^-53, sqrt(-2 ln p) · (cos 2πq, sin 2πq).
class NoiseSource {
 public:
  explicit NoiseSource(std::uint64_t seed);

  /// Two independent deviates of mean 0 and standard deviation 1.
  [[nodiscard]] std::complex<double> next();

 private:
  [[nodiscard]] std::uint64_t bits();

  std::array<std::uint64_t, 4> state_;
};

/// One step of SplitMix64 (Steele, Lea & Flood 2014); turns neighbouring numbers into unrelated ones.
[[nodiscard]] std::uint64_t splitMix(std::uint64_t value);

}  // namespace lumo
