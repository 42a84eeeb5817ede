// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/MergedTileKernel.h"

#include <algorithm>

#include "clean/BeamPlacement.h"

// See CleanTileKernel.cpp.
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "clean/MergedTileKernel.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Steps that are added to the sums of a group of pixels until what is fetched has come from the last-level
/// cache, or from memory.
constexpr std::size_t kCacheDelay = 8;
constexpr std::size_t kMemoryDelay = 20;
/// Bytes of all beams that a last-level cache may hold.
constexpr std::size_t kCached = std::size_t{16} << 20;

std::size_t delayOf(const CleanTileMaps& maps) {
  const auto beams = static_cast<std::size_t>(2 * maps.terms - 1);
  return beams * maps.beamRows * maps.beamColumns * sizeof(float) > kCached ? kMemoryDelay : kCacheDelay;
}

using Wide = hn::ScalableTag<float>;
using Single = hn::CappedTag<float, 1>;

/// The steps of a call in single precision. Products and sums are not fused: not every instruction set could.
struct MergedSteps {
  MergedSteps(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
              std::size_t count, std::size_t group)
      : below(maps, area, updates, count, group, delayOf(maps)) {
    for (std::size_t p = 0; p < count; ++p)
      for (int j = 0; j < maps.terms; ++j) increments[p][j] = static_cast<float>(updates[p].increments[j]);
  }
  BeamPlacement below;
  float increments[kMaxTileUpdates][kMaxTileTerms];
};

using Row = BeamPlacement::Row;

/// kVectors vectors of pixels of one row, `pixel` pixels after its first.
template <int kTerms, int kVectors, class D, class V = hn::Vec<D>>
HWY_INLINE void passLanes(D d, const CleanTileMaps& maps, const MergedSteps& steps, const Row& row,
                          std::size_t offset, std::ptrdiff_t pixel) {
  const std::size_t lanes = hn::Lanes(d);
  V sum[kVectors][kTerms];
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) HWY_UNROLL(4)
  for (int k = 0; k < kTerms; ++k) sum[v][k] = hn::Zero(d);
  // All lines: as a rule a row is a single group.
  const auto group = static_cast<std::ptrdiff_t>(kVectors * lanes);
  const std::ptrdiff_t shifted = row.shift + pixel;
  const BeamPlacement::Ahead ahead = steps.below.ahead(row, pixel);
  for (std::size_t p = 0; p < steps.below.count(); ++p) {
    const std::ptrdiff_t start = steps.below.element(p) + shifted;
    const std::ptrdiff_t fetched = ahead.elements[p] + ahead.pixel;
    HWY_UNROLL(8)
    for (int m = 0; m < 2 * kTerms - 1; ++m) {
      for (std::ptrdiff_t line = 0; line < group; line += BeamPlacement::kFloatsPerLine)
        hwy::Prefetch(maps.beams[m] + fetched + line);
      hwy::Prefetch(maps.beams[m] + fetched + group - 1);
    }
    HWY_UNROLL(8)
    for (int v = 0; v < kVectors; ++v) {
      V beam[2 * kTerms - 1];
      HWY_UNROLL(8)
      for (int m = 0; m < 2 * kTerms - 1; ++m)
        beam[m] = hn::LoadU(d, maps.beams[m] + start + v * static_cast<std::ptrdiff_t>(lanes));
      HWY_UNROLL(4)
      for (int k = 0; k < kTerms; ++k) {
        HWY_UNROLL(4)
        for (int j = 0; j < kTerms; ++j)
          sum[v][k] = hn::Add(sum[v][k], hn::Mul(beam[k + j], hn::Set(d, steps.increments[p][j])));
      }
    }
  }
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) HWY_UNROLL(4)
  for (int k = 0; k < kTerms; ++k) {
    float* const map = maps.maps[k] + offset + static_cast<std::size_t>(v) * lanes;
    hn::StoreU(hn::Sub(hn::LoadU(d, map), sum[v][k]), d, map);
  }
}

/// Vectors of pixels that are worked on together: as many sums in registers as hide the latency of the
/// additions, and no more than fit.
constexpr int vectorsFor(int terms) {
  return terms == 1 ? 8 : terms == 2 ? 4 : 2;
}

/// The tile row whose first pixel is at `offset`.
template <int kTerms>
HWY_INLINE void passRow(const CleanTileMaps& maps, const MergedSteps& steps, const Row& row,
                        std::size_t offset, std::size_t width) {
  constexpr int kVectors = vectorsFor(kTerms);
  const Wide d;
  const Single single;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + kVectors * lanes <= width; i += kVectors * lanes)
    passLanes<kTerms, kVectors>(d, maps, steps, row, offset + i, static_cast<std::ptrdiff_t>(i));
  for (; i + lanes <= width; i += lanes)
    passLanes<kTerms, 1>(d, maps, steps, row, offset + i, static_cast<std::ptrdiff_t>(i));
  for (; i < width; ++i)
    passLanes<kTerms, 1>(single, maps, steps, row, offset + i, static_cast<std::ptrdiff_t>(i));
}

/// Row `n` of a tile in which beams wrap, in the order and with the roundings of passLanes().
template <int kTerms>
HWY_NOINLINE void passWrapped(const CleanTileMaps& maps, const MergedSteps& steps, std::size_t n,
                              std::size_t offset, std::size_t width) {
  constexpr std::size_t kAtOnce = 64;
  for (std::size_t begin = 0; begin < width; begin += kAtOnce) {
    const std::size_t end = std::min(begin + kAtOnce, width);
    float sum[kTerms][kAtOnce] = {};
    for (std::size_t p = 0; p < steps.below.count(); ++p) {
      const BeamPlacement::Parts parts = steps.below.parts(p, n);
      for (std::size_t i = begin; i < end; ++i) {
        const Row& row = i < parts.cut ? parts.first : parts.second;
        const std::ptrdiff_t element = steps.below.element(p) + row.shift + static_cast<std::ptrdiff_t>(i);
        for (int k = 0; k < kTerms; ++k)
          for (int j = 0; j < kTerms; ++j)
            sum[k][i - begin] += maps.beams[k + j][element] * steps.increments[p][j];
      }
    }
    for (int k = 0; k < kTerms; ++k)
      for (std::size_t i = begin; i < end; ++i) maps.maps[k][offset + i] -= sum[k][i - begin];
  }
}

template <int kTerms>
HWY_NOINLINE void passTile(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                           std::size_t count) {
  const MergedSteps steps(maps, area, updates, count, vectorsFor(kTerms) * hn::Lanes(Wide()));
  for (std::size_t n = 0; n < area.rows(); ++n) {
    const std::size_t offset = (area.firstRow + n) * maps.mapColumns + area.firstColumn;
    if (steps.below.wraps())
      passWrapped<kTerms>(maps, steps, n, offset, area.columns());
    else
      passRow<kTerms>(maps, steps, steps.below.row(n), offset, area.columns());
  }
}

void subtractSum(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                 std::size_t count) {
  switch (maps.terms) {
    case 1:
      return passTile<1>(maps, area, updates, count);
    case 2:
      return passTile<2>(maps, area, updates, count);
    case 3:
      return passTile<3>(maps, area, updates, count);
    default:
      return passTile<4>(maps, area, updates, count);
  }
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(subtractSum);

void subtractMerged(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                    std::size_t count) {
  HWY_DYNAMIC_DISPATCH(subtractSum)(maps, area, updates, count);
}

}  // namespace lumo

#endif
