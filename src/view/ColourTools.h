// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QToolButton;

namespace lumo {

class AColorsGraph;

/// The buttons above a plot: colours, scaling, limits and "Save picture...".
class ColourTools : public QWidget {
  Q_OBJECT

 public:
  explicit ColourTools(QWidget* parent);

  /// The graph that the buttons change; not owned. Null disables all but saving.
  void setGraph(AColorsGraph* graph);

 signals:
  /// The graph has other colours now.
  void changed();
  void saveRequested();

 private:
  void addColourMaps();
  void addScalings();
  void addLimits();
  void askForLimits();
  /// Adds a button with a menu that is filled anew each time it opens.
  template <typename Fill>
  QToolButton* addMenuButton(const QString& text, const QString& toolTip, Fill fill);

  AColorsGraph* graph_ = nullptr;
  QToolButton* colours_ = nullptr;  // these belong to Qt as children of this widget
  QToolButton* scaling_ = nullptr;
  QToolButton* limits_ = nullptr;
};

}  // namespace lumo
