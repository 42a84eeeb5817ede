// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "view/AAxisWnd.h"

namespace lumo {

/// The program's plot window: an AAxisWnd whose context menu holds the single item "Copy to clipboard".
class LumoAxisWnd : public AAxisWnd {
  Q_OBJECT

 public:
  using AAxisWnd::AAxisWnd;

 protected:
  void fillContextMenu(QMenu& menu) override;
};

}  // namespace lumo
