// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ui/CleanDialogWatcher.h"

#include "clean/ui/LumoCleanDlg.h"

namespace lumo {

void CleanDialogWatcher::watch(CleanWorker& worker, const CleanScene& scene) {
  LumoCleanDlg dialog(worker, scene, mainWindow_);
  dialog.exec();
  mainWindow_.setTitle(kIdleTitle);
}

}  // namespace lumo
