// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>
#include <string>

#include "core/Progress.h"

namespace lumo {

/// A progress bar for stages that run on the user-interface thread or on another one.
class AProgressCtrl : public QProgressBar, public ProgressBar {
  Q_OBJECT

 public:
  /// Range 0..100, at 0, text format "%d%%".
  explicit AProgressCtrl(QWidget* parent = nullptr);

  /// "%d" stands for the percentage and "%%" for a percent sign, as in printf.
  void setTextFormat(const std::string& format);
  /// From any thread while this lives. On the user-interface thread the bar is drawn at once, so that it
  /// moves while a stage keeps the event loop waiting; from others it follows when the event loop comes to
  /// it.
  void setPos(int percent) override;

  [[nodiscard]] QString text() const override;

 private:
  QString format_;
};

}  // namespace lumo
