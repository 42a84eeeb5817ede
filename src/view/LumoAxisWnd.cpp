// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/LumoAxisWnd.h"

#include <QMenu>

namespace lumo {

void LumoAxisWnd::fillContextMenu(QMenu& menu) {
  menu.addAction(tr("Copy to clipboard"), this, [this] { copyToClipboard(); });
}

}  // namespace lumo
