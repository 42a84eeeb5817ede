// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <set>

namespace lumo {

/// Notes which widgets have been painted, or are about to be: they are once control is back in the event
/// loop.
class PaintWatch : public QObject {
 public:
  PaintWatch() { qApp->installEventFilter(this); }

  [[nodiscard]] bool hasPainted(const QWidget& widget) const { return painted_.count(&widget) > 0; }
  /// Whether a child of the widget has been painted.
  [[nodiscard]] bool hasPaintedIn(const QWidget& widget) const {
    for (const QWidget* const child : widget.findChildren<QWidget*>())
      if (hasPainted(*child)) return true;
    return false;
  }
  void forget() { painted_.clear(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) painted_.insert(watched);
    return false;
  }

 private:
  std::set<const QObject*> painted_;
};

}  // namespace lumo
