// SPDX-License-Identifier: GPL-3.0-or-later
#include "Mouse.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace lumo::test {
namespace {

QWidget& widgetAt(QWidget& window, const QPointF& at) {
  QWidget* child = window.childAt(at.toPoint());
  return child != nullptr ? *child : window;
}

void send(QWidget& window, QEvent::Type type, const QPointF& at, Qt::MouseButton button,
          Qt::MouseButtons buttons) {
  QWidget& target = widgetAt(window, at);
  QMouseEvent event(type, target.mapFrom(&window, at), window.mapToGlobal(at), button, buttons,
                    Qt::NoModifier);
  QApplication::sendEvent(&target, &event);
}

}  // namespace

void press(QWidget& window, const QPointF& at) {
  send(window, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
}

void move(QWidget& window, const QPointF& at, bool buttonDown) {
  send(window, QEvent::MouseMove, at, Qt::NoButton, buttonDown ? Qt::LeftButton : Qt::NoButton);
}

void release(QWidget& window, const QPointF& at) {
  send(window, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
}

void doubleClick(QWidget& window, const QPointF& at) {
  send(window, QEvent::MouseButtonDblClick, at, Qt::LeftButton, Qt::LeftButton);
}

void wheel(QWidget& window, const QPointF& at, int eighthsOfDegree) {
  QWidget& target = widgetAt(window, at);
  QWheelEvent event(target.mapFrom(&window, at), window.mapToGlobal(at), QPoint(), QPoint(0, eighthsOfDegree),
                    Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(&target, &event);
}

QMenu* contextMenu(QWidget& window, const QPointF& at) {
  QWidget& target = widgetAt(window, at);
  QContextMenuEvent event(QContextMenuEvent::Mouse, target.mapFrom(&window, at).toPoint(),
                          window.mapToGlobal(at).toPoint());
  QApplication::sendEvent(&target, &event);
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

void key(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QKeyEvent event(QEvent::KeyPress, key, modifiers);
  QApplication::sendEvent(&window, &event);
}

std::unique_ptr<A2_3DAxis> greyMapAxis(const AMatrix<float>& map) {
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->setNameOX("Right ascent [%sas]");
  axis->setNameOY("Declination [%sas]");
  auto& graph = axis->addGraph(std::make_unique<AColorsGraph>());
  const double halfX = (map.columns() - 1) / 2.0;
  const double halfY = (map.rows() - 1) / 2.0;
  graph.SetParameters(map, {-halfX, halfX, -halfY, halfY, 0.0, 1.0});
  graph.setColourMap(ColourMap::kGrey);
  return axis;
}

AMatrix<float> mapWithOnePixel(std::uint32_t rows, std::uint32_t columns, std::uint32_t row,
                               std::uint32_t column) {
  AMatrix<float> map(rows, columns);
  map(row, column) = 1.0F;
  return map;
}

QImage shown(QWidget& window, const QSize& size) {
  window.resize(size);
  window.show();
  QApplication::processEvents();
  return window.grab().toImage();
}

QPointF middleOfWhite(const QImage& image, const QRect& part) {
  QPointF sum;
  int count = 0;
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) {
      if (image.pixel(x, y) != 0xffffffffU) continue;
      sum += QPointF(x + 0.5, y + 0.5);
      ++count;
    }
  }
  return count > 0 ? sum / count : QPointF(-1.0, -1.0);
}

}  // namespace lumo::test
