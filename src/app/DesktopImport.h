// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <string>
#include <vector>

#include "convert/ImportKind.h"
#include "convert/ImportReport.h"
#include "core/Progress.h"
#include "core/Status.h"

class QWidget;

namespace lumo {

class Log;
class Prompts;

/// Imports what is chosen as visibility files though it is none yet: UVFITS files and Measurement Sets.
///
///     DesktopImport import(window, prompts, log);
///     if (import.offer(chosen, workFolder)) status = import.run(indicators);
///     list.AddFiles(import.files());
///
/// The UVX files go beside each input, where nothing can be written there to the work folder, else to a
/// folder that is asked for. No file that is there already is replaced: the new one gets a number.
class DesktopImport {
 public:
  /// All must outlive this; the prompts stand above `window`.
  DesktopImport(QWidget& window, Prompts& prompts, Log& log)
      : window_(window), prompts_(prompts), log_(log) {}

  /// Takes out of `chosen` what can be imported and asks once about all of it. True when run() is to follow;
  /// what is declined is left out. `workFolder` ends in its separator.
  [[nodiscard]] bool offer(const std::vector<std::string>& chosen, const std::string& workFolder);
  /// Imports one input after the other and writes what the importer notes into the log. A failure is told in
  /// a message box and does not keep the next input from being imported. Returns the last failure; kCancelled
  /// ends it at once.
  [[nodiscard]] Status run(const RunIndicators& indicators);

  /// What to add to the list: what was chosen and is nothing to import, then the UVX files written. Those of
  /// an input with several sources are not among them, since a run takes one: a message box names them.
  [[nodiscard]] const std::vector<std::string>& files() const { return files_; }

 private:
  struct Input {
    Importable what;
    std::string folder;  ///< of its UVX files; empty: to be asked for
  };

  void sortOut(const std::vector<std::string>& chosen, const std::string& workFolder);
  [[nodiscard]] QString question() const;
  [[nodiscard]] bool askForMissingFolder();
  [[nodiscard]] Status importOne(const Input& input, const RunIndicators& indicators);
  void take(const ImportReport& report);
  void note(const ImportReport& report);

  QWidget& window_;
  Prompts& prompts_;
  Log& log_;
  std::vector<Input> inputs_;
  std::vector<std::string> files_;
};

}  // namespace lumo
