// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CLumoApp.h"

int main(int argc, char** argv) {
  lumo::CLumoApp application(argc, argv);
  return application.InitInstance();
}
