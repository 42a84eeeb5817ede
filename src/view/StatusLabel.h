// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

#include "core/Progress.h"

namespace lumo {

/// One line of status text for stages that run on the user-interface thread or on another one. A text that is
/// longer than the label does not widen the window.
class StatusLabel : public QLabel, public StatusText {
  Q_OBJECT

 public:
  explicit StatusLabel(QWidget* parent = nullptr);

  /// UTF-8, shown as it stands. From any thread while this lives; drawn at once on the user-interface thread.
  void setText(std::string_view text) override;
};

}  // namespace lumo
