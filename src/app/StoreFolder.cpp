// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StoreFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include "core/Log.h"
#include "core/Paths.h"

namespace lumo {

namespace {

/// Tried, not asked: permissions do not tell of a file system that is mounted for reading only.
bool canWrite(const std::string& folder) {
  QTemporaryFile probe(QFile::decodeName(folder.c_str()) + "lumo-XXXXXX");
  return !folder.empty() && probe.open();
}

}  // namespace

std::string storeFolder(const std::string& executableFolder, const std::string& settingsFolder, Log& log) {
  if (canWrite(executableFolder)) return executableFolder;
  const std::string instead = withSeparator(settingsFolder);
  QDir().mkpath(QFile::decodeName(instead.c_str()));
  log.add("Nothing can be written to the program's folder " + executableFolder +
          "; the parameters are kept in " + instead);
  if (!canWrite(instead)) log.add("Nothing can be written to " + instead + "; parameters will not be kept");
  return instead;
}

}  // namespace lumo
