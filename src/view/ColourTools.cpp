// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ColourTools.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>

#include "core/TextForm.h"
#include "view/AColorsGraph.h"
#include "view/LimitsDlg.h"

namespace lumo {
namespace {

QString textOf(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Adds an item that is ticked when `current`.
template <typename Chosen>
void addChoice(QMenu& menu, const QString& text, bool current, Chosen chosen) {
  QAction* action = menu.addAction(text, &menu, chosen);
  action->setCheckable(true);
  action->setChecked(current);
}

}  // namespace

ColourTools::ColourTools(QWidget* parent) : QWidget(parent) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  addColourMaps();
  addScalings();
  addLimits();
  auto* save = new QToolButton(this);
  save->setText(tr("Save picture..."));
  save->setToolTip(tr("Write the plot to a PNG, PDF or SVG file"));
  save->setAutoRaise(true);
  connect(save, &QToolButton::clicked, this, &ColourTools::saveRequested);
  row->addWidget(save);
  row->addStretch();
  setGraph(nullptr);
}

void ColourTools::setGraph(AColorsGraph* graph) {
  graph_ = graph;
  for (QToolButton* button : {colours_, scaling_, limits_}) {
    button->setEnabled(graph != nullptr);
    button->setVisible(graph != nullptr);
  }
}

template <typename Fill>
QToolButton* ColourTools::addMenuButton(const QString& text, const QString& toolTip, Fill fill) {
  auto* button = new QToolButton(this);
  button->setText(text);
  button->setToolTip(toolTip);
  button->setAccessibleName(text);
  button->setPopupMode(QToolButton::InstantPopup);
  button->setAutoRaise(true);
  auto* menu = new QMenu(button);
  connect(menu, &QMenu::aboutToShow, this, [this, menu, fill] {
    menu->clear();
    if (graph_ != nullptr) fill(*menu);
  });
  button->setMenu(menu);
  layout()->addWidget(button);
  return button;
}

void ColourTools::addColourMaps() {
  colours_ = addMenuButton(tr("Colours"), tr("Colour map"), [this](QMenu& menu) {
    for (const ColourMap map : kColourMaps) {
      addChoice(menu, textOf(colourMapName(map)), graph_->colourMap() == map, [this, map] {
        graph_->setColourMap(map);
        emit changed();
      });
    }
  });
}

void ColourTools::addScalings() {
  scaling_ = addMenuButton(tr("Scaling"), tr("How values are spread over the colours"), [this](QMenu& menu) {
    for (const ScalingKind kind : kScalingKinds) {
      addChoice(menu, textOf(scalingName(kind)), graph_->scaling().kind() == kind, [this, kind] {
        graph_->setScaling(kind);
        emit changed();
      });
    }
  });
}

void ColourTools::addLimits() {
  limits_ = addMenuButton(tr("Limits"), tr("Values of the first and last colour"), [this](QMenu& menu) {
    const auto add = [this, &menu](const QString& text, const LimitChoice& choice) {
      addChoice(menu, text, graph_->limitChoice() == choice, [this, choice] {
        graph_->setLimits(choice);
        emit changed();
      });
    };
    add(tr("As given"), GivenLimits{});
    for (const double percent : kLimitPercents) {
      add(QString::fromStdString(generalText(percent)) + tr(" % of the pixels"), PercentLimits{percent});
    }
    addChoice(menu, tr("Custom..."), std::holds_alternative<ValueLimits>(graph_->limitChoice()),
              [this] { askForLimits(); });
  });
}

void ColourTools::askForLimits() {
  LimitsDlg dialog(graph_->scaling().limits(), this);
  if (dialog.exec() != QDialog::Accepted || graph_ == nullptr) return;
  graph_->setLimits(dialog.limits());
  emit changed();
}

}  // namespace lumo
