// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanTileKernel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "clean/BeamPlacement.h"
#include "clean/ProductRounding.h"

// Compiled once per instruction set; the one to run is chosen when the program runs. Vectors whose size is
// unknown to the compiler cannot be kept in arrays, hence no SVE and no RISC-V vectors.
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "clean/CleanTileKernel.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Covers the rounding of S in double, and that of its bound.
constexpr double kUp = 1.0 + 1e-6;

/// What a pass does beside subtracting.
enum class Search {
  kNone,
  /// Largest S alone. Without the constraint no score exceeds that of the pixel with it, and the comparison
  /// that remembers a place costs as much as all the rest of a search.
  kNorm,
  kPlace,
  kPlaceNonNegative,
};

template <ProductRounding kRounding, class D, class V = hn::Vec<D>>
HWY_INLINE V roundToFloat(D d, V value) {
  if constexpr (kRounding == ProductRounding::kConvert) {
    const hn::Rebind<float, D> df;
    return hn::PromoteTo(d, hn::DemoteTo(df, value));
  } else {
    // Beside 1.5 2^29 times its power of two, a double keeps 24 bits of the value. With these signs a zero
    // keeps its own, whether products and differences are fused or not.
    const V power = hn::And(value, hn::Inf(d));
    const V shift = hn::Set(d, -1.5 * 0x1p29);
    return hn::MulSub(power, shift, hn::MulSub(power, shift, value));
  }
}

/// Best score so far per lane of D.
template <class D>
struct LaneBest {
  using V = hn::Vec<D>;
  HWY_INLINE explicit LaneBest(D d) : score(hn::Zero(d)), place(hn::Set(d, -1.0)), norm(hn::Set(d, -1.0)) {}
  V score;
  V place;  ///< offset of the pixel less its lane, exact as a double; -1 while there is none
  V norm;
};

/// The constants of a search.
struct SearchConstants {
  double gain;
  double h;
  double scale;
};

template <int kTerms, Search kSearch, class D, class V = hn::Vec<D>>
HWY_INLINE void searchLanes(D d, const CleanTileMaps& maps, const SearchConstants& constants, const V* r,
                            std::size_t offset, LaneBest<D>& best) {
  const hn::Rebind<float, D> df;
  V sum = hn::Zero(d);
  V a = hn::Zero(d);
  HWY_UNROLL(4)
  for (int j = kTerms - 1; j >= 0; --j) {
    // Not from 0, which could only change the sign of a zero, and that `sum` forgets.
    const double* const w = maps.inverse + std::ptrdiff_t{j} * kTerms;
    a = hn::Mul(r[0], hn::Set(d, w[0]));
    HWY_UNROLL(4)
    for (int k = 1; k < kTerms; ++k) a = hn::Add(a, hn::Mul(r[k], hn::Set(d, w[k])));
    sum = hn::Add(sum, hn::Mul(r[j], a));
  }
  best.norm = hn::Max(best.norm, sum);
  if constexpr (kSearch == Search::kNorm) return;
  V score = hn::Mul(sum, hn::Set(d, constants.scale));
  if constexpr (kSearch == Search::kPlaceNonNegative) {
    // `a` is a_0, the last to be formed.
    const V current = hn::PromoteTo(d, hn::LoadU(df, maps.intensity + offset));
    const V tentative = hn::Add(hn::Mul(a, hn::Set(d, constants.gain)), current);
    const V reach = hn::Add(hn::Mul(hn::Set(d, constants.h), a), current);
    const V loss = hn::Mul(reach, hn::Mul(tentative, hn::Set(d, maps.q)));
    score = hn::IfThenElse(hn::Lt(tentative, hn::Zero(d)), hn::Sub(score, loss), score);
  }
  const auto better = hn::Ge(score, best.score);
  best.score = hn::IfThenElse(better, score, best.score);
  best.place = hn::IfThenElse(better, hn::Set(d, static_cast<double>(offset)), best.place);
}

template <class D>
HWY_INLINE void reduce(D d, const LaneBest<D>& lanes, CleanTileBest& best) {
  double score[hn::MaxLanes(d)];
  double place[hn::MaxLanes(d)];
  double norm[hn::MaxLanes(d)];
  hn::StoreU(lanes.score, d, score);
  hn::StoreU(lanes.place, d, place);
  hn::StoreU(lanes.norm, d, norm);
  for (std::size_t lane = 0; lane < hn::Lanes(d); ++lane) {
    best.norm = std::max(best.norm, norm[lane]);
    if (place[lane] < 0.0) continue;
    const std::size_t offset = static_cast<std::size_t>(place[lane]) + lane;
    if (best.found && (score[lane] < best.score || (score[lane] == best.score && offset < best.offset)))
      continue;
    best.found = true;
    best.score = score[lane];
    best.offset = offset;
  }
}

/// Subtracts the steps from .. to - 1 from kVectors vectors of pixels of one row, `pixel` pixels after the
/// tile's first, with the residuals in registers.
template <int kTerms, ProductRounding kRounding, int kVectors, class D, class V>
HWY_INLINE void subtractLanes(D d, const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                              std::size_t to, std::ptrdiff_t pixel, V (&r)[kVectors][kTerms]) {
  const hn::Rebind<float, D> df;
  const std::size_t lanes = hn::Lanes(d);
  const BeamPlacement::Ahead ahead = below.ahead(pixel);
  for (std::size_t p = from; p < to; ++p) {
    const std::ptrdiff_t start = below.element(p) + pixel;
    const std::ptrdiff_t fetched = ahead.elements[p] + ahead.pixel;
    HWY_UNROLL(8)
    for (int m = 0; m < 2 * kTerms - 1; ++m)
      for (std::size_t line = 0; line < kVectors * lanes; line += BeamPlacement::kFloatsPerLine)
        hwy::Prefetch(maps.beams[m] + fetched + line);
    const double* const increments = below.increments(p);
    HWY_UNROLL(8)
    for (int v = 0; v < kVectors; ++v) {
      V beam[2 * kTerms - 1];
      HWY_UNROLL(8)
      for (int m = 0; m < 2 * kTerms - 1; ++m)
        beam[m] =
            hn::PromoteTo(d, hn::LoadU(df, maps.beams[m] + start + v * static_cast<std::ptrdiff_t>(lanes)));
      HWY_UNROLL(4)
      for (int j = 0; j < kTerms; ++j) {
        HWY_UNROLL(4)
        for (int k = 0; k < kTerms; ++k) {
          const V value = hn::Sub(r[v][k], hn::Mul(beam[k + j], hn::Set(d, increments[j])));
          r[v][k] = roundToFloat<kRounding>(d, value);
        }
      }
    }
  }
}

/// kVectors vectors of pixels of one row: load, subtract, store and, where asked for, search.
template <int kTerms, ProductRounding kRounding, int kVectors, Search kSearch, class D>
HWY_INLINE void passLanes(D d, const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                          std::size_t to, std::size_t offset, std::ptrdiff_t pixel,
                          const SearchConstants& constants, LaneBest<D>& best) {
  const hn::Rebind<float, D> df;
  const std::size_t lanes = hn::Lanes(d);
  hn::Vec<D> r[kVectors][kTerms];
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) HWY_UNROLL(4)
  for (int k = 0; k < kTerms; ++k)
    r[v][k] = hn::PromoteTo(d, hn::LoadU(df, maps.maps[k] + offset + static_cast<std::size_t>(v) * lanes));
  subtractLanes<kTerms, kRounding, kVectors>(d, maps, below, from, to, pixel, r);
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) {
    const std::size_t at = offset + static_cast<std::size_t>(v) * lanes;
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) hn::StoreU(hn::DemoteTo(df, r[v][k]), df, maps.maps[k] + at);
    if constexpr (kSearch != Search::kNone) searchLanes<kTerms, kSearch>(d, maps, constants, r[v], at, best);
  }
}

using Wide = hn::ScalableTag<double>;
using Single = hn::CappedTag<double, 1>;

/// Best pixels of the whole vectors and of the pixels left over at the end of the rows.
struct TileSearch {
  LaneBest<Wide> wide;
  LaneBest<Single> single;
};

/// As many of the pixels from `i` to `end` - 1 of the tile row whose first pixel is at `offset` as kVectors
/// vectors at a time can take, steps from .. to - 1.
/// @return the first pixel left.
template <int kTerms, ProductRounding kRounding, int kVectors, Search kSearch, class D>
HWY_INLINE std::size_t passVectors(D d, const CleanTileMaps& maps, const BeamPlacement& below,
                                   std::size_t from, std::size_t to, std::size_t offset, std::size_t i,
                                   std::size_t end, std::ptrdiff_t shift, const SearchConstants& constants,
                                   LaneBest<D>& best) {
  const std::size_t step = kVectors * hn::Lanes(d);
  for (; i + step <= end; i += step)
    passLanes<kTerms, kRounding, kVectors, kSearch>(d, maps, below, from, to, offset + i,
                                                    shift + static_cast<std::ptrdiff_t>(i), constants, best);
  return i;
}

/// Vectors of pixels that are worked on together: as many residuals in registers as hide the latency of the
/// roundings, and no more than fit.
constexpr int vectorsFor(int terms) {
  return terms == 1 ? 8 : terms == 2 ? 4 : terms == 3 ? 3 : 2;
}

/// Groups of pixels that pass until memory has delivered what is fetched for a later one. Two at least: the
/// cache line in which one ends and the next begins is fetched with the next.
constexpr std::size_t groupsAhead(std::size_t steps) {
  constexpr std::size_t kStepsOfDelay = 32;
  return 2 + kStepsOfDelay / std::max<std::size_t>(steps, 1);
}

/// Pixels `begin` .. `end` - 1 of the tile row whose first pixel is at `offset`, steps from .. to - 1, which
/// do not wrap in it once `shift` is added to their beam element.
template <int kTerms, ProductRounding kRounding, Search kSearch>
HWY_INLINE void passRow(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                        std::size_t to, std::size_t offset, std::size_t begin, std::size_t end,
                        std::ptrdiff_t shift, const SearchConstants& constants, TileSearch& best) {
  constexpr int kVectors = vectorsFor(kTerms);
  const Wide d;
  std::size_t i = passVectors<kTerms, kRounding, kVectors, kSearch>(d, maps, below, from, to, offset, begin,
                                                                    end, shift, constants, best.wide);
  if constexpr (kVectors == 3)  // two are left of the usual width of tiles
    i = passVectors<kTerms, kRounding, 2, kSearch>(d, maps, below, from, to, offset, i, end, shift, constants,
                                                   best.wide);
  i = passVectors<kTerms, kRounding, 1, kSearch>(d, maps, below, from, to, offset, i, end, shift, constants,
                                                 best.wide);
  passVectors<kTerms, kRounding, 1, kSearch>(Single(), maps, below, from, to, offset, i, end, shift,
                                             constants, best.single);
}

/// One tile row whose steps meet the end of a beam row inside it: step by step, in two parts.
template <int kTerms, ProductRounding kRounding>
HWY_NOINLINE void subtractWrapped(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t offset,
                                  std::size_t width, const SearchConstants& constants, TileSearch& best) {
  const std::ptrdiff_t period = -static_cast<std::ptrdiff_t>(maps.beamColumns);
  for (std::size_t p = 0; p < below.count(); ++p) {
    const std::size_t cut = below.straight(p);
    passRow<kTerms, kRounding, Search::kNone>(maps, below, p, p + 1, offset, 0, cut, 0, constants, best);
    passRow<kTerms, kRounding, Search::kNone>(maps, below, p, p + 1, offset, cut, width, period, constants,
                                              best);
  }
}

using WideSingle = hn::ScalableTag<float>;

/// Finds the rows of a tile that may hold the best pixel without the constraint, in single precision:
/// S = sum_j r_j (inverse[j][j] r_j + sum_{k>j} inverse[j][k] r_k), within contest.singleError.
template <int kTerms>
class RowContest {
 public:
  HWY_INLINE RowContest(const CleanTileMaps& maps, const CleanContest& contest)
      : contest_(contest), scale_((2.0 - contest.gain) * contest.gain), largest_(hn::Zero(WideSingle())) {
    for (int j = 0; j < kTerms; ++j)
      for (int k = j; k < kTerms; ++k)
        inverse_[j][k] = static_cast<float>((j == k ? 1.0 : 2.0) * maps.inverse[j * kTerms + k]);
    raise(contest.score);
  }

  /// From now on pixels must reach `score`.
  HWY_INLINE void raise(double score) {
    constexpr double kLargest = std::numeric_limits<float>::max();  // no S comes near it
    least_ = static_cast<float>(std::min(kLargest, kDown * (score / (kUp * scale_) - contest_.singleError)));
  }

  /// Whether any of `width` pixels may reach the score.
  HWY_INLINE bool mayHoldBest(const CleanTileMaps& maps, std::size_t offset, std::size_t width) {
    const WideSingle d;
    const hn::CappedTag<float, 1> single;
    const std::size_t lanes = hn::Lanes(d);
    auto largest = hn::Zero(d);
    std::size_t i = 0;
    for (; i + lanes <= width; i += lanes) largest = hn::Max(largest, norm(d, maps, offset + i));
    float rest = 0.0F;
    for (; i < width; ++i) rest = std::max(rest, hn::GetLane(norm(single, maps, offset + i)));
    rest_ = std::max(rest_, rest);
    largest_ = hn::Max(largest_, largest);
    return !(rest < least_ && hn::AllTrue(d, hn::Lt(largest, hn::Set(d, least_))));
  }

  /// Upper bound of S in all rows seen.
  [[nodiscard]] HWY_INLINE double largest() const {
    const float largest = std::max(rest_, hn::GetLane(hn::MaxOfLanes(WideSingle(), largest_)));
    return kUp * (static_cast<double>(largest) + contest_.singleError);
  }

 private:
  /// Covers the rounding to float of a value that is not negative; all others are out of reach as well.
  static constexpr double kDown = 1.0 - 1e-6;

  template <class D, class V = hn::Vec<D>>
  HWY_INLINE V norm(D d, const CleanTileMaps& maps, std::size_t offset) const {
    V r[kTerms];
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) r[k] = hn::LoadU(d, maps.maps[k] + offset);
    V sum = hn::Zero(d);
    HWY_UNROLL(4)
    for (int j = 0; j < kTerms; ++j) {
      V a = hn::Mul(r[j], hn::Set(d, inverse_[j][j]));
      HWY_UNROLL(4)
      for (int k = j + 1; k < kTerms; ++k) a = hn::MulAdd(r[k], hn::Set(d, inverse_[j][k]), a);
      sum = hn::MulAdd(r[j], a, sum);
    }
    return sum;
  }

  const CleanContest& contest_;
  double scale_;
  float least_ = 0.0F;
  float rest_ = 0.0F;
  hn::Vec<WideSingle> largest_;
  float inverse_[kTerms][kTerms] = {};
};

/// Searches a row without the constraint for its largest S.
template <int kTerms>
HWY_NOINLINE void searchRow(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t offset,
                            std::size_t width, const SearchConstants& constants, CleanTileBest& best) {
  TileSearch search{LaneBest<Wide>(Wide()), LaneBest<Single>(Single())};
  passRow<kTerms, ProductRounding::kAlign, Search::kNorm>(maps, below, 0, 0, offset, 0, width, 0, constants,
                                                          search);
  const double norm =
      std::max(hn::GetLane(hn::MaxOfLanes(Wide(), search.wide.norm)), hn::GetLane(search.single.norm));
  best.norm = std::max(best.norm, norm);
  const double score = norm * constants.scale;
  if (norm < 0.0 || score < best.score) return;
  best.found = true;
  best.score = score;
  best.offset = offset;
}

/// @tparam kSearch of every row, after the steps; kNorm only of those that a RowContest leaves.
template <int kTerms, ProductRounding kRounding, Search kSearch>
HWY_NOINLINE CleanTileBest passTile(const CleanTileMaps& maps, const CleanTileArea& area,
                                    const CleanUpdate* updates, std::size_t count,
                                    const CleanContest& contest) {
  constexpr bool kByRows = kSearch == Search::kNorm;
  BeamPlacement below(maps, area, updates, count, vectorsFor(kTerms) * hn::Lanes(Wide()), groupsAhead(count));
  const double h = 2.0 - contest.gain;
  const SearchConstants constants{contest.gain, h, h * contest.gain};
  const std::size_t width = area.columns();
  RowContest<kTerms> rows(maps, contest);
  TileSearch search{LaneBest<Wide>(Wide()), LaneBest<Single>(Single())};
  CleanTileBest best;
  for (std::size_t row = area.firstRow; row < area.lastRow; ++row) {
    below.nextRow();
    const std::size_t offset = row * maps.mapColumns + area.firstColumn;
    if (below.wraps()) subtractWrapped<kTerms, kRounding>(maps, below, offset, width, constants, search);
    passRow<kTerms, kRounding, kByRows ? Search::kNone : kSearch>(maps, below, 0, below.wraps() ? 0 : count,
                                                                  offset, 0, width, 0, constants, search);
    if (!kByRows || !rows.mayHoldBest(maps, offset, width)) continue;
    searchRow<kTerms>(maps, below, offset, width, constants, best);
    rows.raise(std::max(contest.score, best.score));
  }
  if constexpr (kByRows) {
    // Without a bound every row has been searched.
    if (std::isfinite(contest.singleError)) best.norm = rows.largest();
  } else {
    reduce(Wide(), search.wide, best);
    reduce(Single(), search.single, best);
  }
  return best;
}

template <int kTerms>
CleanTileBest findTerms(const CleanTileMaps& maps, const CleanTileArea& area, const CleanContest& contest) {
  return maps.nonNegative
             ? passTile<kTerms, ProductRounding::kAlign, Search::kPlaceNonNegative>(maps, area, nullptr, 0,
                                                                                    contest)
             : passTile<kTerms, ProductRounding::kAlign, Search::kPlace>(maps, area, nullptr, 0, contest);
}

template <int kTerms, ProductRounding kRounding>
CleanTileBest passRounding(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                           std::size_t count, const CleanContest& contest) {
  return maps.nonNegative
             ? passTile<kTerms, kRounding, Search::kPlaceNonNegative>(maps, area, updates, count, contest)
             : passTile<kTerms, kRounding, Search::kNorm>(maps, area, updates, count, contest);
}

template <int kTerms>
CleanTileBest passTerms(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                        std::size_t count, const CleanContest& contest) {
  return roundingFor(maps, updates, count) == ProductRounding::kAlign
             ? passRounding<kTerms, ProductRounding::kAlign>(maps, area, updates, count, contest)
             : passRounding<kTerms, ProductRounding::kConvert>(maps, area, updates, count, contest);
}

CleanTileBest updateTile(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                         std::size_t count, const CleanContest& contest) {
  switch (maps.terms) {
    case 1:
      return passTerms<1>(maps, area, updates, count, contest);
    case 2:
      return passTerms<2>(maps, area, updates, count, contest);
    case 3:
      return passTerms<3>(maps, area, updates, count, contest);
    default:
      return passTerms<4>(maps, area, updates, count, contest);
  }
}

CleanTileBest findPeak(const CleanTileMaps& maps, const CleanTileArea& area, double gain) {
  const CleanContest contest{gain};
  switch (maps.terms) {
    case 1:
      return findTerms<1>(maps, area, contest);
    case 2:
      return findTerms<2>(maps, area, contest);
    case 3:
      return findTerms<3>(maps, area, contest);
    default:
      return findTerms<4>(maps, area, contest);
  }
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(updateTile);
HWY_EXPORT(findPeak);

CleanTileBest updateCleanTile(const CleanTileMaps& maps, const CleanTileArea& area,
                              const CleanUpdate* updates, std::size_t count, const CleanContest& contest) {
  return HWY_DYNAMIC_DISPATCH(updateTile)(maps, area, updates, count, contest);
}

CleanTileBest findCleanPeak(const CleanTileMaps& maps, const CleanTileArea& area, double gain) {
  return HWY_DYNAMIC_DISPATCH(findPeak)(maps, area, gain);
}

}  // namespace lumo

#endif
