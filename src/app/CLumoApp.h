// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

#include "core/Log.h"

namespace lumo {

/// The desktop program: shows the main dialog and ends with it.
class CLumoApp : public QApplication {
  Q_OBJECT

 public:
  /// Numbers are read and written with a decimal point whatever the user's language.
  CLumoApp(int& argc, char** argv);

  /// Finds the folder of the parameter set, shows the main dialog, and returns the exit status of the program
  /// when it closes.
  int InitInstance();

 private:
  Log log_;
};

}  // namespace lumo
