// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/BatchGridder.h"

#include <algorithm>
#include <atomic>
#include <optional>

#include "core/MappedFile.h"
#include "core/PhaseTimer.h"
#include "imaging/ShareOut.h"

namespace lumo {

namespace {

/// Of the means of a block, for each thread: what fits its second-level cache beside the work grids' cells.
constexpr std::size_t kMeansBytes = std::size_t{384} << 10;
/// Stretches of a block at most, for each thread.
constexpr std::size_t kMostStretches = 16;

/// Steps in which a pass is shown; a percent is never skipped.
constexpr std::uint64_t kProgressSteps = 128;

/// IFs for each thread from which on dealing out whole IFs keeps the threads busy.
constexpr std::size_t kIfsPerMember = 4;

std::size_t stretchesPerMember(std::size_t ifs) {
  return std::clamp<std::size_t>(kMeansBytes / (ifs * sizeof(Stretch::Means)), 1, kMostStretches);
}

}  // namespace

/// What the steps of a block need to know.
struct BatchGridder::Job {
  const AUVXFile& file;
  StretchReader reader;
  const IfBatch& batch;
  std::vector<WorkGrid>& grids;
  int parts;
  std::size_t selections, ifs;
};

BatchGridder::BatchGridder(const PointMaker& maker, const PointAdder& adder, const RunIndicators& indicators,
                           ThreadTeam& team, const TilePool& pool)
    : maker_(maker),
      adder_(adder),
      indicators_(indicators),
      team_(team),
      pool_(pool),
      rooms_(static_cast<std::size_t>(team.size())),
      scratch_(static_cast<std::size_t>(team.size())) {}

int BatchGridder::partsFor(std::size_t ifs, int threads) {
  const auto members = static_cast<std::size_t>(threads);
  return ifs % members == 0 || ifs >= kIfsPerMember * members ? 1 : threads;
}

std::uint64_t BatchGridder::blockGroups(std::size_t ifs, int threads) {
  return static_cast<std::uint64_t>(threads) * stretchesPerMember(ifs) * Stretch::kCapacity;
}

std::size_t BatchGridder::mostTogether(const GridGeometry& geometry, int threads,
                                       std::uint64_t workGridBytes) {
  // Each point of the first block may take a tile. A block of few IFs is longer, but has no more points in
  // all.
  constexpr std::uint64_t kTileBytes = std::uint64_t{WorkGrid::kTileCells} * sizeof(WorkGrid::Cell);
  const std::uint64_t points = static_cast<std::uint64_t>(threads) * Stretch::kCapacity;
  const std::uint64_t one =
      std::min(WorkGrid::emptyBytes(geometry) + points * kTileBytes, WorkGrid::bytes(geometry));
  return static_cast<std::size_t>(std::max<std::uint64_t>(workGridBytes / one, 1));
}

std::uint64_t BatchGridder::bufferBytes(std::size_t ifs, int threads) {
  const auto members = static_cast<std::size_t>(threads);
  const std::size_t stretches = members * stretchesPerMember(ifs);
  const std::size_t lists = partsFor(ifs, threads) > 1 ? stretches * ifs : members;
  return stretches * (sizeof(Stretch) + ifs * sizeof(Stretch::Means)) + lists * sizeof(PointList);
}

std::uint64_t BatchGridder::fileWindow(std::size_t ifs, int threads, const FileFacts& file) {
  if (StretchReader::copies(ifs, file.ifs, file.groupBytes))
    return static_cast<std::uint64_t>(threads) * StretchReader::kRoomBytes;
  return std::min(file.bytes, MappedFile::kResidentBytes + blockGroups(ifs, threads) * file.groupBytes);
}

void BatchGridder::makeRoom(std::size_t ifs, int parts) {
  const auto members = static_cast<std::size_t>(team_.size());
  stretches_.resize(members * stretchesPerMember(ifs));
  for (Stretch& stretch : stretches_) stretch.ifs.resize(ifs);
  points_.resize(parts > 1 ? stretches_.size() * ifs : members);
}

std::size_t BatchGridder::run(AUVXFile& file, const IfBatch& batch, std::uint64_t workGridBytes,
                              std::vector<WorkGrid>& grids) {
  Job job{file,
          StretchReader(file, batch, indicators_.cancel),
          batch,
          grids,
          grids.front().parts(),
          batch.selections.size(),
          batch.ifs};
  makeRoom(batch.ifs, job.parts);
  const std::uint64_t groups = file.groupCount();
  const std::uint64_t block = stretches_.size() * Stretch::kCapacity;
  const std::uint64_t step = std::max<std::uint64_t>(groups / kProgressSteps, 1);
  AProgress progress(indicators_.readingBar, static_cast<double>(groups));
  std::uint64_t shown = 0;
  std::uint64_t released = 0;
  for (std::uint64_t begin = 0; begin < groups; begin += block) {
    const std::uint64_t end = std::min(begin + block, groups);
    for (; shown < end; shown = std::min(shown + step, end)) progress.SetPos(static_cast<double>(shown + 1));
    progress.SetPos(static_cast<double>(end));
    if (batch.index != nullptr && !batch.index->holds(begin, end, batch.selections)) continue;
    const bool release =
        !job.reader.copies() && (end - released) * file.groupBytes() >= MappedFile::kResidentBytes;
    if (release) released = end;
    if (!gridBlock(job, begin, end, release) || !file.intact().ok()) return 0;
    leaveOut(job, workGridBytes);
  }
  return job.selections * job.ifs;
}

void BatchGridder::leaveOut(Job& job, std::uint64_t workGridBytes) const {
  while (job.selections * job.ifs > 1 && pool_.bytes() > workGridBytes) {
    if (job.selections > 1)
      job.reader.keepSelections(--job.selections);
    else
      --job.ifs;
    job.grids.erase(job.grids.begin() + static_cast<std::ptrdiff_t>(job.selections * job.ifs),
                    job.grids.end());
  }
}

bool BatchGridder::gridBlock(const Job& job, std::uint64_t begin, std::uint64_t end, bool release) {
  std::atomic<bool> going{true};
  std::optional<PhaseTimer> timer(seconds_.read);
  shareOut(team_, stretches_.size(), [&](std::size_t s, std::size_t member) {
    const std::uint64_t first = std::min<std::uint64_t>(begin + s * Stretch::kCapacity, end);
    const std::uint64_t last = std::min<std::uint64_t>(first + Stretch::kCapacity, end);
    if (!job.reader.read(first, last, job.ifs, stretches_[s], rooms_[member])) going = false;
    for (std::size_t i = 0; job.parts > 1 && i < job.ifs; ++i) {
      makePoints(job, s, i, points_[s * job.ifs + i]);
    }
  });
  if (!going) return false;
  timer.emplace(seconds_.add);
  const auto parts = static_cast<std::size_t>(job.parts);
  // Giving pages back takes as long as adding a block: one member does it while the others add.
  const std::size_t before = release ? 1 : 0;
  shareOut(team_, before + job.ifs * parts, [&](std::size_t task, std::size_t member) {
    if (task < before) return job.file.releaseBefore(end);
    const std::size_t n = task - before;
    addPoints(job, n / parts, static_cast<int>(n % parts), member);
  });
  return !indicators_.cancelled();
}

/// Of stretch `s` and IF `i`, ready to be added.
void BatchGridder::makePoints(const Job& job, std::size_t s, std::size_t i, PointList& points) const {
  const bool read = maker_.leavesPoints() && job.batch.selections.size() == 1;
  if (read && adder_.prepareRead(stretches_[s], i, job.batch.frequencies[i], points)) return;
  maker_.make(stretches_[s], i, job.batch, points);
  adder_.prepare(points);
}

void BatchGridder::addPoints(const Job& job, std::size_t i, int part, std::size_t member) {
  for (std::size_t s = 0; s < stretches_.size(); ++s) {
    // Wide kernels take long over a block.
    if (indicators_.cancelled()) return;
    PointList& points = points_[job.parts > 1 ? s * job.ifs + i : member];
    if (job.parts == 1) makePoints(job, s, i, points);
    adder_.add(points, {&job.grids[i], job.batch.ifs, job.selections}, part, scratch_[member]);
  }
}

}  // namespace lumo
