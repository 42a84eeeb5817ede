// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace lumo {

/// Logical pixels that drawLegendLine() needs in a font of this family to draw the line in full size.
[[nodiscard]] double legendLineWidth(const QFont& font, double fontHeight, const QString& text);

/// Draws one line of a legend into the middle of `place`: smaller where it is narrow, and with its middle
/// left out where that is not enough. The size is a little above the frame's font height.
void drawLegendLine(QPainter& painter, const QRectF& place, double fontHeight, const QColor& colour,
                    const QString& text);

}  // namespace lumo
