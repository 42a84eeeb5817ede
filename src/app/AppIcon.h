// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

namespace lumo {

/// The program's icon in the sizes that window systems ask for: two sources of different colour on a dark sky
/// with the ring of a beam.
[[nodiscard]] QIcon appIcon();

}  // namespace lumo
