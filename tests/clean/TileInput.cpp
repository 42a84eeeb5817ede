// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/TileInput.h"

namespace lumo::test {

TileInput::TileInput(const CleanProblem& problem, bool nonNegative, unsigned seed)
    : input_(problem), intensity_(problem.maps[0].rows(), problem.maps[0].columns()) {
  matrix_.prepare(input_.beams, problem.terms());
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> value(-0.1F, 1.0F);
  for (std::size_t i = 0; i < intensity_.size(); ++i) intensity_.data()[i] = value(random);
  maps_.terms = problem.terms();
  for (std::int32_t k = 0; k < maps_.terms; ++k) maps_.maps[k] = input_.residuals[k]->data();
  for (std::int32_t m = 0; m < input_.beams.count(); ++m) maps_.beams[m] = input_.beams[m]->data();
  maps_.intensity = intensity_.data();
  maps_.mapColumns = intensity_.columns();
  maps_.beamRows = input_.beams[0]->rows();
  maps_.beamColumns = input_.beams[0]->columns();
  maps_.inverse = matrix_.inverse().data();
  maps_.q = matrix_.q();
  maps_.nonNegative = nonNegative;
}

CleanTileArea TileInput::wholeArea() const {
  return {0, intensity_.rows(), 0, intensity_.columns()};
}

double TileInput::solve(std::size_t offset, double& first) const {
  double sum = 0.0;
  for (std::int32_t j = maps_.terms - 1; j >= 0; --j) {
    first = 0.0;
    for (std::int32_t k = 0; k < maps_.terms; ++k)
      first += static_cast<double>(maps_.maps[k][offset]) * maps_.inverse[j * maps_.terms + k];
    sum += static_cast<double>(maps_.maps[j][offset]) * first;
  }
  return sum;
}

double TileInput::norm(std::size_t offset) const {
  double first = 0.0;
  return solve(offset, first);
}

double TileInput::score(std::size_t offset, double gain) const {
  double first = 0.0;
  const double h = 2.0 - gain;
  double score = solve(offset, first) * (h * gain);
  const double current = static_cast<double>(maps_.intensity[offset]);
  const double tentative = first * gain + current;
  if (maps_.nonNegative && tentative < 0.0) score -= (h * first + current) * (tentative * maps_.q);
  return score;
}

std::size_t TileInput::best(double gain) const {
  std::size_t place = intensity_.size();
  double best = 0.0;
  for (std::size_t i = 0; i < intensity_.size(); ++i) {
    const double value = score(i, gain);
    if (best > value) continue;
    best = value;
    place = i;
  }
  return place;
}

void TileInput::subtract(const CleanUpdate& step) {
  for (std::uint32_t row = 0; row < intensity_.rows(); ++row)
    for (std::uint32_t column = 0; column < intensity_.columns(); ++column) {
      const std::size_t y = (maps_.beamRows / 2 + maps_.beamRows + row - step.row) % maps_.beamRows;
      const std::size_t x =
          (maps_.beamColumns / 2 + maps_.beamColumns + column - step.column) % maps_.beamColumns;
      for (std::int32_t k = 0; k < maps_.terms; ++k) {
        float& residual = maps_.maps[k][row * maps_.mapColumns + column];
        for (std::int32_t j = 0; j < maps_.terms; ++j)
          residual = static_cast<float>(static_cast<double>(residual) -
                                        static_cast<double>(maps_.beams[k + j][y * maps_.beamColumns + x]) *
                                            step.increments[j]);
      }
    }
}

std::vector<CleanUpdate> randomSteps(std::size_t count, std::int32_t terms, Shape map, double scale,
                                     unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> value(-scale, scale);
  std::vector<CleanUpdate> steps(count);
  for (CleanUpdate& step : steps) {
    step.row = random() % map.rows;
    step.column = random() % map.columns;
    for (std::int32_t j = 0; j < terms; ++j) step.increments[j] = value(random);
  }
  return steps;
}

}  // namespace lumo::test
