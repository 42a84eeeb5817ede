// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanProblem.h"

#include <cmath>
#include <cstring>
#include <random>

#include "core/Units.h"

namespace lumo::test {

namespace {

constexpr double kOffsets[] = {-0.6, -0.35, -0.1, 0.15, 0.4, 0.65};

double offsetMoment(std::size_t order) {
  double sum = 0.0;
  for (const double f : kOffsets) sum += std::pow(f, static_cast<double>(order));
  return sum / std::size(kOffsets);
}

void copyInto(const std::vector<AMatrix<float>>& from, APtrArray<AMatrix<float>*>& to) {
  for (const AMatrix<float>& map : from) to.InsertAt(to.count(), new AMatrix<float>(map));
}

struct Wave {
  double u;  // cycles per pixel at the reference frequency
  double v;
  double f;
};

std::vector<Wave> coverage() {
  std::mt19937 random(20240517);
  std::uniform_real_distribution<double> spread(-0.28, 0.28);
  std::vector<Wave> waves;
  for (int i = 0; i < 80; ++i) {
    const double u = spread(random);
    const double v = spread(random);
    for (const double f : kOffsets) waves.push_back({u, v, f});
  }
  return waves;
}

std::vector<AMatrix<float>> directBeams(const std::vector<Wave>& waves, std::size_t count, Shape shape) {
  std::vector<AMatrix<float>> beams(count, AMatrix<float>(shape.rows, shape.columns));
  const std::int64_t middleRow = shape.rows / 2;
  const std::int64_t middleColumn = shape.columns / 2;
  for (std::uint32_t row = 0; row < shape.rows; ++row) {
    for (std::uint32_t column = 0; column < shape.columns; ++column) {
      const auto y = static_cast<double>(row - middleRow);
      const auto x = static_cast<double>(column - middleColumn);
      std::vector<double> sums(count, 0.0);
      for (const Wave& wave : waves) {
        double term = std::cos(kTwoPi * (1.0 + wave.f) * (wave.u * x + wave.v * y));
        for (std::size_t order = 0; order < count; ++order, term *= wave.f) sums[order] += term;
      }
      for (std::size_t order = 0; order < count; ++order)
        beams[order](row, column) = static_cast<float>(sums[order] / static_cast<double>(waves.size()));
    }
  }
  return beams;
}

}  // namespace

EngineInput::EngineInput(const CleanProblem& problem) {
  copyInto(problem.maps, residuals);
  copyInto(problem.beams, beams);
}

CleanProblem randomProblem(std::int32_t terms, Shape map, Shape beam, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> value(-1.0F, 1.0F);
  CleanProblem problem;
  for (std::int32_t k = 0; k < terms; ++k) {
    problem.maps.emplace_back(map.rows, map.columns);
    for (std::size_t i = 0; i < problem.maps.back().size(); ++i)
      problem.maps.back().data()[i] = value(random);
  }
  for (std::int32_t m = 0; m < 2 * terms - 1; ++m) {
    AMatrix<float>& matrix = problem.beams.emplace_back(beam.rows, beam.columns);
    for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] = 0.3F * value(random);
    matrix(beam.rows / 2, beam.columns / 2) = static_cast<float>(offsetMoment(static_cast<std::size_t>(m)));
  }
  return problem;
}

CleanProblem sourceProblem(std::int32_t terms, Shape map, const std::vector<Source>& sources) {
  const std::vector<Wave> waves = coverage();
  CleanProblem problem;
  problem.beams =
      directBeams(waves, static_cast<std::size_t>(2 * terms - 1), {2 * map.rows, 2 * map.columns});
  for (std::int32_t k = 0; k < terms; ++k) {
    AMatrix<float>& dirty = problem.maps.emplace_back(map.rows, map.columns);
    for (std::uint32_t row = 0; row < map.rows; ++row) {
      for (std::uint32_t column = 0; column < map.columns; ++column) {
        double sum = 0.0;
        for (const Source& source : sources)
          for (std::int32_t j = 0; j < terms; ++j)
            sum += source.values[static_cast<std::size_t>(j)] *
                   problem.beams[static_cast<std::size_t>(k) + static_cast<std::size_t>(j)](
                       map.rows + row - source.row, map.columns + column - source.column);
        dirty(row, column) = static_cast<float>(sum);
      }
    }
  }
  return problem;
}

AMatrix<float> flatMap(Shape shape, float value) {
  AMatrix<float> map(shape.rows, shape.columns);
  for (std::size_t i = 0; i < map.size(); ++i) map.data()[i] = value;
  return map;
}

bool sameBits(const AMatrix<float>& a, const AMatrix<float>& b) {
  return a.rows() == b.rows() && a.columns() == b.columns() &&
         std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

}  // namespace lumo::test
