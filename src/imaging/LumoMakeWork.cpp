// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/LumoMakeWork.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <new>
#include <utility>

#include "core/Units.h"
#include "imaging/BeamMomentAccumulator.h"
#include "imaging/Fft.h"
#include "imaging/GridCorrection.h"
#include "imaging/GridGeometry.h"
#include "imaging/Gridder.h"
#include "io/AUVXHeader.h"
#include "io/AUVXSources.h"

namespace lumo {

namespace {

bool namesJansky(std::string unit) {
  std::transform(unit.begin(), unit.end(), unit.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return unit.find("JY") != std::string::npos;
}

std::uint32_t savedLength(std::uint32_t imageLength) {
  return 1u << transformExponent(imageLength);
}

/// The image's zero-lag value.
double centreValue(const AMatrix<double>& image) {
  return image(savedLength(image.rows()) / 2, savedLength(image.columns()) / 2);
}

void scaleImage(AMatrix<double>& image, double factor) {
  for (std::size_t i = 0; i < image.size(); ++i) image.data()[i] *= factor;
}

}  // namespace

/// Pixel sizes and axis ranges of the products, arcseconds.
struct LumoMakeWork::Geometry {
  explicit Geometry(const ABMakeParameters& p)
      : grid(p),
        dx(kArcsecPerRadian / (2 * p.uvScaleU * p.uvLimitU)),
        dy(kArcsecPerRadian / (2 * p.uvScaleV * p.uvLimitV)) {
    beam.xMin = -grid.nx * dx;
    beam.xMax = (grid.nx - 1) * dx;
    beam.yMin = -grid.ny * dy;
    beam.yMax = (grid.ny - 1) * dy;
    const double c = savedLength(static_cast<std::uint32_t>(2 * grid.columns));
    const double r = savedLength(static_cast<std::uint32_t>(grid.rows));
    dirty.xMin = -grid.nx * dx + (c * dx * 0.25 + p.shiftX);
    dirty.xMax = (grid.nx - 1) * dx + (p.shiftX - c * dx * 0.25);
    dirty.yMin = -grid.ny * dy + (r * dy * 0.25 + p.shiftY);
    dirty.yMax = (grid.ny - 1) * dy + (p.shiftY - r * dy * 0.25);
  }
  GridGeometry grid;
  double dx, dy;
  TMinMax beam, dirty;
};

LumoMakeWork::LumoMakeWork(std::int32_t order)
    : order_(std::max(order, 1)), dirtyMapNames_(order_), beamNames_(2 * order_ - 1) {}

void LumoMakeWork::SetInputs(const ABMakeParameters* parameters, const VisibilityInputs& inputs) {
  parameters_ = parameters;
  inputs_ = inputs;
}

std::vector<PhaseTime> LumoMakeWork::phases() const {
  return {{"grid", seconds_.grid, gridPhases_},
          {"beam", seconds_.beam},
          {"transform", seconds_.transform},
          {"write", seconds_.write}};
}

int LumoMakeWork::fail(Status status) {
  status_ = std::move(status);
  return 0;
}

int LumoMakeWork::Run(const CancelFlag* cancel, StatusText* statusText, ProgressBar* readingBar,
                      ProgressBar* frequencyBar, ProgressBar* fileBar) try {
  indicators_ = {cancel, statusText, readingBar, frequencyBar, fileBar};
  if (parameters_ == nullptr || inputs_.count() == 0)
    return fail({StatusCode::kNoData, "no visibility file is listed: there is nothing to image"});
  SpectralGridSet grids;
  {
    const PhaseTimer timer(seconds_.grid);
    if (GridVisibilities(*parameters_, grids) == 0) return 0;
  }
  AMapHeader header;
  Status status = makeHeader(header);
  if (status.ok()) {
    const PhaseTimer timer(seconds_.beam);
    status = estimateBeam(grids, header);
  }
  if (!status.ok()) return fail(std::move(status));
  double scale = 0;
  if (makeBeams(grids, header, scale) == 0 || makeDirtyMaps(grids, header, scale) == 0) return 0;
  indicators_.setText("");
  return 1;
} catch (const std::bad_alloc&) {
  return fail({StatusCode::kOutOfMemory, "the grids of this map size and order do not fit in memory"});
}

Status LumoMakeWork::makeHeader(AMapHeader& header) const {
  AUVXFile file;
  if (file.Open(inputs_.names[0], AFile::kRead) == 0) return file.status();
  const AUVXSources sources(file);
  if (const AUVXSourceItem* source = sources.ForID(inputs_.sources[0])) {
    header.sourceName = source->name;
    header.frame = source->frame;
    header.rightAscension = source->rightAscension;
    header.declination = source->declination;
    header.epoch = source->epoch;
  }
  header.unit = namesJansky(AUVXHeader(file).unit) ? "Jy/Beam" : "";
  header.stokes = inputs_.mixes[0].name();
  header.frequency = referenceFrequency_;
  header.bandwidth = bandwidth_;
  header.history = history_;
  return {};
}

Status LumoMakeWork::estimateBeam(const SpectralGridSet& grids, AMapHeader& header) const {
  const GridGeometry geometry(*parameters_);
  BeamMomentAccumulator moments;
  const AMatrix<Complex>& sampling = grids.beams[0];
  for (std::int32_t r = 0; r < geometry.rows; ++r) {
    for (std::int32_t c = 0; c < geometry.columns; ++c) {
      const double weight = sampling(static_cast<std::uint32_t>(r), static_cast<std::uint32_t>(c)).real();
      if (weight == 0) continue;  // It would change no sum.
      const double u = geometry.u(c);
      const double v = geometry.v(r);
      moments.add(u, v, weight);
      if (u != 0) moments.add(-u, -v, weight);
    }
  }
  if (moments.sumOfWeights() == 0)
    return {StatusCode::kNoData, "no usable visibility: every one is flagged, rejected or off the grid"};
  if (moments.solve() == 0)
    return {StatusCode::kNoData, "the uv coverage has no extent in one direction: no beam can be estimated"};
  header.beamMajor = moments.firstWidth();
  header.beamMinor = moments.secondWidth();
  header.beamPa = moments.positionAngle();
  return {};
}

int LumoMakeWork::makeBeams(SpectralGridSet& grids, AMapHeader& header, double& scale) {
  const Geometry geometry(*parameters_);
  header.kind = MapKind::kBeam;
  AMatrix<double> image;
  for (std::int32_t k = 0; k < beamCount(); ++k) {
    {
      const PhaseTimer timer(seconds_.transform);
      if (FourierTransformGrid(grids.beams[k], image, -1, 1.0, 1.0) == 0) return 0;
      ApplyGridCorrection(image, geometry.beam, *parameters_);
      if (k == 0) {
        // The widths enter as sigmas times two: the value is four times a Gaussian's area, as every reader of
        // these maps expects.
        constexpr double kFactor = 0.8493218002880191;
        header.beamArea = (header.beamMajor * kFactor) * kTwoPi * (header.beamMinor * kFactor) /
                          (geometry.dy * geometry.dx);
        scale = 1 / centreValue(image);
        if (!std::isfinite(scale))
          return fail({StatusCode::kNoData, "the dirty beam is 0 at its centre: no usable visibility"});
      }
      scaleImage(image, scale);
    }
    SaveBeam(header, geometry.beam, image, beamNames_[k]);
  }
  return 1;
}

int LumoMakeWork::makeDirtyMaps(SpectralGridSet& grids, AMapHeader& header, double scale) {
  const Geometry geometry(*parameters_);
  header.kind = MapKind::kIntensity;
  AMatrix<double> image;
  for (std::int32_t k = 0; k < order_; ++k) {
    {
      const PhaseTimer timer(seconds_.transform);
      if (FourierTransformGrid(grids.dirty[k], image, -1, 1.0, 1.0) == 0) return 0;
      scaleImage(image, scale);
      ApplyGridCorrection(image, geometry.beam, *parameters_);
    }
    SaveDirtyMap(header, geometry.dirty, image, dirtyMapNames_[k]);
  }
  return 1;
}

int LumoMakeWork::GridVisibilities(const ABMakeParameters& parameters, SpectralGridSet& grids) {
  Gridder gridder(parameters, inputs_, {order_, referenceFrequency_, workGridBytes_, threads_}, indicators_);
  const int gridded = gridder.run(grids);
  gridPhases_ = gridder.phases();
  return gridded != 0 ? 1 : fail(gridder.status());
}

int LumoMakeWork::FourierTransformGrid(AMatrix<Complex>& grid, AMatrix<double>& image, int direction,
                                       double columnScale, double rowScale) {
  const TransformSettings settings{direction, columnScale, rowScale};
  if (team_ == nullptr) team_ = std::make_unique<ThreadTeam>(std::max(threads_, 1));
  if (transform_ == nullptr || transform_->settings() != settings)
    transform_ = std::make_unique<GridTransform>(settings, *team_);
  if (transform_->run(grid, image, indicators_) != 0) return 1;
  return fail({StatusCode::kCancelled, "cancelled while transforming"});
}

int LumoMakeWork::ComputeCorrectorX(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range) {
  return computeCorrectorX(profile, kernel, range, indicators_);
}

int LumoMakeWork::ComputeCorrectorY(AArray<double>& profile, const AB3DFunc& kernel, const TMinMax& range) {
  return computeCorrectorY(profile, kernel, range, indicators_);
}

int LumoMakeWork::ApplyGridCorrection(AMatrix<double>& /*image*/, const TMinMax& /*range*/,
                                      const ABMakeParameters& /*parameters*/) {
  return 1;
}

void LumoMakeWork::SaveBeam(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
                            const std::string& name) {
  if (name.empty()) return;
  indicators_.setText("Save Beam map in file " + name + " ...");
  const auto rows = static_cast<std::int32_t>(savedLength(image.rows()));
  const auto columns = static_cast<std::int32_t>(savedLength(image.columns()));
  save(header, range, image, name, AMatrixRect(0, 0, rows - 1, columns - 1));
}

void LumoMakeWork::SaveDirtyMap(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
                                const std::string& name) {
  if (name.empty()) return;
  indicators_.setText("Save dirty map in file " + name + " ...");
  const auto rows = static_cast<std::int32_t>(savedLength(image.rows()));
  const auto columns = static_cast<std::int32_t>(savedLength(image.columns()));
  save(header, range, image, name,
       AMatrixRect(rows / 4, columns / 4, rows - rows / 4 - 1, columns - columns / 4 - 1));
}

void LumoMakeWork::save(const AMapHeader& header, const TMinMax& range, const AMatrix<double>& image,
                        const std::string& name, const AMatrixRect& rect) {
  const PhaseTimer timer(seconds_.write);
  const auto firstRow = static_cast<std::uint32_t>(rect.firstRow);
  const auto firstColumn = static_cast<std::uint32_t>(rect.firstColumn);
  AMatrix<float> single(static_cast<std::uint32_t>(rect.lastRow) - firstRow + 1,
                        static_cast<std::uint32_t>(rect.lastColumn) - firstColumn + 1);
  for (std::uint32_t r = 0; r < single.rows(); ++r) {
    const double* const from = &image(firstRow + r, firstColumn);
    std::transform(from, from + single.columns(), &single(r, 0),
                   [](double value) { return static_cast<float>(value); });
  }
  products_.push_back({name, writeMap(name, header, range, single)});
}

}  // namespace lumo
