// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/AreaToolBar.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QIconEngine>
#include <QPainter>
#include <QToolButton>

#include "analysis/ui/ATrackerArrayInAxis.h"

namespace lumo {

namespace {

/// A small drawing of what the tool makes, in a square of 16 x 16.
void drawTool(QPainter& painter, AreaTool tool) {
  switch (tool) {
    case AreaTool::kSelect:
      painter.setBrush(painter.pen().color());
      painter.drawPolygon(
          QPolygonF({{4, 2}, {12.5, 9.5}, {8.6, 9.8}, {10.6, 14}, {8.6, 14.8}, {6.8, 10.6}, {4, 13}}));
      break;
    case AreaTool::kMoveMap:
      painter.drawLine(QPointF(8, 1.5), QPointF(8, 14.5));
      painter.drawLine(QPointF(1.5, 8), QPointF(14.5, 8));
      for (int turn = 0; turn < 4; ++turn) {
        painter.drawPolyline(QPolygonF({{6, 3.5}, {8, 1.5}, {10, 3.5}}));
        painter.translate(8, 8);
        painter.rotate(90);
        painter.translate(-8, -8);
      }
      break;
    case AreaTool::kRectangle:
      painter.drawRect(QRectF(1.5, 3.5, 13, 9));
      break;
    case AreaTool::kEllipse:
      painter.drawEllipse(QRectF(1, 3.5, 14, 9));
      break;
    case AreaTool::kCircle:
      painter.drawEllipse(QRectF(2.5, 2.5, 11, 11));
      break;
    case AreaTool::kPolygon:
      painter.drawPolygon(QPolygonF({{2, 6}, {9, 2}, {14, 7}, {11, 14}, {4, 13}}));
      break;
  }
}

/// Draws the icon each time it is shown: of an icon made from a picture Qt keeps an entry for as long as the
/// program runs, and the dialog with these tools is opened again and again.
class ToolIcon final : public QIconEngine {
 public:
  ToolIcon(AreaTool tool, const QColor& colour) : tool_(tool), colour_(colour) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (mode == QIcon::Disabled) painter->setOpacity(0.4);
    painter->translate(rect.topLeft());
    painter->scale(rect.width() / 16.0, rect.height() / 16.0);
    painter->setPen(QPen(colour_, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawTool(*painter, tool_);
    painter->restore();
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, pixmap.rect(), mode, state);
    return pixmap;
  }
  [[nodiscard]] QIconEngine* clone() const override { return new ToolIcon(*this); }

 private:
  AreaTool tool_;
  QColor colour_;
};

/// In the window's own colours.
QIcon iconOf(AreaTool tool, const QWidget& widget) {
  return QIcon(new ToolIcon(tool, widget.palette().color(QPalette::ButtonText)));
}

}  // namespace

AreaToolBar::AreaToolBar(ATrackerArrayInAxis& trackers, QWidget* parent)
    : QWidget(parent), trackers_(trackers) {
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  addTool(*row, AreaTool::kSelect, "tool.select", tr("Select"),
          tr("Select an area, move it, pull its handles (S). Dragging beside the areas moves the map."));
  addTool(*row, AreaTool::kMoveMap, "tool.move", tr("Move map"),
          tr("Drag the map (M). The middle button does so with every tool, and the wheel zooms."));
  row->addSpacing(fontMetrics().averageCharWidth() * 2);
  addTool(*row, AreaTool::kRectangle, "tool.rectangle", tr("Rectangle"),
          tr("Draw a rectangle from corner to corner (R)"));
  addTool(*row, AreaTool::kEllipse, "tool.ellipse", tr("Ellipse"),
          tr("Draw an ellipse from corner to corner of its box (E)"));
  addTool(*row, AreaTool::kCircle, "tool.circle", tr("Circle"), tr("Draw a circle from its centre (C)"));
  addTool(
      *row, AreaTool::kPolygon, "tool.polygon", tr("Polygon"),
      tr("Click vertex by vertex (P). A double click or Enter closes the polygon, Backspace takes a vertex "
         "back, Escape gives up."));
  row->addSpacing(fontMetrics().averageCharWidth() * 2);
  remove_ = addCommand(*row, "area.delete", tr("Delete"), tr("Delete the selected area or vertex (Del)"),
                       &ATrackerArrayInAxis::remove);
  undo_ = addCommand(*row, "area.undo", tr("Undo"), tr("Take the last change back (Ctrl+Z)"),
                     &ATrackerArrayInAxis::undo);
  redo_ = addCommand(*row, "area.redo", tr("Redo"), tr("Make the change again (Ctrl+Shift+Z)"),
                     &ATrackerArrayInAxis::redo);
  row->addStretch();
  auto* const group = new QButtonGroup(this);
  for (const auto& [tool, button] : tools_) group->addButton(button);
  connect(&trackers_, &ATrackerArrayInAxis::changed, this, &AreaToolBar::showState);
  showState();
}

void AreaToolBar::addTool(QHBoxLayout& row, AreaTool tool, const char* name, const QString& text,
                          const QString& toolTip) {
  auto* const button = new QToolButton(this);
  button->setObjectName(name);
  button->setText(text);
  button->setToolTip(toolTip);
  button->setIcon(iconOf(tool, *this));
  button->setIconSize(QSize(fontMetrics().height(), fontMetrics().height()));
  button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  button->setCheckable(true);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  connect(button, &QToolButton::clicked, &trackers_, [this, tool] { trackers_.setTool(tool); });
  row.addWidget(button);
  tools_[tool] = button;
}

QToolButton* AreaToolBar::addCommand(QHBoxLayout& row, const char* name, const QString& text,
                                     const QString& toolTip, void (ATrackerArrayInAxis::*command)()) {
  auto* const button = new QToolButton(this);
  button->setObjectName(name);
  button->setText(text);
  button->setToolTip(toolTip);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  connect(button, &QToolButton::clicked, &trackers_, command);
  row.addWidget(button);
  return button;
}

void AreaToolBar::showState() {
  const AreaEditor& editor = trackers_.editor();
  tools_.at(editor.tool())->setChecked(true);
  remove_->setEnabled(editor.selected().has_value() && !editor.busy());
  undo_->setEnabled(editor.canUndo() || editor.busy());
  redo_->setEnabled(editor.canRedo() && !editor.busy());
}

}  // namespace lumo
