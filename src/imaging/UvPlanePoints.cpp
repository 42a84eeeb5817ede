// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvPlanePoints.h"

namespace lumo {

namespace {

constexpr std::uint64_t kRecordsAtOnce = 4096;
constexpr std::size_t kPointsAtOnce = 65536;

}  // namespace

void appendUvPoints(const UvGroup& group, const UvBands& bands, const UvRange& visible,
                    std::vector<UvPoint>& points) {
  bands.forEachFrequency(group.band, [&](double frequency) {
    const UvPoint point{-frequency * group.u, -frequency * group.v};
    if (visible.contains(point)) points.push_back(point);
  });
}

Status readUvPoints(const UvPlaneData& data, const UvRange& visible, const UvPointSink& sink,
                    const CancelFlag* cancel) {
  const UvBands bands(data);
  UvGroupReader reader(data, bands);
  std::vector<UvGroup> groups;
  std::vector<UvPoint> points;
  const auto cancelled = [cancel] {
    return cancel != nullptr && cancel->load(std::memory_order_relaxed) != 0;
  };
  while (!cancelled() && reader.next(groups, kRecordsAtOnce)) {
    for (const UvGroup& group : groups) {
      appendUvPoints(group, bands, visible, points);
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
