// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/NoiseSource.h"

#include <bit>
#include <cmath>

#include "core/Units.h"

namespace lumo {

namespace {

constexpr std::uint64_t kSplitMixStep = 0x9E3779B97F4A7C15;
constexpr double kTwoToMinus53 = 0x1p-53;

}  // namespace

std::uint64_t splitMix(std::uint64_t value) {
  value += kSplitMixStep;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

NoiseSource::NoiseSource(std::uint64_t seed) {
  for (std::uint64_t& word : state_) {
    word = splitMix(seed);
    seed += kSplitMixStep;
  }
}

std::uint64_t NoiseSource::bits() {
  const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
  const std::uint64_t shifted = state_[1] << 17;
  state_[2] ^= state_[0];
  state_[3] ^= state_[1];
  state_[1] ^= state_[2];
  state_[0] ^= state_[3];
  state_[2] ^= shifted;
  state_[3] = std::rotl(state_[3], 45);
  return result;
}

std::complex<double> NoiseSource::next() {
  const double p = static_cast<double>((bits() >> 11) + 1) * kTwoToMinus53;
  const double q = static_cast<double>(bits() >> 11) * kTwoToMinus53;
  const double radius = std::sqrt(-2 * std::log(p));
  return {radius * std::cos(kTwoPi * q), radius * std::sin(kTwoPi * q)};
}

}  // namespace lumo
