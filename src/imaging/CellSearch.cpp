// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/CellSearch.h"

#include "imaging/WorkGrid.h"

// Compiled once per instruction set; the one to run is chosen when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/CellSearch.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<double, PointList::kCapacity>;
using Vector = hn::Vec<Tag>;
using Mask = hn::Mask<Tag>;

/// Of a cell: points farther inside than this miss the neighbouring cells whatever the rounding.
constexpr double kClearly = 0.5 - 0x1p-30;

static_assert(sizeof(WorkGrid::Cell) == 4 * sizeof(double));

/// Where a point (u, v) of the half plane u >= 0 falls.
struct Place {
  Vector row, column;
  Mask clearX, clearY;  ///< far from the edges of that column, of that row
  Mask inside;          ///< surely inside this cell and no other, and the conjugate point in none
};

/// For points that are not inside.
struct OtherPlace {
  Mask nowhere;  ///< surely outside of every cell of the grid, and the conjugate point too
  Mask twins;    ///< surely inside this cell of column 0, and the conjugate point in the one opposite
};

HWY_INLINE Mask between(Vector value, double first, double last) {
  const Tag d;
  return hn::And(hn::Ge(value, hn::Set(d, first)), hn::Le(value, hn::Set(d, last)));
}

HWY_INLINE Place find(const GridGeometry& g, Vector u, Vector v) {
  const Tag d;
  const auto set = [d](double value) { return hn::Set(d, value); };
  const auto center = [&](Vector position, double extent, double perCell) {
    return hn::Trunc(hn::Add(hn::Mul(hn::Add(position, set(extent)), set(perCell)), set(0.5)));
  };
  Place place;
  place.column = hn::Sub(center(u, g.uMax, g.perDu), set(g.nx));
  place.row = center(v, g.vMax, g.perDv);
  const Vector x = hn::Sub(hn::Mul(place.column, set(g.du)), u);
  const Vector y = hn::Sub(hn::Sub(hn::Mul(place.row, set(g.dv)), set(g.vMax)), v);
  place.clearX = hn::Le(hn::Abs(x), set(kClearly * g.du));
  place.clearY = hn::Le(hn::Abs(y), set(kClearly * g.dv));
  // With u above du/2 the conjugate point's x = c du + u is too large for every column c >= 0.
  place.inside = hn::And(hn::And(place.clearX, between(place.column, 1, g.columns - 1)),
                         hn::And(place.clearY, between(place.row, 0, g.rows - 1)));
  return place;
}

HWY_INLINE OtherPlace findOther(const GridGeometry& g, const Place& place) {
  const Tag d;
  const auto set = [d](double value) { return hn::Set(d, value); };
  // As above, and in column 2 whatever the rounding.
  const Mask alone =
      hn::Or(hn::Ge(place.column, set(2)), hn::And(place.clearX, hn::Ge(place.column, set(1))));
  const Mask outOfColumns = hn::Gt(place.column, set(g.columns - 1));
  const Mask inRows = between(place.row, 0, g.rows - 1);
  const Mask far = hn::Or(hn::Gt(place.column, set(g.columns)), hn::Not(between(place.row, -1, g.rows)));
  const Mask beside = hn::Or(hn::And(place.clearX, outOfColumns), hn::AndNot(inRows, place.clearY));
  const Mask opposite = hn::AndNot(hn::Eq(place.row, set(g.ny)), between(place.row, 1, g.rows - 1));
  const Mask clear = hn::And(place.clearX, place.clearY);
  return {hn::And(alone, hn::Or(far, beside)),
          hn::And(clear, hn::And(hn::Eq(place.column, hn::Zero(d)), opposite))};
}

/// WorkGrid::Layout::cell in doubles, which hold these numbers exactly. With c = h w cells in a tile it is
///     (tileRow · tilesPerRow + tileColumn) · c + (row − tileRow · h) · w + column − tileColumn · w.
HWY_INLINE Vector cellNumber(const WorkGrid::Layout& layout, Vector row, Vector column) {
  const Tag d;
  const auto set = [d](double value) { return hn::Set(d, value); };
  constexpr double kWidth = WorkGrid::kTileColumns;
  constexpr double kCells = WorkGrid::kTileCells;
  const Vector tileRow = hn::Floor(hn::Mul(row, set(1.0 / WorkGrid::kTileRows)));
  const Vector tileColumn = hn::Floor(hn::Mul(column, set(1.0 / kWidth)));
  const Vector inRow = hn::MulAdd(row, set(kWidth), column);
  const Vector inTile = hn::MulAdd(tileColumn, set(kCells - kWidth), inRow);
  return hn::MulAdd(tileRow, set((layout.tilesPerRow - 1) * kCells), inTile);
}

/// What the points add to their cells.
HWY_INLINE void storeSums(Vector weight, Vector re, Vector im, WorkGrid::Cell* sums) {
  const Tag d;
  hn::StoreInterleaved4(weight, hn::Mul(weight, re), hn::Mul(weight, im), hn::Set(d, 1.0), d, &sums->weight);
}

/// One vector of points: the one at `i` and those behind it.
HWY_INLINE void searchVector(const GridGeometry& g, const WorkGrid::Layout& layout, PointList& points,
                             std::size_t i) {
  const Tag d;
  const hn::Rebind<std::int32_t, Tag> di;
  // Of the point and its conjugate the one with u >= 0.
  const Vector u = hn::Load(d, points.u + i);
  const Vector v = hn::Load(d, points.v + i);
  const Mask conjugate = hn::Lt(u, hn::Zero(d));
  const Place place = find(g, hn::Abs(u), hn::IfThenElse(conjugate, hn::Neg(v), v));
  Vector cell = cellNumber(layout, place.row, place.column);
  if (!hn::AllTrue(d, place.inside)) {
    const OtherPlace other = findOther(g, place);
    const Vector alone =
        hn::IfThenElse(other.nowhere, hn::Set(d, PointList::kNoCell), hn::Set(d, PointList::kUnclear));
    const Vector outside = hn::IfThenElse(other.twins, hn::Sub(hn::Set(d, PointList::kTwins), cell), alone);
    cell = hn::IfThenElse(place.inside, cell, outside);
  }
  hn::Store(hn::DemoteTo(di, cell), di, points.cell + i);
  const Vector im = hn::Load(d, points.im + i);
  storeSums(hn::Load(d, points.weight + i), hn::Load(d, points.re + i),
            hn::IfThenElse(conjugate, hn::Neg(im), im), points.sums + i);
}

void searchAll(const GridGeometry& g, PointList& points) {
  const WorkGrid::Layout layout(g);
  // Places behind the last point hold older points; what is found for them is not used.
  for (std::size_t i = 0; i < points.count; i += hn::Lanes(Tag())) searchVector(g, layout, points, i);
}

/// Positions of the points of one frequency along one direction of the grid, in cells from the first cell's
/// lower edge. find() rounds otherwise: by less than 2^-36 on grids of up to 2^13 cells in a direction, which
/// ABMakeParameters::isUsableColumns and isUsableRows see to.
struct Positions {
  Positions(double frequency, double perCell, double extent)
      : perSecond(frequency * perCell), first(extent * perCell + 0.5) {}
  [[nodiscard]] HWY_INLINE Vector of(Vector seconds) const {
    const Tag d;
    return hn::MulAdd(seconds, hn::Set(d, perSecond), hn::Set(d, first));
  }
  double perSecond, first;
};

/// Whether positions in these cells are far enough from their edges for find() to call them clear.
HWY_INLINE Mask isClear(Vector position, Vector cell) {
  const Tag d;
  const Vector offCenter = hn::Sub(hn::Sub(position, cell), hn::Set(d, 0.5));
  return hn::Le(hn::Abs(offCenter), hn::Set(d, 0.5 - 0x1p-29));
}

void searchRead(const GridGeometry& g, const Stretch& stretch, const Stretch::Means& means, double frequency,
                PointList& points) {
  const Tag d;
  const hn::Rebind<float, Tag> df;
  const hn::Rebind<std::int32_t, Tag> di;
  const WorkGrid::Layout layout(g);
  const Positions along(frequency, g.perDu, g.uMax);
  const Positions across(frequency, g.perDv, g.vMax);
  points.count = stretch.records;
  for (std::size_t i = 0; i < points.count; i += hn::Lanes(d)) {
    const Vector u = hn::LoadU(d, stretch.u + i);
    const Vector v = hn::LoadU(d, stretch.v + i);
    const Vector weight = hn::PromoteTo(d, hn::LoadU(df, means.weight + i));
    const Vector re = hn::PromoteTo(d, hn::LoadU(df, means.re + i));
    const Vector im = hn::PromoteTo(d, hn::LoadU(df, means.im + i));
    // Of a point and its conjugate the one with u >= 0; u = -0 is not in a column that counts here.
    const Vector sign = hn::And(u, hn::SignBit(d));
    const Vector x = along.of(hn::Abs(u));
    const Vector y = across.of(hn::Xor(v, sign));
    const Vector right = hn::Trunc(x);
    const Vector column = hn::Sub(right, hn::Set(d, g.nx));
    const Vector row = hn::Trunc(y);
    const Mask inColumns = hn::And(isClear(x, right), between(column, 1, g.columns - 1));
    const Mask inRows = hn::And(isClear(y, row), between(row, 0, g.rows - 1));
    const Mask usable = hn::Gt(weight, hn::Zero(d));
    if (hn::AllTrue(d, hn::And(usable, hn::And(inColumns, inRows)))) [[likely]] {
      hn::Store(hn::DemoteTo(di, cellNumber(layout, row, column)), di, points.cell + i);
      storeSums(weight, re, hn::Xor(im, sign), points.sums + i);
      continue;
    }
    hn::Store(hn::Mul(u, hn::Set(d, frequency)), d, points.u + i);
    hn::Store(hn::Mul(v, hn::Set(d, frequency)), d, points.v + i);
    hn::Store(weight, d, points.weight + i);
    hn::Store(re, d, points.re + i);
    hn::Store(im, d, points.im + i);
    searchVector(g, layout, points, i);
    for (std::size_t n = i; n < i + hn::Lanes(d); ++n)
      if (points.weight[n] == 0) points.cell[n] = PointList::kNoCell;
  }
}

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(searchAll);
HWY_EXPORT(searchRead);

void searchCells(const GridGeometry& geometry, PointList& points) {
  HWY_DYNAMIC_DISPATCH(searchAll)(geometry, points);
}

void searchCells(const GridGeometry& geometry, const Stretch& stretch, std::size_t ifIndex, double frequency,
                 PointList& points) {
  HWY_DYNAMIC_DISPATCH(searchRead)(geometry, stretch, stretch.ifs[ifIndex], frequency, points);
}

}  // namespace lumo

#endif
