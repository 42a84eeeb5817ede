// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StoreFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include "core/Log.h"
#include "core/Paths.h"

namespace lumo {

bool canWriteTo(const std::string& folder) {
  // Tried, not asked: permissions do not tell of a file system that is mounted for reading only.
  QTemporaryFile probe(QFile::decodeName(folder.c_str()) + "lumo-XXXXXX");
  return !folder.empty() && probe.open();
}

std::string storeFolder(const std::string& executableFolder, const std::string& settingsFolder, Log& log) {
  if (canWriteTo(executableFolder)) return executableFolder;
  const std::string instead = withSeparator(settingsFolder);
  QDir().mkpath(QFile::decodeName(instead.c_str()));
  log.add("Nothing can be written to the program's folder " + executableFolder +
          "; the parameters are kept in " + instead);
  if (!canWriteTo(instead)) log.add("Nothing can be written to " + instead + "; parameters will not be kept");
  return instead;
}

}  // namespace lumo
