// SPDX-License-Identifier: GPL-3.0-or-later
#include <benchmark/benchmark.h>

#include <QApplication>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "imaging/ui/AUVPGraph.h"
#include "imaging/ui/AUVPLaneWnd.h"
#include "imaging/ui/LumoUVPlaneDlg.h"
#include "io/AUVXFile.h"
#include "io/UvxWriter.h"

namespace lumo {
namespace {

constexpr double kFrequency = 1e9;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A file of tracks with `points` points, removed at the end.
class TrackFile {
 public:
  TrackFile(std::uint64_t points, std::uint32_t channels)
      : path_((std::filesystem::temp_directory_path() / "lumo-uvplane-bench.uvx").string()) {
    UvxContent content;
    content.shape = {1, channels, 1};
    content.sources = {{1, "tracks", UvxFrame::kIcrs, 0.0, 45.0, 2000.0}};
    content.products = {1};
    content.selections = {{1, {{kFrequency, 1e6}}}};
    const std::vector<AUVXComplex> values(channels, AUVXComplex(1, 0, 1));
    UvxWriter writer;
    good_ = writer.begin(path_, content).ok();
    UvxRecord record;
    record.freqSel = 1;
    record.source = 1;
    for (std::uint64_t i = 0; i < points / channels && good_; ++i) {
      // Forty ellipses of growing size.
      const double angle = 1e-4 * static_cast<double>(i / 40);
      const double size = 1e6 * static_cast<double>(1 + i % 40) / kFrequency;
      record.u = static_cast<float>(size * std::cos(angle));
      record.v = static_cast<float>(0.7 * size * std::sin(angle));
      good_ = writer.append(record, values).ok();
    }
    good_ = good_ && writer.finish().ok();
  }
  TrackFile(const TrackFile&) = delete;
  TrackFile& operator=(const TrackFile&) = delete;
  ~TrackFile() { std::remove(path_.c_str()); }

  void giveTo(LumoUVPlaneDlg& dialog) const {
    AUVXFile file;
    if (file.Open(path_, AFile::kRead) == 0) return;
    AObjArray<std::string> names;
    AObjArray<AUVXFqTbl> tables;
    AObjArray<ABitArray> selections;
    AArray<std::int32_t> sources;
    ABitArray all(1);
    all = 1;
    names.InsertAt(0, path_);
    tables.InsertAt(0, AUVXFqTbl(file, 1));
    selections.InsertAt(0, all);
    sources.InsertAt(0, 1);
    dialog.SetData(names, tables, selections, sources, kFrequency, kFrequency, 4e7, 4e7);
  }
  [[nodiscard]] bool good() const { return good_; }

 private:
  std::string path_;
  bool good_ = false;
};

const AUVPGraph& graphOf(const LumoUVPlaneDlg& dialog) {
  return dynamic_cast<const AUVPGraph&>(*dialog.plot().axis()->graphs().front());
}

/// The dialog from its opening: "first" is when the first points stand on the screen, "longest" the longest
/// time that the event loop did not turn, "zoom" from a turn of the wheel to the complete sharp picture. The
/// time shown is that of the complete picture.
void BM_UvPlane_Open(benchmark::State& state) {
  const auto points = static_cast<std::uint64_t>(state.range(0));
  const TrackFile file(points, static_cast<std::uint32_t>(state.range(1)));
  double first = 0.0, longest = 0.0, zoom = 0.0;
  for (auto _ : state) {
    LumoUVPlaneDlg dialog;
    file.giveTo(dialog);
    const auto start = Clock::now();
    dialog.resize(800, 700);
    dialog.show();
    double shown = 0.0, slowest = 0.0;
    const auto turn = [&slowest] {
      const auto before = Clock::now();
      QApplication::processEvents(QEventLoop::AllEvents, 1);
      slowest = std::max(slowest, secondsSince(before));
    };
    const auto isDone = [&dialog] {
      return graphOf(dialog).progress().complete && graphOf(dialog).isShown();
    };
    while (!isDone()) {
      turn();
      if (shown == 0.0 && graphOf(dialog).progress().grid != nullptr) {
        dialog.grab();
        shown = secondsSince(start);
      }
    }
    dialog.grab();
    state.SetIterationTime(secondsSince(start));
    if (graphOf(dialog).progress().grid->crosses() != 2 * points || !file.good())
      return state.SkipWithError("not every point was drawn");
    first = std::max(first, shown);
    const auto zoomStart = Clock::now();
    dialog.plot().zoom(3.0);
    do turn();
    while (!isDone());
    dialog.grab();
    zoom = std::max(zoom, secondsSince(zoomStart));
    longest = std::max(longest, slowest);
  }
  state.counters["first_ms"] = 1e3 * first;
  state.counters["zoom_ms"] = 1e3 * zoom;
  state.counters["longest_ms"] = 1e3 * longest;
}
BENCHMARK(BM_UvPlane_Open)
    ->Args({10000000, 16})
    ->Args({10000000, 1})
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumo
