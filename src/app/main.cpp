// SPDX-License-Identifier: GPL-3.0-or-later
#include <csignal>

#include "app/CLumoApp.h"

int main(int argc, char** argv) {
  // Beyond a limit on file sizes a write then fails, and says so, like one to a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  lumo::CLumoApp application(argc, argv);
  return application.InitInstance();
}
