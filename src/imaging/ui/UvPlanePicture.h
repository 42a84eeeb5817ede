// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "core/Status.h"
#include "imaging/UvPlaneData.h"
#include "imaging/UvPlaneWorker.h"
#include "view/A2_3DAxis.h"

namespace lumo {

/// The axis of the uv plane with its graph, which begins to read: u grows to the left, as the sky is drawn.
/// `changed`, which may be empty, is called on a thread of the graph's when there is more to show.
[[nodiscard]] std::unique_ptr<A2_3DAxis> makeUvPlaneAxis(const UvPlaneData& data,
                                                         std::function<void()> changed = {});

/// How far a picture on the screen is, for its user: how much was read, why it went no further, or how many
/// crosses the complete one has.
[[nodiscard]] QString uvProgressText(const UvPicture& picture);

/// Writes the whole coverage of a selection to a picture whose extension says how: .png, .pdf or .svg.
/// Returns when it is done; needs a QGuiApplication (the offscreen platform will do), but shows no window. A
/// file that does not open ends the drawing there: the picture is written without what follows, and the
/// file's status is returned.
[[nodiscard]] Status drawUvPlane(const UvPlaneData& data, const std::string& path);

}  // namespace lumo
