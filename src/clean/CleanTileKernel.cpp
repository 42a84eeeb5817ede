// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanTileKernel.h"

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

/// Steps that are subtracted from a group of pixels until memory has delivered.
constexpr std::size_t kStepsOfDelay = 40;

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

using Row = BeamPlacement::Row;

/// Subtracts the steps from .. to - 1 from kVectors vectors of pixels of one row, `pixel` pixels after its
/// first, with the residuals in registers.
template <int kTerms, ProductRounding kRounding, int kVectors, class D, class V>
HWY_INLINE void subtractLanes(D d, const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                              std::size_t to, const Row& row, std::ptrdiff_t pixel,
                              V (&r)[kVectors][kTerms]) {
  const hn::Rebind<float, D> df;
  const std::size_t lanes = hn::Lanes(d);
  const auto group = static_cast<std::ptrdiff_t>(kVectors * lanes);
  const std::ptrdiff_t shifted = row.shift + pixel;
  const BeamPlacement::Ahead ahead = below.ahead(row, pixel);
  for (std::size_t p = from; p < to; ++p) {
    const std::ptrdiff_t start = below.element(p) + shifted;
    // All lines of the group ahead but that in which it begins: see fetchNextRowStart().
    const std::ptrdiff_t fetched = ahead.elements[p] + ahead.pixel + BeamPlacement::kFloatsPerLine - 1;
    HWY_UNROLL(8)
    for (int m = 0; m < 2 * kTerms - 1; ++m)
      for (std::ptrdiff_t line = 0; line < group; line += BeamPlacement::kFloatsPerLine)
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

/// kVectors vectors of pixels of one row: load, subtract, store.
template <int kTerms, ProductRounding kRounding, int kVectors, class D>
HWY_INLINE void passLanes(D d, const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                          std::size_t to, const Row& row, std::size_t offset, std::ptrdiff_t pixel) {
  const hn::Rebind<float, D> df;
  const std::size_t lanes = hn::Lanes(d);
  hn::Vec<D> r[kVectors][kTerms];
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) HWY_UNROLL(4)
  for (int k = 0; k < kTerms; ++k)
    r[v][k] = hn::PromoteTo(d, hn::LoadU(df, maps.maps[k] + offset + static_cast<std::size_t>(v) * lanes));
  subtractLanes<kTerms, kRounding, kVectors>(d, maps, below, from, to, row, pixel, r);
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) HWY_UNROLL(4)
  for (int k = 0; k < kTerms; ++k)
    hn::StoreU(hn::DemoteTo(df, r[v][k]), df, maps.maps[k] + offset + static_cast<std::size_t>(v) * lanes);
}

using Wide = hn::ScalableTag<double>;
using Single = hn::CappedTag<double, 1>;

/// As many of the pixels from `i` to `end` - 1 of the tile row whose first pixel is at `offset` as kVectors
/// vectors at a time can take, steps from .. to - 1.
/// @return the first pixel left.
template <int kTerms, ProductRounding kRounding, int kVectors, class D>
HWY_INLINE std::size_t passVectors(D d, const CleanTileMaps& maps, const BeamPlacement& below,
                                   std::size_t from, std::size_t to, const Row& row, std::size_t offset,
                                   std::size_t i, std::size_t end) {
  const std::size_t step = kVectors * hn::Lanes(d);
  for (; i + step <= end; i += step)
    passLanes<kTerms, kRounding, kVectors>(d, maps, below, from, to, row, offset + i,
                                           static_cast<std::ptrdiff_t>(i));
  return i;
}

/// Vectors of pixels that are worked on together: as many residuals in registers as hide the latency of the
/// roundings, and no more than fit.
constexpr int vectorsFor(int terms) {
  return terms == 1 ? 8 : terms == 2 ? 4 : terms == 3 ? 3 : 2;
}

/// Pixels `begin` .. `end` - 1 of the tile row whose first pixel is at `offset`, steps from .. to - 1.
template <int kTerms, ProductRounding kRounding>
HWY_INLINE void passRow(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t from,
                        std::size_t to, const Row& row, std::size_t offset, std::size_t begin,
                        std::size_t end) {
  constexpr int kVectors = vectorsFor(kTerms);
  const Wide d;
  std::size_t i = passVectors<kTerms, kRounding, kVectors>(d, maps, below, from, to, row, offset, begin, end);
  if constexpr (kVectors == 3)  // two are left of the usual width of tiles
    i = passVectors<kTerms, kRounding, 2>(d, maps, below, from, to, row, offset, i, end);
  i = passVectors<kTerms, kRounding, 1>(d, maps, below, from, to, row, offset, i, end);
  passVectors<kTerms, kRounding, 1>(Single(), maps, below, from, to, row, offset, i, end);
}

/// Row `n` of a tile in which beams wrap: step by step, in two parts.
template <int kTerms, ProductRounding kRounding>
HWY_NOINLINE void passWrapped(const CleanTileMaps& maps, const BeamPlacement& below, std::size_t n,
                              std::size_t offset, std::size_t width) {
  for (std::size_t p = 0; p < below.count(); ++p) {
    const BeamPlacement::Parts parts = below.parts(p, n);
    passRow<kTerms, kRounding>(maps, below, p, p + 1, parts.first, offset, 0, parts.cut);
    passRow<kTerms, kRounding>(maps, below, p, p + 1, parts.second, offset, parts.cut, width);
  }
}

template <int kTerms, ProductRounding kRounding>
HWY_NOINLINE void passTile(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                           std::size_t count) {
  const BeamPlacement below(maps, area, updates, count, vectorsFor(kTerms) * hn::Lanes(Wide()),
                            kStepsOfDelay);
  for (std::size_t n = 0; n < area.rows(); ++n) {
    const std::size_t offset = (area.firstRow + n) * maps.mapColumns + area.firstColumn;
    if (below.wraps()) {
      passWrapped<kTerms, kRounding>(maps, below, n, offset, area.columns());
      continue;
    }
    const Row row = below.row(n);
    below.fetchNextRowStart(row);
    passRow<kTerms, kRounding>(maps, below, 0, count, row, offset, 0, area.columns());
  }
}

template <int kTerms>
void subtractTerms(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                   std::size_t count) {
  if (roundingFor(maps, updates, count) == ProductRounding::kAlign)
    passTile<kTerms, ProductRounding::kAlign>(maps, area, updates, count);
  else
    passTile<kTerms, ProductRounding::kConvert>(maps, area, updates, count);
}

void subtractEach(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                  std::size_t count) {
  switch (maps.terms) {
    case 1:
      return subtractTerms<1>(maps, area, updates, count);
    case 2:
      return subtractTerms<2>(maps, area, updates, count);
    case 3:
      return subtractTerms<3>(maps, area, updates, count);
    default:
      return subtractTerms<4>(maps, area, updates, count);
  }
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(subtractEach);

void subtractExactly(const CleanTileMaps& maps, const CleanTileArea& area, const CleanUpdate* updates,
                     std::size_t count) {
  HWY_DYNAMIC_DISPATCH(subtractEach)(maps, area, updates, count);
}

}  // namespace lumo

#endif
