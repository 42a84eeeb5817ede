// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace lumo {

ElidedLabel::ElidedLabel(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
  text_ = text;
  setHint(hint_);
  setAccessibleDescription(text_);
  update();
}

void ElidedLabel::setHint(const QString& hint) {
  hint_ = hint;
  setToolTip(text_.isEmpty() ? hint_ : hint_ + "\n" + text_);
}

QSize ElidedLabel::sizeHint() const {
  return {fontMetrics().averageCharWidth() * 30, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 10, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QString shown = fontMetrics().elidedText(text_, Qt::ElideMiddle, width());
  style()->drawItemText(&painter, rect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(), shown,
                        foregroundRole());
}

}  // namespace lumo
