// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/HermitianPacker.h"

#include <cmath>

#include "core/Units.h"
#include "imaging/Fft.h"

// Compiled once per instruction set; the one to run is chosen when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/HermitianPacker.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// The pairs k and n - k from 1 up to the last whole vector below n / 2, all as doubles, real parts first.
/// @return the first k left.
std::int64_t packPairs(const double* row, std::int64_t n, const double* alpha, const double* beta,
                       double* packed) {
  const hn::ScalableTag<double> d;
  const auto values = static_cast<std::int64_t>(hn::Lanes(d)) / 2;  // complex ones of a vector
  if (values == 0) return 1;
  const auto two = hn::Set(d, 2.0);
  const auto conjugate = hn::OddEven(hn::Set(d, -0.0), hn::Zero(d));
  std::int64_t k = 1;
  for (; k + values <= n / 2; k += values) {
    const std::int64_t mirrored = n - k - values + 1;
    const auto x = hn::LoadU(d, row + 2 * k);
    const auto y = hn::ReverseBlocks(d, hn::LoadU(d, row + 2 * mirrored));
    const auto difference = hn::Sub(x, hn::Xor(y, conjugate));
    const auto t = hn::Add(hn::Mul(difference, hn::LoadU(d, alpha + 2 * k)),
                           hn::Mul(hn::Reverse2(d, difference), hn::LoadU(d, beta + 2 * k)));
    hn::StoreU(hn::Mul(two, hn::Sub(x, t)), d, packed + 2 * k);
    hn::StoreU(hn::ReverseBlocks(d, hn::Mul(two, hn::Add(y, hn::Xor(t, conjugate)))), d,
               packed + 2 * mirrored);
  }
  return k;
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(packPairs);

HermitianPacker::HermitianPacker(std::int64_t n, int direction) : n_(n) {
  double angle = 1.5707963267948966;
  const double step = direction * kPi / static_cast<double>(n);
  for (std::int64_t k = 0; k <= n / 2; ++k, angle += step) {
    const double alpha = (1.0 - std::cos(angle)) * 0.5;
    const double beta = -0.5 * std::sin(angle);
    alpha_.insert(alpha_.end(), {alpha, alpha});
    beta_.insert(beta_.end(), {-beta, beta});
  }
}

void HermitianPacker::pack(Complex* row, Complex* packed) const {
  // A complex number is an array of two.
  const auto* const values = reinterpret_cast<const double*>(row);
  const std::int64_t next = HWY_DYNAMIC_DISPATCH(packPairs)(values, n_, alpha_.data(), beta_.data(),
                                                            reinterpret_cast<double*>(packed));
  const auto packPair = [&](std::int64_t k, Complex& mirrored) {
    const double alpha = alpha_[static_cast<std::size_t>(2 * k)];
    const double beta = beta_[static_cast<std::size_t>(2 * k + 1)];
    const HermitianPair pair(row[k], row[n_ - k], alpha, beta);
    packed[k] = pair.low;
    if (k < n_ / 2)
      mirrored = pair.high;
    else if (n_ - k != k)
      mirrored = row[n_ - k];  // of an odd length, which nothing transforms
  };
  for (std::int64_t k = next; k <= n_ / 2; ++k) packPair(k, packed[n_ - k]);
  packPair(0, row[n_]);
}

}  // namespace lumo

#endif
