// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CandidateKernel.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "clean/PeriodicIndex.h"
#include "clean/RowCandidates.h"

// See CleanTileKernel.cpp.
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "clean/CandidateKernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Wide = hn::ScalableTag<double>;
using Single = hn::CappedTag<double, 1>;

static_assert(kCandidateLanes % hn::MaxLanes(Wide()) == 0);

/// The constants of a search.
struct SearchConstants {
  explicit SearchConstants(double loopGain) : gain(loopGain), h(2.0 - loopGain), scale(h * gain) {}
  double gain;
  double h;
  double scale;
};

/// Scores of a vector of pixels, and their S.
/// @param current C_0 there, only looked at with the constraint.
template <int kTerms, bool kNonNegative, class D, class V = hn::Vec<D>>
HWY_INLINE V scoresOf(D d, const CleanTileMaps& maps, const SearchConstants& constants, const V* r,
                      const V& current, V& norm) {
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
  norm = sum;
  const V score = hn::Mul(sum, hn::Set(d, constants.scale));
  if constexpr (!kNonNegative) return score;
  // `a` is a_0, the last to be formed.
  const V tentative = hn::Add(hn::Mul(a, hn::Set(d, constants.gain)), current);
  const V reach = hn::Add(hn::Mul(hn::Set(d, constants.h), a), current);
  const V loss = hn::Mul(reach, hn::Mul(tentative, hn::Set(d, maps.q)));
  return hn::IfThenElse(hn::Lt(tentative, hn::Zero(d)), hn::Sub(score, loss), score);
}

using Indices = hn::Rebind<std::int32_t, Wide>;

/// Rows or columns of the beam below candidates: `places` moved by `shift`, both below `size`, around its
/// end.
HWY_INLINE hn::Vec<Indices> beamPlaces(const std::uint32_t* places, std::uint32_t shift, std::size_t size) {
  const hn::RebindToUnsigned<Indices> du;
  const auto moved = hn::Add(hn::LoadU(du, places), hn::Set(du, shift));
  return hn::BitCast(Indices(),
                     hn::Min(moved, hn::Sub(moved, hn::Set(du, static_cast<std::uint32_t>(size)))));
}

/// Row or column of the beam that lies below map row or column 0.
std::uint32_t shiftOf(std::size_t size, std::uint32_t peak) {
  return static_cast<std::uint32_t>(periodicIndex(static_cast<std::int64_t>(size / 2) - peak, size));
}

template <int kTerms>
void followTerms(const CleanTileMaps& maps, const CleanUpdate& step, const CandidateView& candidates) {
  const Wide d;
  const hn::Rebind<float, Wide> df;
  const Indices di;
  const std::uint32_t rowShift = shiftOf(maps.beamRows, step.row);
  const std::uint32_t columnShift = shiftOf(maps.beamColumns, step.column);
  for (std::size_t i = 0; i < candidates.count; i += hn::Lanes(d)) {
    const auto row = beamPlaces(candidates.rows + i, rowShift, maps.beamRows);
    const auto column = beamPlaces(candidates.columns + i, columnShift, maps.beamColumns);
    const auto element =
        hn::Add(hn::Mul(row, hn::Set(di, static_cast<std::int32_t>(maps.beamColumns))), column);
    hn::Vec<Wide> beam[2 * kTerms - 1];
    HWY_UNROLL(8)
    for (int m = 0; m < 2 * kTerms - 1; ++m)
      beam[m] = hn::PromoteTo(d, hn::GatherIndex(df, maps.beams[m], element));
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) {
      float* const residual = candidates.residuals[k] + i;
      auto r = hn::LoadU(df, residual);
      HWY_UNROLL(4)
      for (int j = 0; j < kTerms; ++j)
        r = hn::DemoteTo(df,
                         hn::Sub(hn::PromoteTo(d, r), hn::Mul(beam[k + j], hn::Set(d, step.increments[j]))));
      hn::StoreU(r, df, residual);
    }
  }
}

/// Best candidate so far per lane.
struct LaneBest {
  HWY_INLINE LaneBest() : score(hn::Zero(Wide())), offset(hn::Set(Wide(), -1.0)), index(hn::Zero(Wide())) {}
  hn::Vec<Wide> score;
  hn::Vec<Wide> offset;  ///< exact as a double; -1 while there is none
  hn::Vec<Wide> index;   ///< less its lane
};

HWY_INLINE CandidateBest bestLane(const LaneBest& lanes) {
  const Wide d;
  double score[hn::MaxLanes(Wide())];
  double offset[hn::MaxLanes(Wide())];
  double index[hn::MaxLanes(Wide())];
  hn::StoreU(lanes.score, d, score);
  hn::StoreU(lanes.offset, d, offset);
  hn::StoreU(lanes.index, d, index);
  CandidateBest best;
  double last = -1.0;
  for (std::size_t lane = 0; lane < hn::Lanes(d); ++lane) {
    if (offset[lane] < 0.0 || score[lane] < best.score) continue;
    if (score[lane] == best.score && offset[lane] < last) continue;
    last = offset[lane];
    best = {true, static_cast<std::size_t>(index[lane]) + lane, static_cast<std::size_t>(last), score[lane]};
  }
  return best;
}

template <int kTerms, bool kNonNegative>
CandidateBest bestTerms(const CleanTileMaps& maps, double gain, const CandidateView& candidates,
                        double* scores) {
  const Wide d;
  const hn::Rebind<float, Wide> df;
  const Indices di;
  const SearchConstants constants(gain);
  const auto columns = hn::Set(di, static_cast<std::int32_t>(maps.mapColumns));
  LaneBest best;
  for (std::size_t i = 0; i < candidates.count; i += hn::Lanes(d)) {
    const hn::RebindToUnsigned<Indices> du;
    const auto row = hn::BitCast(di, hn::LoadU(du, candidates.rows + i));
    const auto column = hn::BitCast(di, hn::LoadU(du, candidates.columns + i));
    const auto place = hn::Add(hn::Mul(row, columns), column);
    hn::Vec<Wide> r[kTerms];
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) r[k] = hn::PromoteTo(d, hn::LoadU(df, candidates.residuals[k] + i));
    auto current = hn::Zero(d);
    if constexpr (kNonNegative) current = hn::PromoteTo(d, hn::GatherIndex(df, maps.intensity, place));
    auto norm = hn::Zero(d);
    const auto score = scoresOf<kTerms, kNonNegative>(d, maps, constants, r, current, norm);
    if (scores != nullptr) hn::StoreU(score, d, scores + i);
    const auto offset = hn::PromoteTo(d, place);
    const auto last = hn::And(hn::Eq(score, best.score), hn::Gt(offset, best.offset));
    const auto better = hn::And(hn::Or(hn::Gt(score, best.score), last), hn::FirstN(d, candidates.count - i));
    best.score = hn::IfThenElse(better, score, best.score);
    best.offset = hn::IfThenElse(better, offset, best.offset);
    best.index = hn::IfThenElse(better, hn::Set(d, static_cast<double>(i)), best.index);
  }
  return bestLane(best);
}

/// Searches an area. Single precision tells which pixels may reach the score, and bounds all others.
template <int kTerms, bool kNonNegative>
class AreaSearch {
 public:
  HWY_INLINE AreaSearch(const CleanTileMaps& maps, const CandidateContest& contest)
      : maps_(maps), constants_(contest.gain), least_(contest.least), error_(contest.singleError) {
    for (int j = 0; j < kTerms; ++j)
      for (int k = j; k < kTerms; ++k)
        inverse_[j][k] = static_cast<float>((j == k ? 1.0 : 2.0) * maps.inverse[j * kTerms + k]);
    constexpr double kLargest = std::numeric_limits<float>::max();  // no S comes near it
    leastNorm_ = static_cast<float>(std::min(kLargest, kDown * (least_ / (kUp * constants_.scale) - error_)));
  }

  HWY_INLINE AreaRest search(const CleanTileArea& area, std::uint32_t* offsets) {
    const hn::ScalableTag<float> df;
    const hn::CappedTag<float, 1> single;
    const std::size_t width = area.columns();
    AreaRest found;
    auto rest = hn::Set(df, -1.0F);
    auto restLeft = hn::Set(single, -1.0F);
    for (std::size_t r = area.firstRow; r < area.lastRow; ++r) {
      const std::size_t offset = r * maps_.mapColumns + area.firstColumn;
      RowCandidates row(least_);
      const std::size_t left = searchVectors(df, Wide(), offset, 0, width, row, rest);
      searchVectors(single, Single(), offset, left, width, row, restLeft);
      found.candidates += row.finish(offsets + found.candidates);
      found.score = std::max(found.score, row.rest());
    }
    const float norm = std::max(hn::GetLane(hn::MaxOfLanes(df, rest)), hn::GetLane(restLeft));
    if (norm >= 0.0F) {
      const double bound = kUp * (static_cast<double>(norm) + error_);
      largest_ = std::max(largest_, bound);
      found.score = std::max(found.score, kUp * constants_.scale * bound);
    }
    found.norm = largest_;
    return found;
  }

 private:
  /// Covers the rounding of S in double, and that of its bound.
  static constexpr double kUp = 1.0 + 1e-6;
  /// Covers the rounding to float of a value that is not negative; all others are out of reach as well.
  static constexpr double kDown = 1.0 - 1e-6;

  /// Pixels `i` to `end` - 1 of the row whose first one is at `offset`, as far as whole vectors go.
  /// @tparam DD of vectors of doubles that divide those of DF.
  /// @return the first pixel left.
  template <class DF, class DD, class V = hn::Vec<DF>>
  HWY_INLINE std::size_t searchVectors(DF df, DD dd, std::size_t offset, std::size_t i, std::size_t end,
                                       RowCandidates& row, V& rest) {
    const std::size_t lanes = hn::Lanes(df);
    const V least = hn::Set(df, leastNorm_);
    for (; i + lanes <= end; i += lanes) {
      const V norm = singleNorm(df, offset + i);
      const auto below = hn::Lt(norm, least);
      rest = hn::Max(rest, hn::IfThenElse(below, norm, rest));
      if (HWY_LIKELY(hn::AllTrue(df, below))) continue;
      std::uint8_t bytes[8] = {};
      hn::StoreMaskBits(df, hn::Not(below), bytes);
      std::uint64_t reached = 0;
      std::memcpy(&reached, bytes, sizeof reached);
      reached &= (std::uint64_t{1} << lanes) - 1;
      const std::size_t part = hn::Lanes(dd);
      for (std::size_t from = 0; reached >> from != 0; from += part)
        takeVector(dd, offset + i + from, reached >> from & ((1U << part) - 1U), row);
    }
    return i;
  }

  /// S = sum_j r_j (inverse[j][j] r_j + sum_{k>j} inverse[j][k] r_k). Products and sums are not fused: not
  /// every instruction set could.
  template <class D, class V = hn::Vec<D>>
  HWY_INLINE V singleNorm(D d, std::size_t offset) const {
    V r[kTerms];
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) r[k] = hn::LoadU(d, maps_.maps[k] + offset);
    V sum = hn::Zero(d);
    HWY_UNROLL(4)
    for (int j = 0; j < kTerms; ++j) {
      V a = hn::Mul(r[j], hn::Set(d, inverse_[j][j]));
      HWY_UNROLL(4)
      for (int k = j + 1; k < kTerms; ++k) a = hn::Add(hn::Mul(r[k], hn::Set(d, inverse_[j][k])), a);
      sum = hn::Add(sum, hn::Mul(r[j], a));
    }
    return sum;
  }

  /// Those pixels of a vector that may reach the score.
  template <class D, class V = hn::Vec<D>>
  HWY_INLINE void takeVector(D d, std::size_t offset, std::uint64_t reached, RowCandidates& row) {
    if (reached == 0) return;
    const hn::Rebind<float, D> df;
    V r[kTerms];
    HWY_UNROLL(4)
    for (int k = 0; k < kTerms; ++k) r[k] = hn::PromoteTo(d, hn::LoadU(df, maps_.maps[k] + offset));
    V current = hn::Zero(d);
    if constexpr (kNonNegative) current = hn::PromoteTo(d, hn::LoadU(df, maps_.intensity + offset));
    V norm;
    const V score = scoresOf<kTerms, kNonNegative>(d, maps_, constants_, r, current, norm);
    double scores[hn::MaxLanes(d)];
    double norms[hn::MaxLanes(d)];
    hn::StoreU(score, d, scores);
    hn::StoreU(norm, d, norms);
    for (; reached != 0; reached &= reached - 1) {
      const auto lane = static_cast<std::size_t>(std::countr_zero(reached));
      largest_ = std::max(largest_, norms[lane]);
      row.take(scores[lane], static_cast<std::uint32_t>(offset + lane));
    }
  }

  const CleanTileMaps& maps_;
  SearchConstants constants_;
  double least_;
  double error_;
  float leastNorm_ = 0.0F;
  double largest_ = 0.0;
  float inverse_[kTerms][kTerms] = {};
};

template <int kTerms, bool kNonNegative>
HWY_NOINLINE AreaRest searchArea(const CleanTileMaps& maps, const CleanTileArea& area,
                                 const CandidateContest& contest, std::uint32_t* offsets) {
  return AreaSearch<kTerms, kNonNegative>(maps, contest).search(area, offsets);
}

void follow(const CleanTileMaps& maps, const CleanUpdate& step, const CandidateView& candidates) {
  switch (maps.terms) {
    case 1:
      return followTerms<1>(maps, step, candidates);
    case 2:
      return followTerms<2>(maps, step, candidates);
    case 3:
      return followTerms<3>(maps, step, candidates);
    default:
      return followTerms<4>(maps, step, candidates);
  }
}

template <bool kNonNegative>
CandidateBest bestOf(const CleanTileMaps& maps, double gain, const CandidateView& candidates,
                     double* scores) {
  switch (maps.terms) {
    case 1:
      return bestTerms<1, kNonNegative>(maps, gain, candidates, scores);
    case 2:
      return bestTerms<2, kNonNegative>(maps, gain, candidates, scores);
    case 3:
      return bestTerms<3, kNonNegative>(maps, gain, candidates, scores);
    default:
      return bestTerms<4, kNonNegative>(maps, gain, candidates, scores);
  }
}

CandidateBest findBest(const CleanTileMaps& maps, double gain, const CandidateView& candidates,
                       double* scores) {
  return maps.nonNegative ? bestOf<true>(maps, gain, candidates, scores)
                          : bestOf<false>(maps, gain, candidates, scores);
}

template <bool kNonNegative>
AreaRest searchFor(const CleanTileMaps& maps, const CleanTileArea& area, const CandidateContest& contest,
                   std::uint32_t* offsets) {
  switch (maps.terms) {
    case 1:
      return searchArea<1, kNonNegative>(maps, area, contest, offsets);
    case 2:
      return searchArea<2, kNonNegative>(maps, area, contest, offsets);
    case 3:
      return searchArea<3, kNonNegative>(maps, area, contest, offsets);
    default:
      return searchArea<4, kNonNegative>(maps, area, contest, offsets);
  }
}

AreaRest search(const CleanTileMaps& maps, const CleanTileArea& area, const CandidateContest& contest,
                std::uint32_t* offsets) {
  return maps.nonNegative ? searchFor<true>(maps, area, contest, offsets)
                          : searchFor<false>(maps, area, contest, offsets);
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(follow);
HWY_EXPORT(findBest);
HWY_EXPORT(search);

void followCandidates(const CleanTileMaps& maps, const CleanUpdate& step, const CandidateView& candidates) {
  HWY_DYNAMIC_DISPATCH(follow)(maps, step, candidates);
}

CandidateBest findBestCandidate(const CleanTileMaps& maps, double gain, const CandidateView& candidates,
                                double* scores) {
  return HWY_DYNAMIC_DISPATCH(findBest)(maps, gain, candidates, scores);
}

AreaRest findCandidates(const CleanTileMaps& maps, const CleanTileArea& area, const CandidateContest& contest,
                        std::uint32_t* offsets) {
  return HWY_DYNAMIC_DISPATCH(search)(maps, area, contest, offsets);
}

}  // namespace lumo

#endif
