// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CLumoApp.h"

#include <QFile>
#include <QLocale>
#include <QStandardPaths>
#include <clocale>

#include "app/AppIcon.h"
#include "app/CLumoDlg.h"
#include "app/DesktopPrompts.h"
#include "app/StoreFolder.h"
#include "core/Paths.h"
#include "core/Version.h"

namespace lumo {

CLumoApp::CLumoApp(int& argc, char** argv) : QApplication(argc, argv) {
  std::setlocale(LC_NUMERIC, "C");
  QLocale::setDefault(QLocale::c());
  setApplicationName("lumo");
  setApplicationDisplayName("Lumo");
  setWindowIcon(appIcon());
}

int CLumoApp::InitInstance() {
  log_.add(programVersion());
  const QString settings = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
  const std::string folder = storeFolder(getExePath(), QFile::encodeName(settings).toStdString(), log_);
  DesktopPrompts prompts;
  CLumoDlg dialog(prompts, log_, folder);
  dialog.OnInitDialog();
  dialog.exec();
  return 0;
}

}  // namespace lumo
