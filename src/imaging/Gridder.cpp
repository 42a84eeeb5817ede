// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/Gridder.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

#include "imaging/UniformWeighting.h"
#include "io/AUVXFile.h"

namespace lumo {

namespace {

/// Rows of tiles that a thread folds at a time.
constexpr std::int32_t kFoldedTogether = 4;

/// f^0 .. f^(count−1), each the one before times f.
std::vector<double> powersOf(double f, std::size_t count) {
  std::vector<double> powers(count, 1.0);
  for (std::size_t k = 1; k < count; ++k) powers[k] = powers[k - 1] * f;
  return powers;
}

}  // namespace

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

Gridder::Gridder(const ABMakeParameters& parameters, const VisibilityInputs& inputs,
                 const GriddingSettings& settings, const RunIndicators& indicators)
    : parameters_(parameters),
      inputs_(inputs),
      settings_(settings),
      indicators_(indicators),
      geometry_(parameters),
      adder_(makePointAdder(parameters, geometry_)),
      taper_(makeTaper(parameters)) {}

int Gridder::fail(Status status) {
  status_ = std::move(status);
  return 0;
}

std::vector<PhaseTime> Gridder::phases() const {
  const BatchGridder::Seconds batches = batches_ != nullptr ? batches_->seconds() : BatchGridder::Seconds();
  std::vector<PhaseTime> phases{
      {"prepare", prepareSeconds_}, {"read", batches.read}, {"add", batches.add}, {"fold", foldSeconds_}};
  if (parameters_.weightingMode == kUniformWeighting) phases.emplace_back("weight", weightSeconds_);
  return phases;
}

bool Gridder::prepare(SpectralGridSet& grids) {
  const PhaseTimer timer(prepareSeconds_);
  if (adder_ == nullptr || taper_ == nullptr)
    return fail({StatusCode::kInvalidValue, "the kernel and taper types must lie in 1..4"}) != 0;
  if (!(geometry_.uMax > 0 && geometry_.vMax > 0 && std::isfinite(geometry_.perDu) &&
        std::isfinite(geometry_.perDv)))
    return fail({StatusCode::kNoData, "the data have no extent in u or in v: there is nothing to image"}) !=
           0;
  if (!WorkGrid::Layout(geometry_).fits())
    return fail({StatusCode::kOutOfMemory, "the grids of this map size are too large"}) != 0;
  const auto rows = static_cast<std::uint32_t>(geometry_.rows);
  const auto columns = static_cast<std::uint32_t>(geometry_.columns);
  grids.resize(settings_.order, rows, columns);
  if (parameters_.weightingMode == kUniformWeighting) cumulative_.resize(rows, columns);
  maker_ = std::make_unique<PointMaker>(parameters_, *taper_);
  team_ = std::make_unique<ThreadTeam>(std::max(settings_.threads, 1));
  batches_ = std::make_unique<BatchGridder>(*maker_, *adder_, indicators_, *team_, pool_);
  together_ = BatchGridder::mostTogether(geometry_, team_->size(), settings_.workGridBytes);
  return true;
}

int Gridder::run(SpectralGridSet& grids) {
  if (!prepare(grids)) return 0;
  indicators_.setText("Gridding.  Working...");
  indicators_.resetBar(indicators_.readingBar);

  AProgress fileProgress(indicators_.fileBar, inputs_.count());
  for (std::int32_t i = 0; i < inputs_.count(); ++i) {
    fileProgress.SetPos(i + 1);
    if (gridFile(i, grids) == 0) return 0;
  }
  workGrids_.clear();
  if (parameters_.weightingMode == kUniformWeighting) {
    const PhaseTimer timer(weightSeconds_);
    applyUniformWeighting(parameters_, cumulative_, grids);
  }
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
  std::vector<int> rows;
  for (int row = 0; row < table.GetFreqSels(); ++row)
    if (inputs_.selections[index](row) != 0) rows.push_back(row);
  AProgress progress(indicators_.frequencyBar, static_cast<double>(table.GetIFs()) * table.GetFreqSels());
  index_.clear();
  const std::size_t all = rows.size() * static_cast<std::size_t>(table.GetIFs());
  for (std::size_t done = 0; done < all;) {
    if (done != 0 && rows.size() > 1 && index_.empty()) index_.read(file, indicators_.cancel);
    const IfBatch batch = nextBatch(index, rows, done);
    prepareWorkGrids(batch);
    progress.SetPos(static_cast<double>(done + 1));
    const std::size_t gridded = batches_->run(file, batch, settings_.workGridBytes, workGrids_);
    if (Status intact = file.intact(); !intact.ok()) return fail(std::move(intact));
    if (gridded == 0) return fail({StatusCode::kCancelled, "cancelled while gridding"});
    fold(batch, gridded, grids);
    progress.SetPos(static_cast<double>(done += gridded));
    if (gridded < batch.count()) together_ = gridded;
  }
  return 1;
}

/// What follows the first `done` IFs of the selections in these rows of the file's frequency table.
IfBatch Gridder::nextBatch(std::int32_t index, const std::vector<int>& rows, std::size_t done) const {
  const AUVXFqTbl& table = inputs_.tables[index];
  const auto ifs = static_cast<std::size_t>(table.GetIFs());
  const std::size_t first = done % ifs;
  IfBatch batch;
  batch.sourceId = inputs_.sources[index];
  batch.mix = inputs_.mixes[index];
  batch.first = static_cast<int>(first);
  batch.ifs = std::min(together_, ifs - first);
  batch.index = index_.empty() ? nullptr : &index_;
  const std::size_t most = first == 0 ? std::max<std::size_t>(together_ / ifs, 1) : 1;
  for (std::size_t n = done / ifs; n < rows.size() && batch.selections.size() < most; ++n) {
    // Groups hold the low byte of an ID.
    const auto id = static_cast<std::int8_t>(table.GetFreqSelID(rows[n]));
    if (std::count(batch.selections.begin(), batch.selections.end(), id) != 0) break;
    batch.selections.push_back(id);
    for (std::size_t i = 0; i < batch.ifs; ++i)
      batch.frequencies.push_back(table.GetFreq(0, static_cast<int>(first + i), rows[n]));
  }
  return batch;
}

void Gridder::prepareWorkGrids(const IfBatch& batch) {
  const int parts = batches_->partsFor(batch.ifs);
  if (!workGrids_.empty() && workGrids_.front().parts() != parts) workGrids_.clear();
  while (workGrids_.size() < batch.count()) workGrids_.emplace_back(geometry_, parts, pool_);
}

void Gridder::fold(const IfBatch& batch, std::size_t count, SpectralGridSet& grids) {
  const PhaseTimer timer(foldSeconds_);
  const WorkGrid::Target target(grids, cumulative_.size() != 0 ? &cumulative_ : nullptr);
  std::vector<std::vector<double>> powers;
  for (std::size_t i = 0; i < count; ++i)
    powers.push_back(
        powersOf(batch.frequencies[i] * (1 / settings_.referenceFrequency) - 1, target.beams.size()));
  const std::int32_t rows = WorkGrid::Layout(geometry_).tileRows;
  const std::int32_t stretches = (rows + kFoldedTogether - 1) / kFoldedTogether;
  team_->run(static_cast<std::size_t>(stretches), [&](std::size_t stretch, std::size_t /*member*/) {
    const std::int32_t first = static_cast<std::int32_t>(stretch) * kFoldedTogether;
    // All IFs while the spectral grids' rows are in the cache.
    for (std::int32_t row = first; row < std::min(first + kFoldedTogether, rows); ++row)
      for (std::size_t i = 0; i < count; ++i) workGrids_[i].foldTileRow(row, powers[i], target);
  });
  for (std::size_t i = 0; i < count; ++i) workGrids_[i].release();
}

}  // namespace lumo
