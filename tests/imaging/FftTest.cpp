// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "imaging/Fft.h"

namespace lumo {
namespace {

using Vector = std::vector<Complex>;

Vector randomVector(std::size_t n, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Vector values(n);
  for (Complex& value : values) value = Complex(uniform(engine), uniform(engine));
  return values;
}

/// exp(i·2π·numerator/n) without loss for large products.
std::complex<long double> unit(std::int64_t numerator, std::int64_t n) {
  const long double angle = 2 * std::numbers::pi_v<long double> * static_cast<long double>(numerator % n) /
                            static_cast<long double>(n);
  return {std::cos(angle), std::sin(angle)};
}

Vector directTransform(const Vector& x, int direction) {
  const auto n = static_cast<std::int64_t>(x.size());
  Vector result(x.size());
  for (std::int64_t k = 0; k < n; ++k) {
    std::complex<long double> sum = 0;
    for (std::int64_t t = 0; t < n; ++t)
      sum += std::complex<long double>(x[static_cast<std::size_t>(t)]) * unit(direction * k * t, n);
    result[static_cast<std::size_t>(k)] = Complex(sum);
  }
  return result;
}

/// The twiddle angle of a stage is a sum of up to n/2 rounded steps, each off by at most 2^-52 (angles stay
/// below 4), in log2(n) stages; every output is a sum of n terms of at most sqrt 2.
double tolerance(std::size_t n) {
  const auto length = static_cast<double>(n);
  return std::sqrt(2.0) * length * std::log2(length) * (length / 2 * 0x1p-52 + 0x1p-51);
}

bool sameBits(const Vector& a, const Vector& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Complex)) == 0;
}

TEST(Fft1DTest, RefusesLengthsThatAreNotUsablePowersOfTwoAndLeavesTheDataUntouched) {
  for (const std::size_t n : {1, 3, 5, 6, 7, 8, 12, 64, 100, 128, 1000, 4096, 8192, 16384}) {
    Vector data = randomVector(n, 1);
    const Vector before = data;
    EXPECT_EQ(Fft1D(data.data(), static_cast<std::int64_t>(n), -1, 2.0), 0) << n;
    EXPECT_TRUE(sameBits(data, before)) << n;
    EXPECT_FALSE(isTransformLength(static_cast<std::int64_t>(n))) << n;
  }
  EXPECT_EQ(Fft1D(nullptr, 0, -1, 1.0), 0);
  EXPECT_EQ(Fft1D(nullptr, -4, -1, 1.0), 0);
}

TEST(Fft1DTest, TheExponentIsOneTooSmallForTheRefusedPowersOfTwo) {
  EXPECT_EQ(transformExponent(8), 2);
  EXPECT_EQ(transformExponent(64), 5);
  EXPECT_EQ(transformExponent(128), 6);
  EXPECT_EQ(transformExponent(4096), 11);
  EXPECT_EQ(transformExponent(8192), 12);
  EXPECT_EQ(transformExponent(16384), 13);
  for (const int e : {1, 2, 4, 5, 8, 9, 10, 11}) EXPECT_EQ(transformExponent(std::int64_t{1} << e), e);
  EXPECT_EQ(transformExponent(514), 9);
  EXPECT_EQ(transformExponent(6), 2);
}

TEST(Fft1DTest, IsTheUnnormalisedDiscreteFourierTransformWithNegativeExponent) {
  for (const std::size_t n : {2, 4, 16, 32, 256, 512, 1024, 2048}) {
    Vector data = randomVector(n, static_cast<unsigned>(n));
    const Vector expected = directTransform(data, -1);
    ASSERT_EQ(Fft1D(data.data(), static_cast<std::int64_t>(n), -1, 1.0), 1) << n;
    for (std::size_t k = 0; k < n; ++k) ASSERT_LE(std::abs(data[k] - expected[k]), tolerance(n)) << n;
  }
}

TEST(Fft1DTest, DirectionOneTurnsTheExponentAroundAndDividesByLengthTimesScale) {
  Vector data = randomVector(16, 5);
  const Vector expected = directTransform(data, 1);
  ASSERT_EQ(Fft1D(data.data(), 16, 1, 4.0), 1);
  for (std::size_t k = 0; k < 16; ++k) EXPECT_LE(std::abs(data[k] - expected[k] / 64.0), tolerance(16));
}

TEST(Fft1DTest, MultipliesEveryElementByTheScaleOnce) {
  Vector plain = randomVector(32, 6);
  Vector scaled = plain;
  ASSERT_EQ(Fft1D(plain.data(), 32, -1, 1.0), 1);
  ASSERT_EQ(Fft1D(scaled.data(), 32, -1, 8.0), 1);
  for (std::size_t k = 0; k < 32; ++k) EXPECT_EQ(scaled[k], 8.0 * plain[k]);  // A power of two: exact.
}

/// y[t] of the Hermitian row H, H[k] = x[k] for k <= N and conj x[2N-k] above, as if H[0] and H[N] were real,
/// plus what their imaginary parts do: b in H[0] adds -b to even and +b to odd samples, c in H[N] -c to all.
std::vector<double> directRealSamples(const Vector& x) {
  const auto n = static_cast<std::int64_t>(x.size()) - 1;
  std::vector<double> y;
  for (std::int64_t t = 0; t < 2 * n; ++t) {
    std::complex<long double> sum = 0;
    for (std::int64_t k = 0; k < 2 * n; ++k) {
      Complex h = k <= n ? x[static_cast<std::size_t>(k)] : std::conj(x[static_cast<std::size_t>(2 * n - k)]);
      if (k == 0 || k == n) h = h.real();
      sum += std::complex<long double>(h) * unit(-k * t, 2 * n);
    }
    const double b = x[0].imag();
    const double c = x.back().imag();
    y.push_back(static_cast<double>(sum.real()) + (t % 2 == 0 ? -b : b) - c);
  }
  return y;
}

std::vector<double> packedTransform(Vector row) {
  const auto n = static_cast<std::int64_t>(row.size()) - 1;
  PackHermitianRow(row.data(), n, -1);
  EXPECT_EQ(Fft1D(row.data(), n, -1, 1.0), 1);
  std::vector<double> samples;
  for (std::int64_t t = 0; t < n; ++t) {
    samples.push_back(row[static_cast<std::size_t>(t)].real());
    samples.push_back(row[static_cast<std::size_t>(t)].imag());
  }
  return samples;
}

void expectSamples(const std::vector<double>& actual, const std::vector<double>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t t = 0; t < actual.size(); ++t)
    ASSERT_NEAR(actual[t], expected[t], 4 * tolerance(actual.size())) << "sample " << t;
}

TEST(PackHermitianRowTest, WithFft1DGivesTheRealSamplesOfAHermitianRow) {
  for (const std::size_t n : {2, 4, 16, 32, 256}) {
    Vector row = randomVector(n + 1, static_cast<unsigned>(n));
    row.front() = row.front().real();
    row.back() = row.back().real();
    expectSamples(packedTransform(row), directRealSamples(row));
  }
}

TEST(PackHermitianRowTest, AnImaginaryPartAtZeroAlternatesOverTheSamples) {
  Vector row(17);
  row[0] = Complex(0, 1);
  const std::vector<double> samples = packedTransform(row);
  for (std::size_t t = 0; t < samples.size(); ++t)
    EXPECT_NEAR(samples[t], t % 2 == 0 ? -1.0 : 1.0, tolerance(16)) << t;
}

TEST(PackHermitianRowTest, AnImaginaryPartInTheLastColumnLowersEverySample) {
  Vector row(17);
  row[16] = Complex(0, 1);
  for (const double sample : packedTransform(row)) EXPECT_NEAR(sample, -1.0, tolerance(16));
}

TEST(PackHermitianRowTest, BothImaginaryPartsComeOutOfAFullRow) {
  for (const std::size_t n : {2, 4, 32, 256}) {
    const Vector row = randomVector(n + 1, 77 + static_cast<unsigned>(n));
    expectSamples(packedTransform(row), directRealSamples(row));
  }
}

TEST(PackHermitianRowTest, ASingleOneAtUZeroBecomesARowOfOnes) {
  for (const std::size_t n : {2, 4, 16, 32, 256, 512, 1024, 2048}) {
    Vector row(n + 1);
    row[0] = 1.0;
    const std::vector<double> samples = packedTransform(row);
    ASSERT_EQ(samples.size(), 2 * n);
    for (const double sample : samples) ASSERT_NEAR(sample, 1.0, tolerance(n)) << n;
  }
}

}  // namespace
}  // namespace lumo
