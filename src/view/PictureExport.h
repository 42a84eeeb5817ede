// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <functional>
#include <string>

#include "core/Status.h"

class QPaintDevice;
class QWidget;

namespace lumo {

/// Writes a picture to `path`; its extension (.png, .pdf, .svg, in any case) says how. `draw` draws on the
/// device, which has `size` logical pixels; PNG files have twice as many pixels each way. An old file is
/// replaced only by a complete new one. Fails with kInvalidValue for another extension or an empty size,
/// kWriteFailed otherwise.
[[nodiscard]] Status exportPicture(const QSize& size, const std::function<void(QPaintDevice&)>& draw,
                                   const std::string& path);

/// The same for a window as it looks now.
[[nodiscard]] Status exportPicture(QWidget& widget, const std::string& path);

}  // namespace lumo
