// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "view/AGraph.h"
#include "view/MapView.h"

namespace lumo {

/// A graph of a map.
class ABMapGraph : public AGraph {
 public:
  /// `range`: x and y in arcseconds (see MapView::setMap); its value range becomes the colour limits. An
  /// unset value range stands for the smallest and largest finite pixel.
  void SetParameters(AMatrix<float> map, const TMinMax& range);
  /// A map that others use too, not null: it must not change as long as the graph has it.
  void SetParameters(std::shared_ptr<const AMatrix<float>> map, const TMinMax& range);
  /// Unit of the pixels, e.g. "Jy/beam".
  void setUnit(std::string unit);
  void setBeam(const std::optional<BeamEllipse>& beam) { view_.setBeam(beam); }
  /// The direction of offset (0, 0); without one the read-out has offsets only.
  void setSkyCentre(const std::optional<SkyPosition>& centre) { view_.setSkyCentre(centre); }

  [[nodiscard]] const MapView& map() const { return view_; }
  [[nodiscard]] PlotRect extent() const override { return view_.edges(); }
  [[nodiscard]] std::string readOut(double x, double y) const override;

 protected:
  /// Called after the map or its range has changed.
  virtual void mapChanged() = 0;

 private:
  MapView view_;
};

}  // namespace lumo
