// SPDX-License-Identifier: GPL-3.0-or-later
#include "CleanSky.h"

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <utility>

#include "io/MapProduct.h"
#include "io/ProductNames.h"

namespace lumo::bench {

namespace {

constexpr int kFrequencies = 8;
constexpr double kHalfBand = 0.15;

double offsetOf(int frequency) {
  return kHalfBand * (2.0 * frequency / (kFrequencies - 1) - 1.0);
}

/// A cell of the uv plane that an observation fills, in whole cells of the beam's transform.
struct Sample {
  std::int64_t u;
  std::int64_t v;
  double f;
};

std::vector<Sample> tracks(std::int64_t beamSize) {
  std::mt19937 random(12);
  std::normal_distribution<double> place(0.0, 0.3);
  std::vector<std::pair<double, double>> antennas;
  for (int i = 0; i < 10; ++i) antennas.emplace_back(place(random), 0.5 * place(random));
  // The longest baselines reach a fifth of the sampling rate: about three pixels per beam.
  const double scale = 0.2 * static_cast<double>(beamSize);
  std::vector<Sample> samples;
  for (std::size_t a = 0; a < antennas.size(); ++a) {
    for (std::size_t b = a + 1; b < antennas.size(); ++b) {
      const double x = antennas[a].first - antennas[b].first;
      const double y = antennas[a].second - antennas[b].second;
      for (int step = 0; step < 300; ++step) {
        const double hour = std::numbers::pi * (10.0 / 24.0) * (2.0 * step / 299.0 - 1.0);
        const double u = x * std::cos(hour) - y * std::sin(hour);
        const double v = 0.6 * (x * std::sin(hour) + y * std::cos(hour));
        for (int frequency = 0; frequency < kFrequencies; ++frequency) {
          const double f = offsetOf(frequency);
          const auto cellU = std::llround(std::clamp((1.0 + f) * u, -2.4, 2.4) * scale);
          const auto cellV = std::llround(std::clamp((1.0 + f) * v, -2.4, 2.4) * scale);
          samples.push_back({cellU, cellV, f});
        }
      }
    }
  }
  return samples;
}

/// Map of the sum over samples of f^order value cos-transformed, zero offset at (rows / 2, columns / 2).
AMatrix<float> transform(const std::vector<Sample>& samples, const std::vector<std::complex<double>>& values,
                         std::int32_t order, std::uint32_t size) {
  const auto n = static_cast<std::int64_t>(size);
  const std::int64_t half = n / 2 + 1;
  std::vector<std::complex<double>> grid(static_cast<std::size_t>(n * half));
  std::vector<double> image(static_cast<std::size_t>(n * n));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    std::int64_t u = samples[i].u;
    std::int64_t v = samples[i].v;
    std::complex<double> value = values[i] * std::pow(samples[i].f, order);
    if ((u + v) % 2 != 0) value = -value;  // puts the centre into the middle
    if (u < 0) {
      u = -u;
      v = -v;
      value = std::conj(value);
    }
    if (u < half) grid[static_cast<std::size_t>(((v % n + n) % n) * half + u)] += value;
  }
  const fftw_plan plan =
      fftw_plan_dft_c2r_2d(static_cast<int>(n), static_cast<int>(n),
                           reinterpret_cast<fftw_complex*>(grid.data()), image.data(), FFTW_ESTIMATE);
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  AMatrix<float> map(size, size);
  const double scale = 0.5 / static_cast<double>(samples.size());
  for (std::size_t i = 0; i < image.size(); ++i) map.data()[i] = static_cast<float>(image[i] * scale);
  return map;
}

struct Component {
  std::uint32_t row;
  std::uint32_t column;
  double flux;
  double index;
};

std::vector<Component> skyOf(std::uint32_t size) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> spread(0.05, 0.95);
  std::vector<Component> sky;
  for (int i = 0; i < 40; ++i) {
    const double along = static_cast<double>(i) * size / 400.0;
    sky.push_back({static_cast<std::uint32_t>(size / 2 + 0.7 * along),
                   static_cast<std::uint32_t>(size / 2 + along + 2.0 * std::sin(0.4 * i)),
                   1.0 / (1.0 + 0.3 * i), -0.1 - 0.02 * i});
  }
  for (int i = 0; i < 60; ++i)
    sky.push_back({static_cast<std::uint32_t>(spread(random) * size),
                   static_cast<std::uint32_t>(spread(random) * size), 0.02 * spread(random), -0.7});
  return sky;
}

void addSky(const std::vector<Component>& sky, const std::vector<AMatrix<float>>& beams, std::int32_t terms,
            std::int32_t k, AMatrix<float>& map) {
  const std::uint32_t size = map.rows();
  for (const Component& component : sky) {
    double value = component.flux;
    for (std::int32_t j = 0; j < terms; ++j, value *= component.index / j) {
      const AMatrix<float>& beam = beams[static_cast<std::size_t>(k + j)];
      for (std::uint32_t row = 0; row < size; ++row) {
        float* const to = map.data() + static_cast<std::size_t>(row) * size;
        const float* const from = beam.data() +
                                  static_cast<std::size_t>(size + row - component.row) * beam.columns() +
                                  size - component.column;
        for (std::uint32_t column = 0; column < size; ++column)
          to[column] = static_cast<float>(to[column] + value * static_cast<double>(from[column]));
      }
    }
  }
}

double sideLobe(const AMatrix<float>& beam) {
  const auto centre = static_cast<std::int64_t>(beam.rows() / 2);
  float largest = 0.0F;
  for (std::int64_t row = 0; row < beam.rows(); ++row)
    for (std::int64_t column = 0; column < beam.columns(); ++column)
      if (std::hypot(row - centre, column - centre) > 8.0)
        largest = std::max(
            largest, std::fabs(beam(static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column))));
  return static_cast<double>(largest / beam(beam.rows() / 2, beam.columns() / 2));
}

}  // namespace

CleanSky::CleanSky(std::int32_t terms, std::uint32_t size) {
  const std::uint32_t beamSize = 2 * size;
  const std::vector<Sample> samples = tracks(beamSize);
  const std::vector<std::complex<double>> ones(samples.size(), 1.0);
  for (std::int32_t m = 0; m < 2 * terms - 1; ++m) beams.push_back(transform(samples, ones, m, beamSize));
  largestSideLobe = sideLobe(beams[0]);

  std::mt19937 random(6);
  // 0.3 mJy in the map of a sky of about 10 Jy.
  std::normal_distribution<double> normal(0.0, 3e-4 * std::sqrt(static_cast<double>(samples.size())));
  std::vector<std::complex<double>> noise;
  for (std::size_t i = 0; i < samples.size(); ++i) noise.emplace_back(normal(random), normal(random));
  const std::vector<Component> sky = skyOf(size);
  for (std::int32_t k = 0; k < terms; ++k) {
    const AMatrix<float> wide = transform(samples, noise, k, beamSize);
    AMatrix<float>& map = maps.emplace_back(size, size);
    for (std::uint32_t row = 0; row < size; ++row)
      for (std::uint32_t column = 0; column < size; ++column)
        map(row, column) = wide(size / 2 + row, size / 2 + column);
    addSky(sky, beams, terms, k, map);
  }
}

CleanSky::CleanSky(const std::string& folder, const std::string& prefix) {
  LoadedMap file;
  for (std::int32_t k = 0; readMap(dirtyMapName(folder, prefix, k), file).ok(); ++k)
    maps.push_back(std::move(*file.matrix));
  for (std::int32_t m = 0; readMap(beamName(folder, prefix, m), file).ok(); ++m)
    beams.push_back(std::move(*file.matrix));
  if (beams.size() + 1 != 2 * maps.size()) maps.clear();
  if (!maps.empty()) largestSideLobe = sideLobe(beams[0]);
}

}  // namespace lumo::bench
