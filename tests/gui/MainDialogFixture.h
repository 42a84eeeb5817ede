// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/CLumoDlg.h"
#include "app/Prompts.h"
#include "core/Log.h"
#include "support/TempFolder.h"

class QLineEdit;
class QListView;
class QWidget;

namespace lumo::test {

/// Answers what the main dialog asks and remembers that it was asked.
class ScriptedPrompts : public Prompts {
 public:
  void showMessage(QWidget* parent, const QString& text) override;
  bool confirm(QWidget* parent, const QString& text) override;
  QStringList chooseFiles(QWidget* parent, const QString& folder) override;
  QStringList chooseMaps(QWidget* parent, const QString& folder) override;
  QString chooseFolder(QWidget* parent, const QString& folder) override;
  QString chooseImportFolder(QWidget* parent, const QString& folder) override;

  QStringList files;           ///< what is chosen
  QStringList maps;            ///< what is chosen
  QString folder;              ///< what is chosen
  QString importFolder;        ///< what is chosen
  bool agrees = true;          ///< to questions
  bool isOutOfMemory = false;  ///< throws instead of choosing files
  std::vector<std::string> messages;
  std::vector<std::string> questions;
};

/// Presses and releases the left button in the middle of a widget, or where `at` says.
void clickOn(QWidget& widget);
void clickRow(QListView& list, int row);
/// Replaces what stands in a field, key by key.
void typeInto(QLineEdit& edit, const QString& text);
/// A key with its press and release to the widget that has the focus of the window.
void typeKey(QWidget& window, int key, const QString& text = {});

/// When the environment variable LUMO_PICTURES names a folder, saves what a window looks like there.
void savePicture(QWidget& window, const QString& name);

/// A main dialog on folders of its own.
class MainDialogTest : public testing::Test {
 protected:
  /// Opens the dialog as the program does; an open one is dropped without being closed.
  CLumoDlg& open();
  /// Presses "Close".
  void close();
  /// Simulated observations of one sky, one file a band, of 900 records; two sources, of which the brighter
  /// one lies to the north-east.
  std::vector<std::string> simulateBands(const std::vector<double>& bandsMhz);
  /// Presses "Add..." and chooses.
  void add(const std::vector<std::string>& paths);

  template <typename Widget>
  [[nodiscard]] Widget& get(const char* name) {
    auto* const widget = dialog_->findChild<Widget*>(name);
    if (widget == nullptr) throw std::runtime_error(std::string("no control ") + name);
    return *widget;
  }
  [[nodiscard]] std::string text(const char* name);
  [[nodiscard]] bool isEnabled(const char* name) { return get<QWidget>(name).isEnabled(); }
  void press(const char* name) { clickOn(get<QWidget>(name)); }
  void type(const char* name, const QString& text);
  [[nodiscard]] std::string logText() const;
  /// A value of the saved profile.
  [[nodiscard]] std::string saved(const std::string& key);

  TempFolder store_, data_, work_;
  Log log_;
  ScriptedPrompts prompts_;
  std::unique_ptr<CLumoDlg> dialog_;
};

}  // namespace lumo::test
