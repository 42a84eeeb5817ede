// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/HeadlessCleanWatcher.h"

#include <chrono>

#include "core/TextForm.h"

namespace lumo {

namespace {

constexpr std::chrono::milliseconds kPeriod(100);
/// Digits of the flux that move at a rate a person can follow.
constexpr int kFluxDigits = 6;

}  // namespace

void HeadlessCleanWatcher::watch(CleanWorker& worker, const CleanScene& scene) {
  AProgress progress(bar_, scene.iterations());
  shown_ = 0;
  if (cancelled()) worker.stop();
  if (!worker.start(scene.priority()).ok()) return;
  while (!worker.waitFor(kPeriod)) {
    if (cancelled()) worker.stop();
    show(worker, progress);
  }
  show(worker, progress);
}

bool HeadlessCleanWatcher::cancelled() const {
  return cancel_ != nullptr && cancel_->load(std::memory_order_relaxed) != 0;
}

void HeadlessCleanWatcher::show(const CleanWorker& worker, AProgress& progress) {
  const std::int32_t iteration = worker.iteration();
  progress.SetPos(iteration);
  if (text_ == nullptr || iteration == shown_) return;
  shown_ = iteration;
  text_->setText("Iteration: " + toStr(iteration) +
                 "  Total FLUX: " + nValToStr(worker.totalFlux(), kFluxDigits));
}

}  // namespace lumo
