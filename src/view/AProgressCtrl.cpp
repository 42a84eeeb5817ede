// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/AProgressCtrl.h"

#include <QMetaObject>
#include <QThread>

namespace lumo {

AProgressCtrl::AProgressCtrl(QWidget* parent) : QProgressBar(parent), format_("%d%%") {
  setRange(0, 100);
  setValue(0);
  setAlignment(Qt::AlignCenter);
}

void AProgressCtrl::setTextFormat(const std::string& format) {
  format_ = QString::fromStdString(format);
  update();
}

void AProgressCtrl::setPos(int percent) {
  if (QThread::currentThread() == thread()) {
    setValue(percent);
    repaint();
  } else {
    QMetaObject::invokeMethod(
        this, [this, percent] { setValue(percent); }, Qt::QueuedConnection);
  }
}

QString AProgressCtrl::text() const {
  QString text;
  for (qsizetype i = 0; i < format_.size(); ++i) {
    const auto rest = QStringView(format_).mid(i);
    if (rest.startsWith(QLatin1String("%d"))) {
      text += QString::number(value());
      ++i;
    } else {
      if (rest.startsWith(QLatin1String("%%"))) ++i;
      text += format_[i];
    }
  }
  return text;
}

}  // namespace lumo
