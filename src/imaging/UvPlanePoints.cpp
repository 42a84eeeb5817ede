// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvPlanePoints.h"

#include <vector>

namespace lumo {

namespace {

constexpr std::size_t kPointsAtOnce = 65536;

}  // namespace

Status readUvPoints(const UvPlaneData& data, const UvRange& visible, const UvPointSink& sink,
                    const CancelFlag* cancel) {
  const UvBands bands(data);
  UvGroupReader reader(data, bands);
  std::vector<UvGroup> groups;
  std::vector<UvPoint> points;
  const auto cancelled = [cancel] {
    return cancel != nullptr && cancel->load(std::memory_order_relaxed) != 0;
  };
  while (!cancelled() && reader.next(groups, bands.groupsAtOnce())) {
    for (const UvGroup& group : groups) {
      forEachPoint(group, bands, visible, [&points](const UvPoint& point) { points.push_back(point); });
      if (points.size() < kPointsAtOnce) continue;
      if (cancelled()) break;
      sink(points);
      points.clear();
    }
  }
  if (cancelled()) return {StatusCode::kCancelled, "the picture of the uv plane was cancelled"};
  if (!points.empty()) sink(points);
  return reader.status();
}

}  // namespace lumo
