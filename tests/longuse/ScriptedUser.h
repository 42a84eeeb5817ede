// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "gui/MainDialogFixture.h"

namespace lumo::test {

/// A user who does everything that the desktop program offers, over and over.
class ScriptedUser : public MainDialogTest {
 protected:
  /// Opens the program for the first time, with observations to work on.
  void begin();
  /// One visit to everything, after which the list of files is empty again. Now and then the program is
  /// closed and opened anew.
  void visit(int number);
  /// Lets everything that is put off be done, as it is while the user thinks.
  static void settle();

 private:
  void addFiles();
  void lookAtFiles();
  void chooseImaging(int pixels);
  void lookAtUvPlane();
  void cancelWhileImaging();
  void runAndLook();
  void runToTheEnd();
  void drawSpectra();
  void tabulateSpectra();
  void selectMaps();
  void readAbout();
  void deleteFiles();
  /// What no visit may leave behind: messages, failures.
  void expectNoComplaint();

  std::vector<std::string> files_;
};

}  // namespace lumo::test
