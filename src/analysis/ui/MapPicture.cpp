// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/MapPicture.h"

#include <QLayout>
#include <cmath>

#include "analysis/AreaEditor.h"
#include "analysis/ResultsPresenter.h"
#include "analysis/ui/AreaOverlay.h"
#include "view/AAxisWnd.h"
#include "view/AColorsGraph.h"

namespace lumo {

std::unique_ptr<A2_3DAxis> makeMapAxis(const AMatrix<float>& map, const AMapHeader& header,
                                       const TMinMax& range) {
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->setNameOX("Right ascent [%sas]");
  axis->setNameOY("Declination [%sas]");
  axis->setNameOZ(valueTitle(header.Unit()));
  auto& graph = axis->addGraph(std::make_unique<AColorsGraph>());
  graph.SetParameters(map, range);
  graph.setUnit(header.unit);
  if (header.beamMajor > 0 && header.beamMinor > 0)
    graph.setBeam(BeamEllipse{header.beamMajor, header.beamMinor, header.beamPa});
  if (std::isfinite(header.rightAscension) && std::isfinite(header.declination))
    graph.setSkyCentre(SkyPosition{header.rightAscension, header.declination});
  return axis;
}

Status drawMap(const LoadedMap& map, const AreaList& areas, const std::string& path) {
  constexpr QSize kSize(900, 800);
  const AreaEditor editor(areas);
  AAxisWnd window;
  // The products of a run record the value range of its first dirty map, an index map too.
  TMinMax range = map.range;
  range.vMin = TMinMax::kUnsetMin;
  range.vMax = TMinMax::kUnsetMax;
  auto axis = makeMapAxis(*map.matrix, map.header, range);
  axis->addGraph(std::make_unique<AreaOverlay>(editor, axis->extent()));
  window.SetAxis(std::move(axis));
  window.resize(kSize);
  window.layout()->activate();
  return window.exportPicture(path);
}

}  // namespace lumo
