// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <vector>

#include "clean/CleanWatcher.h"
#include "clean/PlainCleanEngine.h"
#include "clean/ui/CleanDialogWatcher.h"

namespace lumo {
namespace {

constexpr std::int32_t kTerms = 2;

/// A main window with a title to set, as the program's has.
class BenchWindow : public MainWindowLink {
 public:
  BenchWindow() { window_.show(); }
  void setTitle(const std::string& title) override { window_.setWindowTitle(QString::fromStdString(title)); }
  void minimise() override {}
  void restore() override {}
  void log(const std::string&) override {}

 private:
  QWidget window_;
};

/// The worker without any window.
class PlainWatcher : public CleanWatcher {
 public:
  void watch(CleanWorker& worker, const CleanScene& scene) override {
    if (worker.start(scene.priority()).ok()) worker.wait();
  }
};

struct Input {
  explicit Input(std::uint32_t size) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0F, 1.0F);
    for (std::int32_t k = 0; k < kTerms; ++k) residuals.InsertAt(k, new AMatrix<float>(size, size));
    for (std::int32_t k = 0; k < kTerms; ++k)
      for (std::size_t i = 0; i < residuals[k]->size(); ++i) residuals[k]->data()[i] = noise(random);
    for (std::int32_t m = 0; m < 2 * kTerms - 1; ++m) {
      beams.InsertAt(m, new AMatrix<float>(2 * size, 2 * size));
      (*beams[m])(size, size) = static_cast<float>(std::pow(0.3, m) * (m == 1 ? 0.0 : 1.0));
    }
  }

  APtrArray<AMatrix<float>*> residuals;
  APtrArray<AMatrix<float>*> beams;
};

double secondsOf(CleanWatcher& watcher, Input& input, std::int32_t iterations) {
  CleanParameters parameters;
  parameters.iterations = iterations;
  PlainCleanEngine engine(input.residuals, input.beams, parameters);
  CleanWorker worker(engine);
  const AMatrix<float> beam(1, 1);
  const auto start = std::chrono::steady_clock::now();
  watcher.watch(worker, CleanScene(engine, beam, {}, ThreadPriority::kNormal));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  return engine.iterationsDone() == iterations ? time.count() : std::nan("");
}

/// The same CLEAN by turns without and with its dialog; "slowdown" is the median of the ratios of their
/// times. The time that google benchmark shows is that of the runs with the dialog.
void BM_CleanDialog_Slowdown(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto iterations = static_cast<std::int32_t>(state.range(1));
  Input input(size);
  BenchWindow window;
  PlainWatcher plain;
  CleanDialogWatcher dialog(window);
  std::vector<double> ratios;
  for (auto _ : state) {
    const double without = secondsOf(plain, input, iterations);
    const double with = secondsOf(dialog, input, iterations);
    state.SetIterationTime(with);
    ratios.push_back(with / without);
  }
  if (std::any_of(ratios.begin(), ratios.end(), [](double ratio) { return std::isnan(ratio); })) {
    state.SkipWithError("a CLEAN did not do its iterations");
    return;
  }
  std::nth_element(ratios.begin(), ratios.begin() + ratios.size() / 2, ratios.end());
  state.counters["slowdown"] = ratios[ratios.size() / 2];
  state.counters["iterations/s"] = benchmark::Counter(
      static_cast<double>(iterations) * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
// Long runs of short iterations, where a text per iteration would cost most, and of long ones.
BENCHMARK(BM_CleanDialog_Slowdown)
    ->Args({64, 100000})
    ->Args({256, 8000})
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
