// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <QApplication>

#include "app/CLumoApp.h"

int main(int argc, char** argv) {
  // A test must not depend on a screen; one who wants to watch sets the platform.
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const lumo::CLumoApp application(argc, argv);
  // Tests press "Cancel" as soon as a run has begun, which counts as a double click on "Run" otherwise.
  QApplication::setDoubleClickInterval(0);
  return RUN_ALL_TESTS();
}
