// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <array>

#include "run/RunParameterTexts.h"
#include "run/RunParameters.h"

class QAction;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QDialog;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QWidget;

namespace lumo {

class AFqIDTable;
class AProgressCtrl;
class ElidedLabel;
class StatusLabel;
class UvxFileList;
struct FrequencySurvey;

/// The controls of the main dialog: what they are called, where they stand, what their tool tips say. They
/// know nothing of what happens when they are used; the dialog owns the widgets.
struct MainControls {
  static constexpr std::size_t kFieldCount = 7;

  QAction *about, *showLog;

  QListWidget* files;
  QPushButton *add, *remove, *reRead, *info;

  ElidedLabel* folder;
  QPushButton* browse;
  QLineEdit* prefix;

  QLabel *minimum, *maximum, *number;
  QPushButton* center;
  AFqIDTable* idTable;

  std::array<QLineEdit*, kFieldCount> fields;  ///< in the order of RunField
  QCheckBox *nonNegative, *variableGain;

  QPushButton *makePar, *uvPlane, *run;
  QPushButton *graph, *table, *mapAndAreas;
  QCheckBox* invert;

  StatusLabel* status;
  AProgressCtrl *leftBar, *middleBar, *rightBar;
  QComboBox* priority;
  QPushButton* close;

  /// Makes all controls inside `dialog`, in the order in which the Tab key visits them.
  MainControls(QDialog& dialog, UvxFileList& list);

  [[nodiscard]] QLineEdit* field(RunField which) const { return fields[static_cast<std::size_t>(which)]; }
  /// What stands in the controls, and the other way round.
  [[nodiscard]] RunParameterTexts texts() const;
  void setTexts(const RunParameterTexts& texts);
  /// The frequency group's texts, and the ranges in the tool tips of the fields. `hasFiles`: whether there is
  /// anything to take a range from.
  void showSurvey(const FrequencySurvey& survey, bool hasFiles);
  /// Only what makes sense now can be used. While a run goes on that is "Run", which then reads "Cancel", and
  /// "Close".
  void enable(bool hasFiles, bool isRunning);

 private:
  void makeMenu(QDialog& dialog);
  [[nodiscard]] QWidget* makeFileGroup();
  [[nodiscard]] QGridLayout* makeWorkRows();
  [[nodiscard]] QWidget* makeFrequencyGroup(UvxFileList& list);
  [[nodiscard]] QWidget* makeParameterGroup();
  [[nodiscard]] QBoxLayout* makeActionRow();
  [[nodiscard]] QBoxLayout* makeBars();
  [[nodiscard]] QBoxLayout* makeBottomRow();
  QLineEdit* addField(QGridLayout& grid, int row, int column, RunField which);
};

}  // namespace lumo
