// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "clean/CleanWatcher.h"
#include "core/Progress.h"

namespace lumo {

/// Watches a CLEAN without a window: shows its progress about ten times a second and turns a cancel flag into
/// a stop, after which the products of the iterations done are still written.
class HeadlessCleanWatcher final : public CleanWatcher {
 public:
  /// Each of the three may be null; none is owned. The bar gets the percentage of the iterations, the text
  /// the iteration number and the total flux; it stays as it is when no iteration is done.
  HeadlessCleanWatcher(const CancelFlag* cancel, ProgressBar* bar, StatusText* text)
      : cancel_(cancel), bar_(bar), text_(text) {}

  void watch(CleanWorker& worker, const CleanScene& scene) override;

 private:
  [[nodiscard]] bool cancelled() const;
  void show(const CleanWorker& worker, AProgress& progress);

  const CancelFlag* cancel_;
  ProgressBar* bar_;
  StatusText* text_;
  std::int32_t shown_ = 0;
};

}  // namespace lumo
