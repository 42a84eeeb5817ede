// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/PointAdder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "imaging/AB3DFunc.h"
#include "imaging/CellSearch.h"
#include "imaging/CellSums.h"

namespace lumo {

namespace {

/// Half-width of a kernel in whole cells.
double support(double halfWidth, double cell) {
  return std::trunc(halfWidth / cell + 0.7);
}

/// First and last index of center − support .. center + support inside 0..size−1; empty when first > last.
/// Position and support stay doubles until they are cut: both may be far beyond what an index can hold.
struct Footprint {
  Footprint(double position, double offset, double support, std::int32_t size) {
    const double center = std::trunc(position) - offset;
    if (!(center + support >= 0 && center - support <= size - 1)) return;
    first = static_cast<std::int32_t>(std::max(center - support, 0.0));
    last = static_cast<std::int32_t>(std::min(center + support, size - 1.0));
  }
  std::int32_t first = 0;
  std::int32_t last = -1;
};

/// The visibility of one point, or its conjugate.
struct Sample {
  double u, v, weight, re, im;
};

/// Kernels that are functions of rho^2 = x^2/wx^2 + y^2/wy^2.
template <class Kernel>
struct RadialKernel {
  explicit RadialKernel(const Kernel& k) : kernel(k) {}
  [[nodiscard]] double termX(double x) const { return kernel.termX(x); }
  [[nodiscard]] double termY(double y) const { return kernel.termY(y); }
  [[nodiscard]] double value(double termX, double termY) const { return Kernel::ofRhoSquared(termX + termY); }
  Kernel kernel;
};

/// The pill box, with the coordinates themselves as terms.
struct BoxKernel {
  explicit BoxKernel(const APillBox3DFunc& k) : kernel(k) {}
  [[nodiscard]] double termX(double x) const { return x; }
  [[nodiscard]] double termY(double y) const { return y; }
  [[nodiscard]] double value(double x, double y) const { return kernel.value(x, y); }
  APillBox3DFunc kernel;
};

/// The plain loops over a footprint.
template <class Kernel>
class FootprintAdder : public PointAdder {
 public:
  FootprintAdder(const Kernel& kernel, const GridGeometry& geometry)
      : kernel_(kernel),
        geometry_(geometry),
        supportU_(support(kernel.kernel.halfWidthX(), geometry.du)),
        supportV_(support(kernel.kernel.halfWidthY(), geometry.dv)) {}

  [[nodiscard]] Reach reach() const override { return {supportU_, supportV_}; }

  void add(const PointList& points, const IfGrids& grids, int part, Scratch& scratch) const override {
    for (std::size_t i = 0; i < points.count; ++i)
      addBoth(points, i, grids[points.selection[i]], part, scratch);
  }

 protected:
  void addBoth(const PointList& points, std::size_t i, WorkGrid& grid, int part, Scratch& scratch) const {
    const double u = points.u[i];
    const double v = points.v[i];
    addSample({u, v, points.weight[i], points.re[i], points.im[i]}, grid, part, scratch);
    addSample({-u, -v, points.weight[i], points.re[i], -points.im[i]}, grid, part, scratch);
  }
  [[nodiscard]] const GridGeometry& geometry() const { return geometry_; }

 private:
  void addSample(const Sample& s, WorkGrid& grid, int part, Scratch& scratch) const {
    const GridGeometry& g = geometry_;
    const Footprint columns((s.u + g.uMax) * g.perDu + 0.5, g.nx, supportU_, g.columns);
    const Footprint rows((s.v + g.vMax) * g.perDv + 0.5, 0, supportV_, g.rows);
    if (columns.first > columns.last || rows.first > rows.last) return;
    if (grid.parts() > 1 && !reaches(rows, columns, grid, part)) return;
    const auto width = static_cast<std::size_t>(columns.last - columns.first) + 1;
    if (scratch.size() < 2 * width) scratch.resize(2 * width);
    double* const terms = scratch.data();
    double* const values = scratch.data() + width;
    for (std::size_t i = 0; i < width; ++i)
      terms[i] = kernel_.termX((columns.first + static_cast<std::int32_t>(i)) * g.du - s.u);
    const WorkGrid::Layout layout = grid.layout();
    const int parts = grid.parts();
    for (std::int32_t row = rows.first; row <= rows.last; ++row) {
      const double termY = kernel_.termY(row * g.dv - g.vMax - s.v);
      // The functions that kernels call leave no register alone: all calls first, then all sums.
      for (std::size_t i = 0; i < width; ++i) {
        const std::uint32_t cell = layout.cell(row, columns.first + static_cast<std::int32_t>(i));
        const bool mine = parts == 1 || WorkGrid::partOf(cell, parts) == part;
        values[i] = mine ? kernel_.value(terms[i], termY) : 0.0;
      }
      for (std::size_t i = 0; i < width; ++i) {
        const double k = values[i];
        // Adding 0 · weight would change no sum: the cell stays untouched and takes no memory.
        if (k == 0) continue;
        const std::uint32_t cell = layout.cell(row, columns.first + static_cast<std::int32_t>(i));
        const double kw = k * s.weight;
        grid.cell(cell, part).add({kw, kw * s.re, kw * s.im, k});
      }
    }
  }

  /// Whether one of the footprint's tiles belongs to the part.
  static bool reaches(const Footprint& rows, const Footprint& columns, const WorkGrid& grid, int part) {
    constexpr std::int32_t kRows = WorkGrid::kTileRows;
    constexpr std::int32_t kColumns = WorkGrid::kTileColumns;
    for (std::int32_t row = rows.first / kRows; row <= rows.last / kRows; ++row)
      for (std::int32_t column = columns.first / kColumns; column <= columns.last / kColumns; ++column)
        if (WorkGrid::partOf(grid.layout().cell(row * kRows, column * kColumns), grid.parts()) == part)
          return true;
    return false;
  }

  Kernel kernel_;
  GridGeometry geometry_;
  double supportU_, supportV_;
};

template <class Kernel>
std::unique_ptr<PointAdder> radial(const ABMakeParameters& p, const GridGeometry& g) {
  const Kernel kernel(p.kernelWidthU * g.du, p.kernelWidthV * g.dv);
  return std::make_unique<FootprintAdder<RadialKernel<Kernel>>>(RadialKernel<Kernel>(kernel), g);
}

/// The pill box of one cell: K is 1 in the cell where the point lies.
class PillBoxAdder final : public FootprintAdder<BoxKernel> {
 public:
  explicit PillBoxAdder(const GridGeometry& g) : FootprintAdder(BoxKernel(APillBox3DFunc(g.du, g.dv)), g) {}

  /// Its cells are searched one further, but only a point on their common edge has more than one.
  [[nodiscard]] Reach reach() const override { return {}; }

  void prepare(PointList& points) const override { searchCells(geometry(), points); }
  [[nodiscard]] bool prepareRead(const Stretch& stretch, std::size_t ifIndex, double frequency,
                                 PointList& points) const override {
    searchCells(geometry(), stretch, ifIndex, frequency, points);
    return true;
  }

  void add(const PointList& points, const IfGrids& grids, int part, Scratch& scratch) const override {
    if (grids.selections == 1)
      addAll(points, part, scratch, [&](std::size_t /*i*/) -> WorkGrid& { return *grids.first; });
    else
      addAll(points, part, scratch, [&](std::size_t i) -> WorkGrid& { return grids[points.selection[i]]; });
  }

 private:
  template <typename GridOf>
  void addAll(const PointList& points, int part, Scratch& scratch, const GridOf& gridOf) const {
    const int parts = gridOf(0).parts();
    // All cells are on their way from memory before the first is needed.
    WorkGrid::Cell* cells[PointList::kCapacity];
    if (parts > 1) {
      std::size_t chosen[PointList::kCapacity];
      const std::size_t count = choose(points, parts, part, chosen);
      for (std::size_t n = 0; n < count; ++n)
        cells[n] = find(points.cell[chosen[n]], gridOf(chosen[n]), part);
      for (std::size_t n = 0; n < count; ++n)
        addOne(points, chosen[n], cells[n], gridOf(chosen[n]), part, scratch);
    } else {
      for (std::size_t i = 0; i < points.count; ++i) cells[i] = find(points.cell[i], gridOf(i), part);
      for (std::size_t i = 0; (i = addSums(points.sums, {cells, points.count}, i)) < points.count; ++i)
        addOther(points, i, gridOf(i), part, scratch);
    }
  }

  /// Null for a value that is no cell.
  static WorkGrid::Cell* find(std::int32_t cell, WorkGrid& grid, int part) {
    if (cell < 0) [[unlikely]]
      return nullptr;
    WorkGrid::Cell* const found = &grid.cell(static_cast<std::uint32_t>(cell), part);
    __builtin_prefetch(found, 1);
    return found;
  }

  void addOne(const PointList& points, std::size_t i, WorkGrid::Cell* cell, WorkGrid& grid, int part,
              Scratch& scratch) const {
    if (cell != nullptr) [[likely]]
      cell->add(points.sums[i]);
    else
      addOther(points, i, grid, part, scratch);
  }

  /// A point that does not fall into one cell alone.
  void addOther(const PointList& points, std::size_t i, WorkGrid& grid, int part, Scratch& scratch) const {
    if (points.cell[i] <= PointList::kTwins)
      addTwins(points, i, grid, part);
    else if (points.cell[i] == PointList::kUnclear)
      addBoth(points, i, grid, part, scratch);
  }

  static void addTwins(const PointList& points, std::size_t i, WorkGrid& grid, int part) {
    const auto addTo = [&](std::uint32_t cell, const WorkGrid::Cell& sum) {
      if (grid.parts() == 1 || WorkGrid::partOf(cell, grid.parts()) == part) grid.cell(cell, part).add(sum);
    };
    const WorkGrid::Cell& sum = points.sums[i];
    const auto cell = static_cast<std::uint32_t>(PointList::kTwins - points.cell[i]);
    addTo(cell, sum);
    addTo(grid.layout().oppositeCell(cell), {sum.weight, sum.re, -sum.im, sum.kernel});
  }

  /// The points that have something to add to the part's cells. Which they are looks random to the processor:
  /// no branch.
  static std::size_t choose(const PointList& points, int parts, int part, std::size_t* chosen) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < points.count; ++i) {
      const std::int32_t cell = points.cell[i];
      const int owner = WorkGrid::partOf(static_cast<std::uint32_t>(cell), parts);
      chosen[count] = i;
      count += static_cast<std::size_t>(cell >= 0 ? owner == part : cell != PointList::kNoCell);
    }
    return count;
  }
};

}  // namespace

std::unique_ptr<PointAdder> makePointAdder(const ABMakeParameters& parameters, const GridGeometry& geometry) {
  switch (parameters.kernelType) {
    case kKernelPillBox:
      return std::make_unique<PillBoxAdder>(geometry);
    case kKernelGauss:
      return radial<AGauss3DFunc>(parameters, geometry);
    case kKernelLorentz:
      return radial<ALorentz3DFunc>(parameters, geometry);
    case kKernelHat:
      return radial<AHat3DFunc>(parameters, geometry);
    default:
      return nullptr;
  }
}

}  // namespace lumo
