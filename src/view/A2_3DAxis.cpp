// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/A2_3DAxis.h"

#include <algorithm>

namespace lumo {

A2_3DAxis::A2_3DAxis(int xDirection, int yDirection)
    : xDirection_(xDirection < 0 ? -1 : 1), yDirection_(yDirection < 0 ? -1 : 1) {}

std::string A2_3DAxis::nameOZ() const {
  if (!nameZ_.empty() || colours_ == nullptr || colours_->map().unit().empty()) return nameZ_;
  return "[%s" + colours_->map().unit() + "]";
}

void A2_3DAxis::keep(std::unique_ptr<AGraph> graph) {
  if (colours_ == nullptr) colours_ = dynamic_cast<AColorsGraph*>(graph.get());
  graphs_.push_back(std::move(graph));
}

PlotRect A2_3DAxis::extent() const {
  if (graphs_.empty()) return {};
  PlotRect all = graphs_.front()->extent();
  for (const auto& graph : graphs_) {
    const PlotRect one = graph->extent();
    all.xMin = std::min(all.xMin, one.xMin);
    all.xMax = std::max(all.xMax, one.xMax);
    all.yMin = std::min(all.yMin, one.yMin);
    all.yMax = std::max(all.yMax, one.yMax);
  }
  return all;
}

}  // namespace lumo
