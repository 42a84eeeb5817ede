// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "clean/CleanWatcher.h"
#include "clean/ui/MainWindowLink.h"

namespace lumo {

/// Accompanies the CLEAN of a run with the modal dialog "MFS CLEANing"; the stage must run on the
/// user-interface thread.
class CleanDialogWatcher final : public CleanWatcher {
 public:
  /// What the main window's title goes back to afterwards.
  static constexpr const char* kIdleTitle = "MFS";

  explicit CleanDialogWatcher(MainWindowLink& mainWindow) : mainWindow_(mainWindow) {}

  void watch(CleanWorker& worker, const CleanScene& scene) override;

 private:
  MainWindowLink& mainWindow_;
};

}  // namespace lumo
