// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "analysis/AreaList.h"
#include "core/Status.h"
#include "io/MapProduct.h"
#include "view/A2_3DAxis.h"

namespace lumo {

/// The axis of a map in colours: right ascension and declination, the unit at the colour scale, the beam.
[[nodiscard]] std::unique_ptr<A2_3DAxis> makeMapAxis(const AMatrix<float>& map, const AMapHeader& header,
                                                     const TMinMax& range);

/// Writes the map with the outlines of areas to a picture whose extension says how: .png, .pdf or .svg.
/// Needs a QApplication (the offscreen platform will do), but shows no window.
[[nodiscard]] Status drawMap(const LoadedMap& map, const AreaList& areas, const std::string& path);

}  // namespace lumo
