// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/StatusLabel.h"

#include <QMetaObject>
#include <QThread>

namespace lumo {

StatusLabel::StatusLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void StatusLabel::setText(std::string_view text) {
  const auto shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  if (QThread::currentThread() == thread()) {
    QLabel::setText(shown);
    setToolTip(shown);
    repaint();
  } else {
    QMetaObject::invokeMethod(
        this,
        [this, shown] {
          QLabel::setText(shown);
          setToolTip(shown);
        },
        Qt::QueuedConnection);
  }
}

}  // namespace lumo
