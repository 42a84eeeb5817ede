// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <span>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/UvGroupReader.h"
#include "imaging/UvPlaneData.h"

namespace lumo {

/// Takes a batch of points; a batch is valid only during the call.
using UvPointSink = std::function<void(std::span<const UvPoint>)>;

/// Calls visit(P) for what a group adds to the plane: for every IF and channel of its band, each at its own
/// frequency ν, the point P = (-ν·u, -ν·v), if it lies in the range. Its mirror -P is not visited.
template <typename Visit>
void forEachPoint(const UvGroup& group, const UvBands& bands, const UvRange& range, Visit visit) {
  bands.forEachFrequency(group.band, [&](double frequency) {
    const UvPoint point{-frequency * group.u, -frequency * group.v};
    if (range.contains(point)) visit(point);
  });
}

/// Hands out the points P of a selection that lie in `visible`, in file order, in batches. For each of them a
/// picture has a cross at P and one at -P; -P is not tested, so a range that is not the same in every
/// quadrant (UvRange::mirrored()) leaves out mirrors of points beyond it.
///
/// A file that does not open ends the list, with its reason as the result: what was handed out before stays.
/// kCancelled when `cancel`, which may be null, was set.
[[nodiscard]] Status readUvPoints(const UvPlaneData& data, const UvRange& visible, const UvPointSink& sink,
                                  const CancelFlag* cancel = nullptr);

}  // namespace lumo
