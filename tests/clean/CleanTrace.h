// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "clean/CleanProblem.h"
#include "clean/PlainCleanEngine.h"
#include "clean/TiledCleanEngine.h"

namespace lumo::test {

/// Everything that a run shows: each iteration's report, the increments through the components, the maps.
class Trace : private CleanObserver {
 public:
  /// @param hook called after each iteration; a return of true stops the run.
  using Hook = std::function<bool(ABCleanEngine&, const CleanProgress&)>;

  template <typename Engine, typename... More>
  static Trace of(const CleanProblem& problem, const CleanParameters& parameters, const Hook& hook,
                  const More&... more) {
    Trace trace(problem);
    Engine engine(trace.input_->residuals, trace.input_->beams, parameters, more...);
    trace.run(engine, hook);
    if constexpr (std::is_same_v<Engine, TiledCleanEngine>) {
      trace.tiled = engine.tiled();
      trace.pixelsSearched = engine.pixelsSearched();
      trace.workingBytes = engine.workingBytes();
    }
    return trace;
  }

  std::vector<CleanProgress> seen;
  std::vector<AMatrix<float>> residuals;
  std::vector<AMatrix<float>> components;
  double totalFlux = 0.0;
  int result = -1;
  bool tiled = false;
  std::int64_t pixelsSearched = 0;
  std::size_t workingBytes = 0;

 private:
  explicit Trace(const CleanProblem& problem) : input_(std::make_unique<EngineInput>(problem)) {}

  void run(ABCleanEngine& engine, const Hook& hook) {
    engine_ = &engine;
    hook_ = hook;
    result = engine.Run(*stop_, this);
    for (const AMatrix<float>* map : input_->residuals) residuals.push_back(*map);
    for (const AMatrix<float>& map : engine.components()) components.push_back(map);
    totalFlux = engine.totalFlux();
  }
  void iterationDone(const CleanProgress& progress) override {
    seen.push_back(progress);
    if (hook_ && hook_(*engine_, progress)) *stop_ = 1;
  }

  std::unique_ptr<EngineInput> input_;
  ABCleanEngine* engine_ = nullptr;
  Hook hook_;
  std::unique_ptr<std::atomic<int>> stop_ = std::make_unique<std::atomic<int>>(0);
};

[[nodiscard]] CleanParameters parametersOf(std::int32_t iterations, double gain, bool nonNegative = false,
                                           bool variableGain = false);
[[nodiscard]] CleanTiling tilingOf(std::uint32_t rows, std::uint32_t columns, int threads = 1);

[[nodiscard]] Trace plainRun(const CleanProblem& problem, const CleanParameters& parameters,
                             const Trace::Hook& hook = nullptr);
[[nodiscard]] Trace tiledRun(const CleanProblem& problem, const CleanParameters& parameters,
                             const CleanTiling& tiling = {}, const Trace::Hook& hook = nullptr);

/// Every report of every iteration and all maps have the same bits.
void expectSameRun(const Trace& plain, const Trace& fast, const std::string& what);

/// Sources in a crowded corner and a lone one, with noise in every term.
[[nodiscard]] CleanProblem noisySky(std::int32_t terms, Shape map, double noise = 0.01);

}  // namespace lumo::test
