// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "PaintWatch.h"
#include "clean/CleanEngineChoice.h"
#include "clean/CleanWatcher.h"
#include "clean/Restoration.h"
#include "clean/ui/CleanDialogWatcher.h"
#include "clean/ui/CleanGraphs.h"
#include "clean/ui/LumoClnShowDlg.h"
#include "core/ThreadCount.h"

namespace lumo {
namespace {

constexpr std::int32_t kTerms = 2;
using Clock = std::chrono::steady_clock;

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

std::unique_ptr<ABCleanEngine> makeEngine(Input& input, std::int32_t iterations, CleanEngineKind kind,
                                          int threads) {
  CleanParameters parameters;
  parameters.iterations = iterations;
  return makeCleanEngine(kind, threads, input.residuals, input.beams, parameters);
}

double secondsOf(CleanWatcher& watcher, Input& input, std::int32_t iterations, CleanEngineKind kind,
                 int threads) {
  const auto engine = makeEngine(input, iterations, kind, threads);
  CleanWorker worker(*engine);
  const AMatrix<float> beam(1, 1);
  const auto start = Clock::now();
  watcher.watch(worker, CleanScene(*engine, beam, {}, ThreadPriority::kNormal));
  const std::chrono::duration<double> time = Clock::now() - start;
  return engine->iterationsDone() == iterations ? time.count() : std::nan("");
}

/// Presses a button of the CLEAN dialog as soon as it is there.
void pressSoon(const QString& name) {
  QTimer::singleShot(0, [name] {
    const QWidget* const dialog = QApplication::activeModalWidget();
    auto* const button = dialog != nullptr ? dialog->findChild<QAbstractButton*>(name) : nullptr;
    if (button == nullptr) return pressSoon(name);
    button->click();
  });
}

/// The same CLEAN by turns without and with its dialog, and with the graphs of the convergence open in it
/// (third argument); "slowdown" is the median of the ratios of their times. The time that google benchmark
/// shows is that of the runs with the dialog. The last argument is the engine's number of threads, 0 for the
/// plain one.
void BM_CleanDialog_Slowdown(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto iterations = static_cast<std::int32_t>(state.range(1));
  const bool showsGraphs = state.range(2) != 0;
  const int threads = static_cast<int>(state.range(3));
  const CleanEngineKind kind = threads > 0 ? CleanEngineKind::kFast : CleanEngineKind::kPlain;
  Input input(size);
  BenchWindow window;
  PlainWatcher plain;
  CleanDialogWatcher dialog(window);
  std::vector<double> ratios;
  for (auto _ : state) {
    const double without = secondsOf(plain, input, iterations, kind, threads);
    if (showsGraphs) pressSoon("convergence");
    const double with = secondsOf(dialog, input, iterations, kind, threads);
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
    ->ArgNames({"size", "iterations", "graphs", "threads"})
    ->Args({64, 100000, 0, 0})
    ->Args({64, 100000, 1, 0})
    ->Args({256, 8000, 0, 0})
    ->Args({256, 8000, 1, 0})
    ->Args({512, 6000, 0, 2})
    ->Args({512, 6000, 1, 2})
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);

/// Notes when each iteration ended.
class EndWatch : public CleanObserver {
 public:
  void iterationDone(const CleanProgress& /*progress*/) override {
    end_.store(Clock::now().time_since_epoch().count(), std::memory_order_relaxed);
  }
  [[nodiscard]] Clock::time_point end() const {
    return Clock::time_point(Clock::duration(end_.load(std::memory_order_relaxed)));
  }

 private:
  std::atomic<Clock::rep> end_{0};
};

/// "Show result" in a CLEAN that has gone on for a while: from the end of the iteration in which it was
/// pressed to the CLEAN view on the screen with its maps and graphs. The desktop's engine on all threads.
void BM_CleanDialog_ShowResult(benchmark::State& state) {
  const auto size = static_cast<std::uint32_t>(state.range(0));
  const auto iterations = static_cast<std::int32_t>(state.range(1));
  BenchWindow window;
  CleanDialogWatcher dialog(window);
  AMapHeader header;
  // A beam of eight pixels, a little more than is usual: restoring costs components times its area.
  header.beamMajor = header.beamMinor = 8.0;
  header.unit = "Jy/Beam";
  const TMinMax range{0.0, size - 1.0, 0.0, size - 1.0, -1.0, 1.0};
  const auto beam = makeRestoringBeam(header, range, size, size);
  double longest = 0.0, settling = 0.0, components = 0.0;
  for (auto _ : state) {
    Input input(size);
    const auto engine = makeEngine(input, 1'000'000'000, CleanEngineKind::kFast, threadCount(0));
    EndWatch ends;
    CleanWorker worker(*engine, &ends);
    const CleanScene scene(*engine, *beam, range, ThreadPriority::kNormal, header);
    double seconds = 0.0, settled = 0.0;
    const auto sinceEnd = [&ends] {
      return std::chrono::duration<double>(Clock::now() - ends.end()).count();
    };
    std::function<void()> look;
    bool isAsked = false;
    PaintWatch paints;
    look = [&] {
      QWidget* const top = QApplication::activeModalWidget();
      if (auto* const view = qobject_cast<LumoClnShowDlg*>(top)) {
        if (paints.hasPaintedIn(view->restoredWindow()) && paints.hasPaintedIn(view->residualWindow()) &&
            paints.hasPaintedIn(view->graphs())) {
          seconds = sinceEnd();
          return view->reject();
        }
      } else if (top != nullptr && !isAsked && worker.iteration() >= iterations) {
        top->findChild<QAbstractButton*>("showResult")->click();
        isAsked = true;
      } else if (settled == 0.0 && worker.paused()) {
        settled = sinceEnd();
      }
      QTimer::singleShot(1, look);
    };
    QTimer::singleShot(0, look);
    dialog.watch(worker, scene);
    state.SetIterationTime(seconds);
    longest = std::max(longest, seconds);
    settling = std::max(settling, settled);
    const AMatrix<float>& map = engine->components()[0];
    components = static_cast<double>(
        std::count_if(map.data(), map.data() + map.size(), [](float value) { return value != 0.0F; }));
  }
  state.counters["longest_ms"] = 1e3 * longest;
  state.counters["settled_ms"] = 1e3 * settling;
  state.counters["components"] = components;
}
BENCHMARK(BM_CleanDialog_ShowResult)
    ->ArgNames({"size", "iterations"})
    ->Args({512, 5000})
    ->Args({1024, 5000})
    ->Args({2048, 2000})
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
