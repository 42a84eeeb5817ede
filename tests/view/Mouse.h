// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <QPointF>
#include <QWidget>
#include <memory>

#include "view/A2_3DAxis.h"

namespace lumo::test {

// What a user does over a window, at a position in the window's logical pixels: sent to the widget that is
// there.

void press(QWidget& window, const QPointF& at);
void move(QWidget& window, const QPointF& at, bool buttonDown);
void release(QWidget& window, const QPointF& at);
void doubleClick(QWidget& window, const QPointF& at);
void wheel(QWidget& window, const QPointF& at, int eighthsOfDegree);
/// The menu that the right button opens there, still open; null if none.
[[nodiscard]] QMenu* contextMenu(QWidget& window, const QPointF& at);
void key(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// An axis with one grey colour graph of `map`, whose cells are an arcsecond and whose middle is at (0, 0).
[[nodiscard]] std::unique_ptr<A2_3DAxis> greyMapAxis(const AMatrix<float>& map);
/// Zeros with a one at (row, column).
[[nodiscard]] AMatrix<float> mapWithOnePixel(std::uint32_t rows, std::uint32_t columns, std::uint32_t row,
                                             std::uint32_t column);

/// Shows the window in this size and draws it; one device pixel for each logical one.
[[nodiscard]] QImage shown(QWidget& window, const QSize& size);
/// Mean position of the white pixels of `image` within `part`, counted from the image's corner to the pixels'
/// centres; (-1, -1) if there are none.
[[nodiscard]] QPointF middleOfWhite(const QImage& image, const QRect& part);

}  // namespace lumo::test
