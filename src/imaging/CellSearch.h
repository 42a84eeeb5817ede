// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "imaging/GridGeometry.h"
#include "imaging/PointList.h"
#include "imaging/Stretch.h"

namespace lumo {

/// Finds for every point the cell that a pill box of one cell reaches from it or from its conjugate point,
/// and what it adds there, with the operations and roundings of Gridder's loops: center = trunc((u + Umax) /
/// du + 0.5), then the test −du/2 <= c·du − u < du/2 on the same doubles.
///
/// Almost every point lies clearly inside one cell, and there its neighbours need no test. In column 0 the
/// conjugate point lies as clearly inside another one. The rest is marked PointList::kUnclear and left to the
/// plain loops: points within 2^-30 cells of a cell's edge, and in column 0 those whose conjugate point is
/// off the grid or in the same cell. The bits do not depend on the processor's instruction set.
void searchCells(const GridGeometry& geometry, PointList& points);

/// The same for the records of a stretch and one of its IFs at `frequency`, Hz, whose points are as they were
/// read: PointMaker::make and searchCells in one, but that selections are left alone, u, v, weight, re and im
/// too where a point falls into one cell, and that points of weight 0 stay in their places, without a cell.
void searchCells(const GridGeometry& geometry, const Stretch& stretch, std::size_t ifIndex, double frequency,
                 PointList& points);

}  // namespace lumo
