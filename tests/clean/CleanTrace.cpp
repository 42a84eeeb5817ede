// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanTrace.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>

namespace lumo::test {

namespace {

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Its beams are sums over many waves, and many tests want the same.
const CleanProblem& quietSky(std::int32_t terms, Shape map) {
  static std::map<std::vector<std::uint32_t>, CleanProblem> made;
  const std::vector<std::uint32_t> key{static_cast<std::uint32_t>(terms), map.rows, map.columns};
  if (const auto found = made.find(key); found != made.end()) return found->second;
  std::vector<Source> sources;
  for (std::uint32_t i = 0; i < 12; ++i) {
    Source source{(7 * i * i + 3) % (map.rows / 3), (5 * i + 2) % (map.columns / 2), {}};
    for (std::int32_t j = 0; j < terms; ++j)
      source.values.push_back((j % 2 == 0 ? 1.0 : -0.6) / (1.0 + i + j));
    sources.push_back(source);
  }
  sources.push_back(
      {map.rows - 2, map.columns - 1, std::vector<double>(static_cast<std::size_t>(terms), 0.4)});
  return made.emplace(key, sourceProblem(terms, map, sources)).first->second;
}

}  // namespace

CleanParameters parametersOf(std::int32_t iterations, double gain, bool nonNegative, bool variableGain) {
  CleanParameters parameters;
  parameters.iterations = iterations;
  parameters.gain = gain;
  parameters.nonNegative = nonNegative;
  parameters.variableGain = variableGain;
  return parameters;
}

void expectSameRun(const Trace& plain, const Trace& fast, const std::string& what) {
  EXPECT_EQ(fast.result, plain.result) << what;
  ASSERT_EQ(fast.seen.size(), plain.seen.size()) << what;
  for (std::size_t n = 0; n < plain.seen.size(); ++n) {
    const CleanProgress& a = plain.seen[n];
    const CleanProgress& b = fast.seen[n];
    ASSERT_TRUE(a.found == b.found && a.row == b.row && a.column == b.column && sameBits(a.gain, b.gain) &&
                sameBits(a.score, b.score) && sameBits(a.residual, b.residual) &&
                sameBits(a.totalFlux, b.totalFlux))
        << what << ": iteration " << n + 1 << " took (" << b.row << ", " << b.column << ") with score "
        << b.score << ", the plain engine (" << a.row << ", " << a.column << ") with " << a.score;
  }
  EXPECT_TRUE(sameBits(fast.totalFlux, plain.totalFlux)) << what;
  for (std::size_t k = 0; k < plain.residuals.size(); ++k) {
    EXPECT_TRUE(lumo::test::sameBits(fast.residuals[k], plain.residuals[k])) << what << ": residual " << k;
    EXPECT_TRUE(lumo::test::sameBits(fast.components[k], plain.components[k])) << what << ": component " << k;
  }
}

Trace plainRun(const CleanProblem& problem, const CleanParameters& parameters, const Trace::Hook& hook) {
  return Trace::of<PlainCleanEngine>(problem, parameters, hook);
}

Trace tiledRun(const CleanProblem& problem, const CleanParameters& parameters, const CleanTiling& tiling,
               const Trace::Hook& hook) {
  return Trace::of<TiledCleanEngine>(problem, parameters, hook, tiling);
}

CleanTiling tilingOf(std::uint32_t rows, std::uint32_t columns, int threads) {
  CleanTiling tiling;
  tiling.threads = threads;
  tiling.paced = false;
  tiling.rows = rows;
  tiling.columns = columns;
  return tiling;
}

CleanProblem noisySky(std::int32_t terms, Shape map, double noise) {
  CleanProblem problem = quietSky(terms, map);
  std::mt19937 random(77);
  std::normal_distribution<float> normal(0.0F, static_cast<float>(noise));
  for (AMatrix<float>& matrix : problem.maps)
    for (std::size_t i = 0; i < matrix.size(); ++i) matrix.data()[i] += normal(random);
  return problem;
}

}  // namespace lumo::test
