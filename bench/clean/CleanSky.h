// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/AMatrix.h"

namespace lumo::bench {

/// Beams and dirty maps of a simulated observation of a jet with a sparse array.
struct CleanSky {
  /// @param size rows and columns of the maps, even; the beams are twice as large.
  ///
  /// Ten antennas follow the source for ten hours at eight frequencies over +-15 %; the beams are the
  /// transforms of the cells they fill, weighted by powers of the frequency offset, with side lobes of 10 to
  /// 30 %. The sky is a jet of 40 components with spectra, 60 point sources spread over the map, and the
  /// noise of the visibilities, of which the dirty maps are the sum.
  CleanSky(std::int32_t terms, std::uint32_t size);
  /// The dirty maps and beams that a run left as `prefix` in `folder`, which ends in its separator. Without
  /// any map when there are none.
  CleanSky(const std::string& folder, const std::string& prefix);

  std::vector<AMatrix<float>> maps;   ///< N
  std::vector<AMatrix<float>> beams;  ///< 2 N - 1
  double largestSideLobe = 0.0;       ///< of beam 0 beyond the main lobe, its peak being 1
};

}  // namespace lumo::bench
