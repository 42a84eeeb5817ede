// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "imaging/ABMakeParameters.h"
#include "imaging/TileCover.h"
#include "io/AUVXFile.h"
#include "io/VisibilityInputs.h"

namespace lumo {

/// Which points lie on the uv grid: the cell nearest to them, taken with u >= 0, is on the half-plane grid.
/// The bounds are those of the gridder's own rounding, to the bit.
class GridReach {
 public:
  explicit GridReach(const GridGeometry& grid);

  /// u and v in wavelengths.
  [[nodiscard]] bool holds(double u, double v) const {
    const double turned = u < 0 ? -v : v;
    return (u < 0 ? -u : u) <= top_ && turned >= lowest_ && turned <= highest_;
  }

 private:
  double top_, lowest_, highest_;
};

/// How the groups of one input are to be read; valid as long as the inputs are.
struct TallyRules {
  /// `itsLayout` must outlive the rules.
  TallyRules(const VisibilityInputs& inputs, std::int32_t file, const UvxShape& shape, bool weights,
             const TileCover::Layout& itsLayout, const GridReach& itsReach);

  struct Selection {
    std::vector<double> frequencies;  ///< of channel 0 of each IF, Hz
    double highest = 0;
  };

  AStokesMix mix;
  std::int16_t source;
  std::array<std::int32_t, 256> selectionOf;  ///< by the byte of a record; -1 where it is not selected
  std::vector<Selection> selections;          ///< those not selected are empty
  std::size_t channels, channelBytes;
  bool useWeights;
  const TileCover::Layout& layout;
  GridReach reach;
};

/// What some groups of a file bring to a run. Tallies of successive pieces of a file add up to that of the
/// file; the sums depend on the pieces, not on who made them.
class GroupTally {
 public:
  /// One IF of a selection. Only (record, IF) pairs with a usable channel count: points.
  struct Band {
    std::uint64_t points = 0;
    std::uint64_t outside = 0;  ///< of them off the grid
    double weight = 0;  ///< Σ of the means of the channels' weights, or of 1, of the points on the grid
    double maxU = 0, maxV = 0;                                  ///< largest |u| and |v|, seconds
    double shortest = std::numeric_limits<double>::infinity();  ///< smallest and largest u² + v², seconds²
    double longest = 0;
  };
  struct Selection {
    std::vector<Band> bands;  ///< empty without records
    TileCover cover;          ///< of the points of the highest frequency
  };

  /// Takes one group: record and visibilities.
  void add(const TallyRules& rules, const std::uint8_t* group);
  void merge(const GroupTally& later);

  [[nodiscard]] std::uint64_t records() const { return records_; }
  [[nodiscard]] std::uint64_t usable() const { return usable_; }
  /// Σ over the usable visibilities.
  [[nodiscard]] double weight() const { return weight_; }
  /// By selection; may end early.
  [[nodiscard]] const std::vector<Selection>& selections() const { return selections_; }

 private:
  template <bool kTwoProducts>
  void addBands(const TallyRules& rules, const TallyRules::Selection& selection,
                const std::uint8_t* visibilities, double u, double v, std::vector<Band>& bands);

  std::uint64_t records_ = 0;
  std::uint64_t usable_ = 0;
  double weight_ = 0;
  std::vector<Selection> selections_;
};

}  // namespace lumo
