// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/Gridder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/Units.h"
#include "imaging/UniformWeighting.h"
#include "io/AUVXFile.h"
#include "io/AUVXGroup.h"
#include "io/AUVXRead_FqS.h"
#include "io/AUVXVisibility.h"

namespace lumo {

namespace {

/// The mean of an IF's usable channels, rounded to single precision.
struct ChannelMean {
  float re = 0, im = 0, weight = 0;
  int count = 0;
};

ChannelMean averageChannels(const AUVXVisibility& visibility, const AStokesMix& mix, int ifIndex) {
  double re = 0, im = 0, weight = 0;
  ChannelMean mean;
  for (int channel = 0; channel < visibility.channels(); ++channel) {
    const AUVXComplex value = mix.GetVisible(&visibility(ifIndex, channel, 0), 0);
    if (!value.isUsable()) continue;
    re += value.Re();
    im += value.Im();
    weight += value.Weight();
    ++mean.count;
  }
  if (mean.count == 0) return mean;
  mean.re = static_cast<float>(re / mean.count);
  mean.im = static_cast<float>(im / mean.count);
  mean.weight = static_cast<float>(weight / mean.count);
  return mean;
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

}  // namespace

std::unique_ptr<AB3DFunc> makeKernel(const ABMakeParameters& p, const GridGeometry& g) {
  const double widthU = p.kernelWidthU * g.du;
  const double widthV = p.kernelWidthV * g.dv;
  switch (p.kernelType) {
    case kKernelPillBox:
      return std::make_unique<APillBox3DFunc>(g.du, g.dv);
    case kKernelGauss:
      return std::make_unique<AGauss3DFunc>(widthU, widthV);
    case kKernelLorentz:
      return std::make_unique<ALorentz3DFunc>(widthU, widthV);
    case kKernelHat:
      return std::make_unique<AHat3DFunc>(widthU, widthV);
    default:
      return nullptr;
  }
}

std::unique_ptr<AB3DFunc> makeTaper(const ABMakeParameters& p) {
  switch (p.taperType) {
    case kTaperNone:
      return std::make_unique<APillBox3DFunc>(0.0, 0.0);
    case kTaperGauss:
      return std::make_unique<AGauss3DFunc>(p.taperWidthU, p.taperWidthV);
    case kTaperLorentz:
      return std::make_unique<ALorentz3DFunc>(p.taperWidthU, p.taperWidthV);
    // The first width serves both directions; this taper is always round.
    case kTaperTh:
      return std::make_unique<ATH3DFunc>(p.taperWidthU, p.taperWidthU, p.taperParam3, p.taperParam4);
    default:
      return nullptr;
  }
}

/// IFs first .. first+count−1 of one frequency selection.
struct Gridder::IfBatch {
  int selection = 0;
  int first = 0;
  int count = 0;
};

Gridder::Gridder(const ABMakeParameters& parameters, const VisibilityInputs& inputs,
                 const GriddingSettings& settings, const RunIndicators& indicators)
    : parameters_(parameters),
      inputs_(inputs),
      settings_(settings),
      indicators_(indicators),
      geometry_(parameters),
      kernel_(makeKernel(parameters, geometry_)),
      taper_(makeTaper(parameters)),
      phaseX_(parameters.shiftX * kPhasePerArcsec),
      phaseY_(parameters.shiftY * kPhasePerArcsec) {
  if (kernel_ == nullptr) return;
  supportU_ = std::trunc(kernel_->halfWidthX() / geometry_.du + 0.7);
  supportV_ = std::trunc(kernel_->halfWidthY() / geometry_.dv + 0.7);
}

int Gridder::fail(Status status) {
  status_ = std::move(status);
  return 0;
}

int Gridder::run(SpectralGridSet& grids) {
  if (kernel_ == nullptr || taper_ == nullptr)
    return fail({StatusCode::kInvalidValue, "the kernel and taper types must lie in 1..4"});
  if (!(geometry_.uMax > 0 && geometry_.vMax > 0 && std::isfinite(geometry_.perDu) &&
        std::isfinite(geometry_.perDv)))
    return fail({StatusCode::kNoData, "the data have no extent in u or in v: there is nothing to image"});
  grids.resize(settings_.order, static_cast<std::uint32_t>(geometry_.rows),
               static_cast<std::uint32_t>(geometry_.columns));
  const bool uniform = parameters_.weightingMode == kUniformWeighting;
  if (uniform)
    cumulative_.resize(static_cast<std::uint32_t>(geometry_.rows),
                       static_cast<std::uint32_t>(geometry_.columns));
  indicators_.setText("Gridding.  Working...");
  indicators_.resetBar(indicators_.readingBar);

  AProgress fileProgress(indicators_.fileBar, inputs_.count());
  for (std::int32_t i = 0; i < inputs_.count(); ++i) {
    fileProgress.SetPos(i + 1);
    if (gridFile(i, grids) == 0) return 0;
  }
  workGrids_.clear();
  if (uniform) applyUniformWeighting(parameters_, cumulative_, grids);
  cumulative_.clear();

  indicators_.setText("");
  indicators_.resetBar(indicators_.readingBar);
  indicators_.resetBar(indicators_.frequencyBar);
  indicators_.resetBar(indicators_.fileBar);
  return 1;
}

Status Gridder::checkFile(const AUVXFile& file, std::int32_t index) const {
  const AUVXFqTbl& table = inputs_.tables[index];
  const UvxShape& shape = file.shape();
  if (static_cast<int>(shape.ifs) != table.GetIFs() ||
      static_cast<int>(shape.channels) != table.GetChannels() || !inputs_.mixes[index].fits(shape.products))
    return {StatusCode::kBadFormat, "was changed since it was listed: its IFs, channels or products differ",
            file.name()};
  return {};
}

int Gridder::gridFile(std::int32_t index, SpectralGridSet& grids) {
  AUVXFile file;
  if (file.Open(inputs_.names[index], AFile::kRead) == 0) return fail(file.status());
  const Status checked = checkFile(file, index);
  if (!checked.ok()) return fail(checked);

  const AUVXFqTbl& table = inputs_.tables[index];
  const int ifs = table.GetIFs();
  const auto together = static_cast<int>(std::clamp<std::uint64_t>(
      settings_.workGridBytes / WorkGrid::bytes(geometry_), 1, static_cast<std::uint64_t>(ifs)));
  while (static_cast<int>(workGrids_.size()) < together) workGrids_.emplace_back(geometry_);

  AProgress frequencyProgress(indicators_.frequencyBar, static_cast<double>(ifs) * table.GetFreqSels());
  int advanced = 0;
  for (int selection = 0; selection < table.GetFreqSels(); ++selection) {
    if (inputs_.selections[index](selection) == 0) continue;
    for (int first = 0; first < ifs; first += together) {
      const IfBatch batch{selection, first, std::min(together, ifs - first)};
      advanced += batch.count;
      frequencyProgress.SetPos(advanced);
      if (gridBatch(file, index, batch) == 0) return 0;
      for (int i = 0; i < batch.count; ++i) {
        const double f = table.GetFreq(0, first + i, selection) * (1 / settings_.referenceFrequency) - 1;
        workGrids_[static_cast<std::size_t>(i)].fold(f, grids,
                                                     cumulative_.size() != 0 ? &cumulative_ : nullptr);
      }
    }
  }
  return 1;
}

int Gridder::gridBatch(AUVXFile& file, std::int32_t index, const IfBatch& batch) {
  const AUVXFqTbl& table = inputs_.tables[index];
  const AStokesMix& mix = inputs_.mixes[index];
  std::vector<double> frequencies;
  for (int i = 0; i < batch.count; ++i)
    frequencies.push_back(table.GetFreq(0, batch.first + i, batch.selection));

  AUVXVisibility visibility(file);
  AUVXRead_FqS reader(&file, inputs_.sources[index], table.GetFreqSelID(batch.selection),
                      indicators_.readingBar);
  AUVXGroup group;
  int flag = 0;
  while (reader.GetUVGVis(group, visibility, flag) != 0) {
    if (indicators_.cancelled()) return fail({StatusCode::kCancelled, "cancelled while gridding"});
    if (flag != 0) continue;
    for (int i = 0; i < batch.count; ++i) {
      const ChannelMean mean = averageChannels(visibility, mix, batch.first + i);
      if (mean.count == 0) continue;
      const double u = group.u() * frequencies[static_cast<std::size_t>(i)];
      const double v = group.v() * frequencies[static_cast<std::size_t>(i)];
      double weight = taper_->value(u, v);
      if (parameters_.useVisWeights != 0) weight = weight * mean.weight;
      addVisibility(workGrids_[static_cast<std::size_t>(i)], u, v, weight, mean.re, mean.im);
    }
  }
  return 1;
}

void Gridder::addVisibility(WorkGrid& grid, double u, double v, double weight, double re, double im) const {
  double turnedRe = re;
  double turnedIm = im;
  if (phaseX_ != 0 || phaseY_ != 0) {
    const double phase = u * phaseX_ + v * phaseY_;
    const double c = std::cos(phase);
    const double s = std::sin(phase);
    turnedRe = re * c + im * s;
    turnedIm = im * c - re * s;
  }
  addPoint(grid, u, v, weight, turnedRe, turnedIm);
  addPoint(grid, -u, -v, weight, turnedRe, -turnedIm);
}

void Gridder::addPoint(WorkGrid& grid, double u, double v, double weight, double re, double im) const {
  const GridGeometry& g = geometry_;
  const Footprint columns((u + g.uMax) * g.perDu + 0.5, g.nx, supportU_, g.columns);
  const Footprint rows((v + g.vMax) * g.perDv + 0.5, 0, supportV_, g.rows);
  for (std::int32_t row = rows.first; row <= rows.last; ++row) {
    const std::size_t start = static_cast<std::size_t>(row) * static_cast<std::size_t>(g.columns);
    for (std::int32_t column = columns.first; column <= columns.last; ++column) {
      const double k = kernel_->value(column * g.du - u, row * g.dv - g.vMax - v);
      // Adding 0 · weight would change no sum: the cell stays untouched and costs nothing when folding.
      if (k != 0) grid.add(start + static_cast<std::size_t>(column), k, weight, re, im);
    }
  }
}

}  // namespace lumo
