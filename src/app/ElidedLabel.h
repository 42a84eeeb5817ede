// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace lumo {

/// A line of text that leaves out its middle where it does not fit, so that a long path shows its beginning
/// and its end and does not widen the window. The tool tip has the whole.
class ElidedLabel : public QWidget {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  void setText(const QString& text);
  [[nodiscard]] const QString& text() const { return text_; }
  /// What stands before the text in the tool tip.
  void setHint(const QString& hint);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString text_;
  QString hint_;
};

}  // namespace lumo
