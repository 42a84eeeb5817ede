// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <map>

#include "analysis/AreaEditor.h"

class QHBoxLayout;
class QToolButton;

namespace lumo {

class ATrackerArrayInAxis;

/// The buttons with which areas are marked.
class AreaToolBar final : public QWidget {
  Q_OBJECT

 public:
  /// `trackers` must stay as long as this bar, not owned.
  AreaToolBar(ATrackerArrayInAxis& trackers, QWidget* parent);

 private:
  void addTool(QHBoxLayout& row, AreaTool tool, const char* name, const QString& text,
               const QString& toolTip);
  QToolButton* addCommand(QHBoxLayout& row, const char* name, const QString& text, const QString& toolTip,
                          void (ATrackerArrayInAxis::*command)());
  void showState();

  ATrackerArrayInAxis& trackers_;
  std::map<AreaTool, QToolButton*> tools_;  // the buttons belong to Qt as children of this widget
  QToolButton* remove_;
  QToolButton* undo_;
  QToolButton* redo_;
};

}  // namespace lumo
