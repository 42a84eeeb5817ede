// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanTileKernel.h"

#include <algorithm>

#include "clean/BeamPlacement.h"

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

/// Of a cache line.
constexpr std::size_t kFloatsPerLine = 16;

/// What a pass does beside subtracting.
enum class Search {
  kNone,
  /// Largest S alone. Without the constraint no score exceeds that of the pixel with it, and the comparison
  /// that remembers a place costs as much as all the rest of a search.
  kNorm,
  kPlace,
  kPlaceNonNegative,
};

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
    a = hn::Zero(d);
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) a = hn::Add(a, hn::Mul(r[k], hn::Set(d, maps.inverse[j * kTerms + k])));
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
template <int kTerms, int kVectors, class D, class V>
HWY_INLINE void subtractLanes(D d, const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                              std::size_t to, std::ptrdiff_t pixel, V (&r)[kVectors][kTerms]) {
  const hn::Rebind<float, D> df;
  const std::size_t lanes = hn::Lanes(d);
  for (std::size_t p = from; p < to; ++p) {
    const std::ptrdiff_t start = below.element(p) + pixel;
    const std::ptrdiff_t ahead = below.nextElement(p) + pixel;
    // The rows of many beams are too short and too many for the processor to foresee.
    HWY_UNROLL(8)
    for (int m = 0; m < 2 * kTerms - 1; ++m)
      for (std::size_t line = 0; line < kVectors * lanes; line += kFloatsPerLine)
        hwy::Prefetch(maps.beams[m] + ahead + line);
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
          r[v][k] = hn::PromoteTo(d, hn::DemoteTo(df, value));
        }
      }
    }
  }
}

/// kVectors vectors of pixels of one row: load, subtract, store and, where asked for, search.
template <int kTerms, int kVectors, Search kSearch, class D>
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
  subtractLanes<kTerms, kVectors>(d, maps, below, from, to, pixel, r);
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

/// Pixels `begin` .. `end` - 1 of the tile row whose first pixel is at `offset`, steps from .. to - 1, which
/// do not wrap in it once `shift` is added to their beam element.
template <int kTerms, Search kSearch>
HWY_INLINE void passRow(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                        std::size_t to, std::size_t offset, std::size_t begin, std::size_t end,
                        std::ptrdiff_t shift, const SearchConstants& constants, TileSearch& best) {
  // As many residuals in registers as hide the latency of the two roundings, and no more than fit.
  constexpr int kVectors = kTerms == 1 ? 8 : kTerms == 2 ? 4 : 2;
  const Wide d;
  const Single single;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = begin;
  for (; i + kVectors * lanes <= end; i += kVectors * lanes)
    passLanes<kTerms, kVectors, kSearch>(d, maps, below, from, to, offset + i,
                                         shift + static_cast<std::ptrdiff_t>(i), constants, best.wide);
  for (; i + lanes <= end; i += lanes)
    passLanes<kTerms, 1, kSearch>(d, maps, below, from, to, offset + i,
                                  shift + static_cast<std::ptrdiff_t>(i), constants, best.wide);
  for (; i < end; ++i)
    passLanes<kTerms, 1, kSearch>(single, maps, below, from, to, offset + i,
                                  shift + static_cast<std::ptrdiff_t>(i), constants, best.single);
}

/// One tile row whose steps meet the end of a beam row inside it: step by step, in two parts.
template <int kTerms>
HWY_NOINLINE void subtractWrapped(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t offset,
                                  std::size_t width, const SearchConstants& constants, TileSearch& best) {
  const std::ptrdiff_t period = -static_cast<std::ptrdiff_t>(maps.beamColumns);
  for (std::size_t p = 0; p < below.count(); ++p) {
    const std::size_t cut = below.straight(p);
    passRow<kTerms, Search::kNone>(maps, below, p, p + 1, offset, 0, cut, 0, constants, best);
    passRow<kTerms, Search::kNone>(maps, below, p, p + 1, offset, cut, width, period, constants, best);
  }
}

/// Takes the largest S of a row, and forgets it.
HWY_INLINE void reduceRow(TileSearch& search, std::size_t offset, double scale, CleanTileBest& best) {
  const Wide d;
  const Single single;
  const double norm =
      std::max(hn::GetLane(hn::MaxOfLanes(d, search.wide.norm)), hn::GetLane(search.single.norm));
  search.wide.norm = hn::Set(d, -1.0);
  search.single.norm = hn::Set(single, -1.0);
  best.norm = std::max(best.norm, norm);
  const double score = norm * scale;
  if (norm < 0.0 || score < best.score) return;
  best.found = true;
  best.score = score;
  best.offset = offset;
}

template <int kTerms, Search kSearch>
HWY_NOINLINE CleanTileBest passTile(const CleanTileMaps& maps, const CleanTileArea& area,
                                    const CleanUpdate* updates, std::size_t count, double gain) {
  BeamPlacement below(maps, area, updates, count);
  const double h = 2.0 - gain;
  const SearchConstants constants{gain, h, h * gain};
  const std::size_t width = area.columns();
  TileSearch search{LaneBest<Wide>(Wide()), LaneBest<Single>(Single())};
  CleanTileBest best;
  for (std::size_t row = area.firstRow; row < area.lastRow; ++row) {
    below.nextRow();
    const std::size_t offset = row * maps.mapColumns + area.firstColumn;
    if (below.wraps()) subtractWrapped<kTerms>(maps, below, offset, width, constants, search);
    passRow<kTerms, kSearch>(maps, below, 0, below.wraps() ? 0 : count, offset, 0, width, 0, constants,
                             search);
    if constexpr (kSearch == Search::kNorm) reduceRow(search, offset, constants.scale, best);
  }
  if constexpr (kSearch != Search::kNorm) {
    reduce(Wide(), search.wide, best);
    reduce(Single(), search.single, best);
  }
  return best;
}

template <int kTerms>
CleanTileBest findTerms(const CleanTileMaps& maps, const CleanTileArea& area, double gain) {
  return maps.nonNegative ? passTile<kTerms, Search::kPlaceNonNegative>(maps, area, nullptr, 0, gain)
                          : passTile<kTerms, Search::kPlace>(maps, area, nullptr, 0, gain);
}

template <int kTerms>
CleanTileBest passTerms(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                        std::size_t count, double gain) {
  return maps.nonNegative ? passTile<kTerms, Search::kPlaceNonNegative>(maps, area, updates, count, gain)
                          : passTile<kTerms, Search::kNorm>(maps, area, updates, count, gain);
}

CleanTileBest updateTile(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                         std::size_t count, double gain) {
  switch (maps.terms) {
    case 1:
      return passTerms<1>(maps, area, updates, count, gain);
    case 2:
      return passTerms<2>(maps, area, updates, count, gain);
    case 3:
      return passTerms<3>(maps, area, updates, count, gain);
    default:
      return passTerms<4>(maps, area, updates, count, gain);
  }
}

CleanTileBest findPeak(const CleanTileMaps& maps, const CleanTileArea& area, double gain) {
  switch (maps.terms) {
    case 1:
      return findTerms<1>(maps, area, gain);
    case 2:
      return findTerms<2>(maps, area, gain);
    case 3:
      return findTerms<3>(maps, area, gain);
    default:
      return findTerms<4>(maps, area, gain);
  }
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(updateTile);
HWY_EXPORT(findPeak);

CleanTileBest updateCleanTile(const CleanTileMaps& maps, const CleanTileArea& area,
                              const CleanUpdate* updates, std::size_t count, double gain) {
  return HWY_DYNAMIC_DISPATCH(updateTile)(maps, area, updates, count, gain);
}

CleanTileBest findCleanPeak(const CleanTileMaps& maps, const CleanTileArea& area, double gain) {
  return HWY_DYNAMIC_DISPATCH(findPeak)(maps, area, gain);
}

}  // namespace lumo

#endif
