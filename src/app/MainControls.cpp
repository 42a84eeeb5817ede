// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MainControls.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFontMetrics>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/ElidedLabel.h"
#include "run/FrequencySurvey.h"
#include "run/UvxFileList.h"
#include "run/ui/AFqIDTable.h"
#include "view/AProgressCtrl.h"
#include "view/StatusLabel.h"

namespace lumo {

namespace {

/// Widths of the three bars to each other, left to right.
constexpr int kBarShares[] = {114, 90, 110};
constexpr const char* kPriorities[] = {"Idle", "Low", "Below", "Normal", "Above", "High", "Timecritical"};
constexpr int kLowPriority = 1;
constexpr int kStartColumns = 96;  ///< width of the dialog at start, in characters
constexpr int kSpareLines = 4;     ///< for the lists, above the least height

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& tip) {
  widget->setObjectName(name);
  widget->setToolTip(tip);
  return widget;
}

QPushButton* button(const char* name, const char* text, const QString& tip, const char* keys = nullptr) {
  auto* const made = named(new QPushButton(text), name, tip);
  // Enter in a field must not press whatever button comes first.
  made->setAutoDefault(false);
  if (keys != nullptr) {
    made->setShortcut(QKeySequence(keys));
    made->setToolTip(tip + " (" + keys + ")");
  }
  return made;
}

QLabel* label(const QString& text, QWidget* buddy) {
  auto* const made = new QLabel(text);
  made->setBuddy(buddy);
  made->setToolTip(buddy->toolTip());
  buddy->setAccessibleName(text.trimmed().remove(':'));
  return made;
}

QLabel* valueLabel(const char* name, const QString& tip) {
  auto* const made = named(new QLabel, name, tip);
  made->setTextInteractionFlags(Qt::TextSelectableByMouse);
  made->setMinimumWidth(made->fontMetrics().averageCharWidth() * 10);
  return made;
}

QString fieldTip(RunField field) {
  switch (field) {
    case RunField::kIterations:
      return "Number of CLEAN iterations; each takes one component off the maps.";
    case RunField::kIndexThreshold:
      return "Spectral-index map: a pixel is kept where the map of term 0 reaches this share of the peak.";
    case RunField::kIndexMin:
      return "Spectral-index map: lowest index kept; no unit.";
    case RunField::kIndexMax:
      return "Spectral-index map: highest index kept; no unit.";
    case RunField::kOrder:
      return "Number of spectral terms: 1 for the flux density alone, 2 with the spectral index. At most the "
             "number of selected frequencies.";
    case RunField::kGain:
      return "CLEAN loop gain: the share of a found component that one iteration takes off.";
    case RunField::kReference:
      return "Reference frequency of the spectral terms, MHz, within the surveyed range.";
  }
  return {};
}

constexpr const char* kFieldNames[MainControls::kFieldCount] = {
    "iterations", "indexThreshold", "indexMin", "indexMax", "order", "gain", "reference"};

}  // namespace

MainControls::MainControls(QDialog& dialog, UvxFileList& list) {
  makeMenu(dialog);
  auto* const layout = new QVBoxLayout(&dialog);
  layout->setMenuBar(dialog.findChild<QMenuBar*>());
  layout->addWidget(makeFileGroup(), 2);
  layout->addLayout(makeWorkRows());
  layout->addWidget(makeFrequencyGroup(list), 3);
  layout->addWidget(makeParameterGroup());
  layout->addLayout(makeActionRow());
  status = named(new StatusLabel, "status", "What the run is doing");
  status->setMinimumHeight(status->fontMetrics().height());
  layout->addWidget(status);
  layout->addLayout(makeBars());
  layout->addLayout(makeBottomRow());
  dialog.resize(dialog.fontMetrics().averageCharWidth() * kStartColumns,
                layout->minimumSize().height() + dialog.fontMetrics().lineSpacing() * kSpareLines);
}

void MainControls::makeMenu(QDialog& dialog) {
  auto* const bar = new QMenuBar(&dialog);
  QMenu* const menu = bar->addMenu("&System");
  menu->setToolTipsVisible(true);
  showLog = named(menu->addAction("&Log..."), "showLog", "What happened, with the reasons of failures");
  showLog->setShortcut(QKeySequence("Ctrl+L"));
  menu->addSeparator();
  about = named(menu->addAction("&About Lumo..."), "about", "Version and licence");
}

QWidget* MainControls::makeFileGroup() {
  auto* const group = new QGroupBox("UVX-Files");
  files = named(new QListWidget, "files", "The visibility files of the run, all of one source");
  files->setAccessibleName("UVX-Files");
  files->setTextElideMode(Qt::ElideMiddle);
  files->setSpacing(1);
  files->setMinimumHeight(files->fontMetrics().lineSpacing() * 5);
  add = button("add", "Add...", "Adds visibility files", "Ctrl+O");
  remove = button("delete", "Delete", "Takes the selected file off the list; the file itself stays",
                  "Ctrl+Shift+D");
  reRead = button("reRead", "ReRead", "Surveys the frequencies of all files anew", "F5");
  info = button("info", "UVX Info...", "Shows what the selected file holds", "Ctrl+I");
  auto* const grid = new QGridLayout(group);
  grid->addWidget(files, 0, 0, 5, 1);
  grid->addWidget(add, 0, 1);
  grid->addWidget(remove, 1, 1);
  grid->addWidget(reRead, 2, 1);
  grid->addWidget(info, 3, 1);
  grid->setRowStretch(4, 1);
  grid->setColumnStretch(0, 1);
  return group;
}

QGridLayout* MainControls::makeWorkRows() {
  folder = named(new ElidedLabel, "folder", {});
  folder->setHint("The folder that the products are written to");
  browse = button("browse", "Browse...", "Chooses the work folder", "Ctrl+B");
  prefix = named(new QLineEdit, "prefix",
                 "Beginning of the products' file names; any text that a file name may hold");
  auto* const grid = new QGridLayout;
  grid->addWidget(label("Work folder: ", folder), 0, 0);
  grid->addWidget(folder, 0, 1);
  grid->addWidget(browse, 0, 2);
  grid->addWidget(label("Prefix name: ", prefix), 1, 0);
  grid->addWidget(prefix, 1, 1, 1, 2);
  grid->setColumnStretch(1, 1);
  return grid;
}

QWidget* MainControls::makeFrequencyGroup(UvxFileList& list) {
  auto* const group = new QGroupBox("Frequency");
  auto* const grid = new QGridLayout(group);
  minimum = valueLabel("minimum", "Lowest selected frequency, MHz (first channel of each IF)");
  maximum = valueLabel("maximum", "Highest selected frequency, MHz (first channel of each IF)");
  number = valueLabel("number", "Number of selected frequencies; the channels of an IF count once");
  grid->addWidget(label("Min. [MHz]: ", minimum), 0, 0);
  grid->addWidget(minimum, 0, 1, 1, 2);
  grid->addWidget(label("Max. [MHz]: ", maximum), 1, 0);
  grid->addWidget(maximum, 1, 1, 1, 2);
  grid->addWidget(label("Number: ", number), 2, 0);
  grid->addWidget(number, 2, 1, 1, 2);
  addField(*grid, 3, 0, RunField::kReference);
  center = button("center", "Center",
                  "Sets the reference to the middle of the range, rounded down to a whole kHz", "Ctrl+T");
  grid->addWidget(center, 3, 2);
  grid->setRowStretch(4, 1);
  idTable = named(new AFqIDTable(list), "idTable",
                  "The frequency selections of every file; a click or the space bar takes one in or out");
  idTable->setAccessibleName("Frequency selections");
  idTable->setMinimumHeight(idTable->fontMetrics().lineSpacing() * 6);
  grid->addWidget(idTable, 0, 3, 5, 1);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 2);
  return group;
}

QLineEdit* MainControls::addField(QGridLayout& grid, int row, int column, RunField which) {
  const auto index = static_cast<std::size_t>(which);
  auto* const edit = named(new QLineEdit, kFieldNames[index], fieldTip(which));
  edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * 11);
  fields[index] = edit;
  grid.addWidget(label(QString(runFieldName(which)) + ": ", edit), row, column);
  grid.addWidget(edit, row, column + 1);
  return edit;
}

QWidget* MainControls::makeParameterGroup() {
  auto* const group = new QGroupBox("Parameters");
  auto* const grid = new QGridLayout(group);
  addField(*grid, 0, 0, RunField::kIterations);
  addField(*grid, 0, 2, RunField::kIndexThreshold);
  addField(*grid, 1, 0, RunField::kGain);
  addField(*grid, 1, 2, RunField::kIndexMin);
  addField(*grid, 2, 0, RunField::kOrder);
  addField(*grid, 2, 2, RunField::kIndexMax);
  nonNegative = named(new QCheckBox("Non-negativity"), "nonNegative",
                      "Keeps the intensity components from going below 0");
  variableGain = named(new QCheckBox("Variable loop gain"), "variableGain",
                       "Lets the loop gain rise towards 1, which it reaches around iteration 7000");
  grid->addWidget(nonNegative, 3, 0, 1, 2, Qt::AlignLeft);
  grid->addWidget(variableGain, 3, 2, 1, 2, Qt::AlignLeft);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  grid->setHorizontalSpacing(grid->horizontalSpacing() * 2);
  return group;
}

QBoxLayout* MainControls::makeActionRow() {
  makePar = button("makePar", "Make par...",
                   "Edits the imaging parameters: map size, weighting, kernel, taper", "Ctrl+M");
  uvPlane = button("uvPlane", "UV-Plane...", "Shows the uv coverage of the selected data", "Ctrl+U");
  run = button("run", "Run", "Images and cleans the selected data and writes the products", "Ctrl+R");
  graph = button("graph", "Graph...", "Marks areas on the restored map and draws their spectra", "Ctrl+G");
  table = button("table", "Table...", "Marks areas on the restored map and lists their spectra", "Ctrl+E");
  mapAndAreas =
      button("mapAndAreas", "Map and areas...", "Measures areas on maps of your choice", "Ctrl+Shift+M");
  invert = named(new QCheckBox("Invert"), "invert", "Dark sources on a light sky");
  invert->hide();
  QFont bold = run->font();
  bold.setBold(true);
  run->setFont(bold);
  auto* const row = new QHBoxLayout;
  for (QPushButton* const one : {makePar, uvPlane, run}) row->addWidget(one);
  row->addStretch();
  for (QPushButton* const one : {graph, table, mapAndAreas}) row->addWidget(one);
  row->addWidget(invert);
  return row;
}

QBoxLayout* MainControls::makeBars() {
  leftBar = named(new AProgressCtrl, "leftBar", "Files done, percent");
  middleBar = named(new AProgressCtrl, "middleBar", "Frequencies of the file done, percent");
  rightBar = named(new AProgressCtrl, "rightBar", "The step at work, percent");
  auto* const row = new QHBoxLayout;
  int share = 0;
  for (AProgressCtrl* const bar : {leftBar, middleBar, rightBar}) {
    bar->setAccessibleName(bar->toolTip());
    row->addWidget(bar, kBarShares[share++]);
  }
  return row;
}

QBoxLayout* MainControls::makeBottomRow() {
  priority = named(new QComboBox, "priority",
                   "How much of the processor the CLEAN may take from other programs, from Idle (least) to "
                   "Timecritical; the system may refuse those above Normal");
  for (const char* const name : kPriorities) priority->addItem(name);
  priority->setCurrentIndex(kLowPriority);
  close = button("close", "Close", "Saves the parameters and ends the program", "Ctrl+Q");
  auto* const row = new QHBoxLayout;
  row->addWidget(label("Priority: ", priority));
  row->addWidget(priority);
  row->addStretch();
  row->addWidget(close);
  return row;
}

RunParameterTexts MainControls::texts() const {
  const auto text = [this](RunField which) { return field(which)->text().toStdString(); };
  return {.iterations = text(RunField::kIterations),
          .indexThreshold = text(RunField::kIndexThreshold),
          .indexMin = text(RunField::kIndexMin),
          .indexMax = text(RunField::kIndexMax),
          .order = text(RunField::kOrder),
          .gain = text(RunField::kGain),
          .reference = text(RunField::kReference),
          .prefix = prefix->text().toStdString(),
          .nonNegative = nonNegative->isChecked(),
          .variableGain = variableGain->isChecked()};
}

void MainControls::setTexts(const RunParameterTexts& texts) {
  const auto show = [this](RunField which, const std::string& text) {
    field(which)->setText(QString::fromStdString(text));
  };
  show(RunField::kIterations, texts.iterations);
  show(RunField::kIndexThreshold, texts.indexThreshold);
  show(RunField::kIndexMin, texts.indexMin);
  show(RunField::kIndexMax, texts.indexMax);
  show(RunField::kOrder, texts.order);
  show(RunField::kGain, texts.gain);
  show(RunField::kReference, texts.reference);
  prefix->setText(QString::fromStdString(texts.prefix));
  nonNegative->setChecked(texts.nonNegative);
  variableGain->setChecked(texts.variableGain);
}

void MainControls::showSurvey(const FrequencySurvey& survey, bool hasFiles) {
  minimum->setText(QString::fromStdString(survey.minText()));
  maximum->setText(QString::fromStdString(survey.maxText()));
  number->setText(QString::fromStdString(survey.numberText()));
  for (std::size_t i = 0; i < kFieldCount; ++i) {
    const auto which = static_cast<RunField>(i);
    const bool fromSurvey = which == RunField::kOrder || which == RunField::kReference;
    QString tip = fieldTip(which);
    if (!fromSurvey || (hasFiles && survey.number > 0))
      tip += "\n" + QString::fromStdString(notANumber(which, {}, survey).hint);
    fields[i]->setToolTip(tip);
  }
}

void MainControls::enable(bool hasFiles, bool isRunning) {
  const bool idle = !isRunning;
  for (QWidget* const one : std::initializer_list<QWidget*>{remove, info, makePar, uvPlane, reRead, center,
                                                            field(RunField::kReference)})
    one->setEnabled(hasFiles && idle);
  for (QWidget* const one :
       std::initializer_list<QWidget*>{files, add, browse, prefix, idTable, nonNegative, variableGain,
                                       priority, graph, table, mapAndAreas})
    one->setEnabled(idle);
  for (QLineEdit* const one : fields)
    if (one != field(RunField::kReference)) one->setEnabled(idle);
  about->setEnabled(idle);
  run->setEnabled(hasFiles || isRunning);
  const QKeySequence keys = run->shortcut();
  run->setText(isRunning ? "Cancel" : "Run");
  run->setShortcut(keys);  // which a new text takes away
}

}  // namespace lumo
