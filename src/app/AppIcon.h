// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <cstddef>

namespace lumo {

/// The text of packaging/lumo.svg, which the build puts into the program.
extern const char kAppIconSvg[];
extern const std::size_t kAppIconSvgSize;

/// The program's icon in the sizes that window systems ask for: two sources of different colour on a dark sky
/// with the ring of a beam.
[[nodiscard]] QIcon appIcon();

}  // namespace lumo
