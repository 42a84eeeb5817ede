// SPDX-License-Identifier: GPL-3.0-or-later
#include "StartBench.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "PaintWatch.h"
#include "app/CLumoApp.h"
#include "app/CLumoDlg.h"
#include "core/Paths.h"

namespace lumo {
namespace {

using Clock = std::chrono::steady_clock;

std::int64_t now() {
  return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

/// Calls itself until the main dialog stands there; the event loop has then nothing more urgent to do.
void reportWhenReady(const PaintWatch& paints) {
  QTimer::singleShot(0, [&paints] {
    const auto windows = QApplication::topLevelWidgets();
    const bool isReady = std::any_of(windows.begin(), windows.end(), [&paints](const QWidget* window) {
      return qobject_cast<const CLumoDlg*>(window) != nullptr && window->isVisible() &&
             paints.hasPainted(*window) && paints.hasPaintedIn(*window);
    });
    if (!isReady) return reportWhenReady(paints);
    std::printf("%lld\n", static_cast<long long>(now()));
    std::fflush(stdout);
    ::_exit(0);
  });
}

/// The desktop program from its start as a process to its main dialog, painted and waiting for the user.
void BM_Start_MainDialog(benchmark::State& state) {
  double longest = 0.0;
  const std::string command = "exec '" + getExePath() + "lumo_gui_bench' " + kAsProgram;
  for (auto _ : state) {
    const std::int64_t start = now();
    std::FILE* const program = ::popen(command.c_str(), "r");
    long long ready = 0;
    const bool isRead = program != nullptr && std::fscanf(program, "%lld", &ready) == 1;
    if (program == nullptr || ::pclose(program) != 0 || !isRead)
      return state.SkipWithError("the program did not start");
    const double seconds = 1e-9 * static_cast<double>(ready - start);
    state.SetIterationTime(seconds);
    longest = std::max(longest, seconds);
  }
  state.counters["longest_ms"] = 1e3 * longest;
}
BENCHMARK(BM_Start_MainDialog)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

}  // namespace

void startAsProgram(int argc, char** argv) {
  CLumoApp application(argc, argv);
  const PaintWatch paints;
  reportWhenReady(paints);
  application.InitInstance();
  std::exit(1);
}

}  // namespace lumo
