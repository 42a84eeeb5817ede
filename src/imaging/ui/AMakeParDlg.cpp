// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/AMakeParDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cstring>

#include "core/TextForm.h"
#include "imaging/ui/MakeFieldTexts.h"

namespace lumo {

namespace {

/// Characters a number field shows without scrolling.
constexpr int kNumberWidth = 16;

void addHeader(QGridLayout& layout, const char* first, const char* second) {
  layout.addWidget(new QLabel(first), 0, 1, Qt::AlignHCenter);
  layout.addWidget(new QLabel(second), 0, 2, Qt::AlignHCenter);
}

/// A group and the grid in it: captions on the left, two columns of equal width beside them.
QGridLayout* makeGroup(const QString& title, QGroupBox*& group) {
  group = new QGroupBox(title);
  auto* const layout = new QGridLayout(group);
  layout->setColumnStretch(1, 1);
  layout->setColumnStretch(2, 1);
  return layout;
}

}  // namespace

AMakeParDlg::AMakeParDlg(QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("Make parameters"));
  // Widgets are made in the order in which the eye meets them: the order of the Tab key.
  auto* const left = new QVBoxLayout;
  left->addWidget(makeGridGroup());
  left->addWidget(makeMapGroup());
  left->addWidget(makeExtentGroup());
  left->addStretch();
  auto* const right = new QVBoxLayout;
  right->addWidget(makeWeightingGroup());
  right->addWidget(makeKernelGroup());
  right->addWidget(makeTaperGroup());
  right->addStretch();
  auto* const columns = new QHBoxLayout;
  columns->addLayout(left, 1);
  columns->addLayout(right, 1);

  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &AMakeParDlg::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &AMakeParDlg::reject);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(columns, 1);
  layout->addWidget(buttons);
  SetParameters(block_);
}

void AMakeParDlg::SetParameters(const ABMakeParameters& block) {
  block_ = block;
  model_ = MakeParametersModel(block);
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) showText(static_cast<MakeField>(i));
  showDependents();
}

void AMakeParDlg::accept() {
  const MakeParametersModel::Result result = model_.read();
  if (result.status.ok()) {
    block_ = result.block;
    QDialog::accept();
    return;
  }
  // The reason starts with the field's name in the block; the sheet has a name of its own for it.
  const std::string reason =
      result.status.message().substr(std::strlen(MakeParametersModel::name(result.field)));
  QMessageBox::warning(this, windowTitle(),
                       makeFieldTexts(result.field).title + QString::fromStdString(reason) + ".");
  leadTo(result.field);
}

QWidget* AMakeParDlg::makeGridGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("uv grid"), group);
  addHeader(*layout, "U", "V");
  addRow(*layout, tr("&Limit [data extents]:"), {MakeField::kUvLimitU, MakeField::kUvLimitV});
  addRow(*layout, tr("Data &extent [wavelengths]:"), {MakeField::kUvScaleU, MakeField::kUvScaleV});
  return group;
}

QWidget* AMakeParDlg::makeMapGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("Map"), group);
  addHeader(*layout, "X", "Y");
  addRow(*layout, tr("Si&ze [pixels]:"), {MakeField::kHalfSizeX, MakeField::kHalfSizeY});
  addRow(*layout, tr("&Shift [arcsec]:"), {MakeField::kShiftX, MakeField::kShiftY});
  return group;
}

QWidget* AMakeParDlg::makeExtentGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("Result"), group);
  addHeader(*layout, "X", "Y");
  addExtentRow(*layout, tr("Grid half-extent:"), "grid", gridX_, gridY_);
  addExtentRow(*layout, tr("Map cell:"), "cell", cellX_, cellY_);
  addExtentRow(*layout, tr("Field of view:"), "field", fieldX_, fieldY_);
  return group;
}

QWidget* AMakeParDlg::makeWeightingGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("Weighting"), group);
  addRow(*layout, tr("&Weighting:"), {MakeField::kWeightingMode});
  addRow(*layout, tr("Uniform &box U, V [1/cells]:"), {MakeField::kUniformBoxU, MakeField::kUniformBoxV});
  addRow(*layout, {}, {MakeField::kUseVisWeights});
  return group;
}

QWidget* AMakeParDlg::makeKernelGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("Convolution kernel"), group);
  addRow(*layout, tr("&Kernel:"), {MakeField::kKernelType});
  addRow(*layout, tr("Wi&dth U, V [cells]:"), {MakeField::kKernelWidthU, MakeField::kKernelWidthV});
  return group;
}

QWidget* AMakeParDlg::makeTaperGroup() {
  QGroupBox* group = nullptr;
  QGridLayout* const layout = makeGroup(tr("Taper"), group);
  addRow(*layout, tr("&Taper:"), {MakeField::kTaperType});
  addRow(*layout, tr("Widt&h U, V [wavelengths]:"), {MakeField::kTaperWidthU, MakeField::kTaperWidthV});
  addRow(*layout, tr("Centre, slo&pe [widths]:"), {MakeField::kTaperParam3, MakeField::kTaperParam4});
  return group;
}

void AMakeParDlg::addRow(QGridLayout& layout, const QString& label, std::initializer_list<MakeField> fields) {
  const int row = layout.rowCount();
  auto* const caption = new QLabel(label);
  layout.addWidget(caption, row, 0);
  int column = 1;
  for (const MakeField field : fields) {
    QWidget* const widget = makeEditor(field);
    if (column == 1) caption->setBuddy(widget);
    layout.addWidget(widget, row, column++, 1, fields.size() == 1 ? 2 : 1);
  }
}

void AMakeParDlg::addExtentRow(QGridLayout& layout, const QString& label, const char* name, QLabel*& x,
                               QLabel*& y) {
  const int row = layout.rowCount();
  layout.addWidget(new QLabel(label), row, 0);
  layout.addWidget(x = new QLabel, row, 1, Qt::AlignHCenter);
  layout.addWidget(y = new QLabel, row, 2, Qt::AlignHCenter);
  x->setObjectName(QString(name) + "X");
  y->setObjectName(QString(name) + "Y");
}

QWidget* AMakeParDlg::makeEditor(MakeField field) {
  QWidget* widget = nullptr;
  switch (field) {
    case MakeField::kHalfSizeX:
      widget = makeSizeCombo(field, MakeParametersModel::usableColumns());
      break;
    case MakeField::kHalfSizeY:
      widget = makeSizeCombo(field, MakeParametersModel::usableRows());
      break;
    case MakeField::kWeightingMode:
      widget = makeCombo(field, {{"Natural", kNaturalWeighting}, {"Uniform", kUniformWeighting}});
      break;
    case MakeField::kKernelType:
      widget = makeCombo(field, {{"Pill box", kKernelPillBox},
                                 {"Gauss", kKernelGauss},
                                 {"Lorentz", kKernelLorentz},
                                 {"Hat", kKernelHat}});
      break;
    case MakeField::kTaperType:
      widget = makeCombo(
          field,
          {{"None", kTaperNone}, {"Gauss", kTaperGauss}, {"Lorentz", kTaperLorentz}, {"Th", kTaperTh}});
      break;
    case MakeField::kUseVisWeights:
      widget = makeCheck(field);
      break;
    default:
      widget = makeLine(field);
  }
  widget->setObjectName(MakeParametersModel::name(field));
  widget->setToolTip(tr(makeFieldTexts(field).toolTip));
  widget->setAccessibleName(makeFieldTexts(field).title);
  editors_[static_cast<std::size_t>(field)] = widget;
  return widget;
}

QWidget* AMakeParDlg::makeLine(MakeField field) {
  auto* const line = new QLineEdit;
  line->setMinimumWidth(line->fontMetrics().averageCharWidth() * kNumberWidth);
  connect(line, &QLineEdit::textChanged, this, [this, field](const QString& text) { edited(field, text); });
  return line;
}

QWidget* AMakeParDlg::makeCombo(MakeField field, const std::vector<Choice>& choices) {
  auto* const combo = new QComboBox;
  for (const Choice& choice : choices) combo->addItem(tr(choice.text), choice.value);
  connect(combo, &QComboBox::currentIndexChanged, this, [this, field, combo](int index) {
    edited(field, QString::number(combo->itemData(index).toInt()));
  });
  return combo;
}

QWidget* AMakeParDlg::makeSizeCombo(MakeField field, const std::vector<std::int32_t>& sizes) {
  QWidget* const widget = makeCombo(field, {});
  const QSignalBlocker quiet(widget);
  for (const std::int32_t size : sizes) static_cast<QComboBox*>(widget)->addItem(QString::number(size), size);
  return widget;
}

QWidget* AMakeParDlg::makeCheck(MakeField field) {
  auto* const check = new QCheckBox(tr("Use &visibility weights"));
  connect(check, &QCheckBox::toggled, this, [this, field](bool isOn) { edited(field, isOn ? "1" : "0"); });
  return check;
}

void AMakeParDlg::edited(MakeField field, const QString& text) {
  model_.setText(field, text.toStdString());
  showDependents();
}

void AMakeParDlg::showText(MakeField field) {
  QWidget* const widget = editor(field);
  const QSignalBlocker quiet(widget);
  const std::string& text = model_.text(field);
  if (auto* const line = qobject_cast<QLineEdit*>(widget)) {
    line->setText(QString::fromStdString(text));
    line->setCursorPosition(0);
    return;
  }
  const std::int32_t value = textToInt(text);
  if (auto* const check = qobject_cast<QCheckBox*>(widget)) {
    check->setChecked(value != 0);
    return;
  }
  auto* const combo = static_cast<QComboBox*>(widget);
  int index = combo->findData(value);
  if (index < 0 && field == MakeField::kWeightingMode) index = combo->findData(kNaturalWeighting);
  // A value that cannot be used is shown, not replaced behind the user's back; OK will refuse it.
  if (index < 0) combo->insertItem(index = 0, tr("%1 (not usable)").arg(value), value);
  combo->setCurrentIndex(index);
}

void AMakeParDlg::showDependents() {
  // What the user is typing in stays open even when nothing uses it: leadTo() may have brought them there.
  for (std::size_t i = 0; i < kMakeFieldCount; ++i)
    editors_[i]->setEnabled(model_.isUsed(static_cast<MakeField>(i)) || focusWidget() == editors_[i]);
  const auto show = [](const MapExtent& extent, QLabel* grid, QLabel* cell, QLabel* field) {
    grid->setText(QString::fromStdString(wavelengthText(extent.gridLimit)));
    cell->setText(QString::fromStdString(angleText(extent.cell)));
    field->setText(QString::fromStdString(angleText(extent.field)));
  };
  show(model_.extentX(), gridX_, cellX_, fieldX_);
  show(model_.extentY(), gridY_, cellY_, fieldY_);
}

void AMakeParDlg::leadTo(MakeField field) {
  QWidget* const widget = editor(field);
  // Also a field that the present choices do not use must hold a number.
  widget->setEnabled(true);
  widget->setFocus();
  if (auto* const line = qobject_cast<QLineEdit*>(widget)) line->selectAll();
}

QWidget* AMakeParDlg::editor(MakeField field) const {
  return editors_[static_cast<std::size_t>(field)];
}

}  // namespace lumo
