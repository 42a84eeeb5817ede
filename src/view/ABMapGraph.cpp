// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/ABMapGraph.h"

#include <utility>

namespace lumo {

void ABMapGraph::SetParameters(AMatrix<float> map, const TMinMax& range) {
  SetParameters(std::make_shared<const AMatrix<float>>(std::move(map)), range);
}

void ABMapGraph::SetParameters(std::shared_ptr<const AMatrix<float>> map, const TMinMax& range) {
  view_.setMap(std::move(map), range);
  mapChanged();
}

void ABMapGraph::setUnit(std::string unit) {
  view_.setUnit(std::move(unit));
}

std::string ABMapGraph::readOut(double x, double y) const {
  const MapReadOut text = view_.readOut(x, y);
  const auto joined = [](const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : first + "   " + second;
  };
  return joined(text.sky, text.value) + '\n' + joined(text.offset, text.pixel);
}

}  // namespace lumo
