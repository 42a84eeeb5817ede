// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "core/Progress.h"
#include "core/ThreadTeam.h"
#include "imaging/PointAdder.h"
#include "imaging/PointList.h"
#include "imaging/PointMaker.h"
#include "imaging/Stretch.h"
#include "imaging/WorkGrid.h"
#include "io/AUVXFile.h"

namespace lumo {

/// Grids IFs that share a pass over a file, of one frequency selection or of several, each onto a work grid
/// of its own, block of groups by block.
///
///     for each block: read its stretches                    (threads: stretches)
///                     make the points of the IFs, add them  (threads: IFs)
///
/// A record is reduced and placed with the frequencies of its selection, and each of its points knows the
/// selection's grid, so that the blocks of many selections cost what those of one do.
///
/// Where the IFs are too few for the threads, points are made when a stretch is read and added by (IF, part
/// of the tiles). Either way the points of a cell are added in the order of the file, by one thread.
class BatchGridder {
 public:
  /// The references must outlive the gridder.
  BatchGridder(const PointMaker& maker, const PointAdder& adder, const RunIndicators& indicators,
               ThreadTeam& team, const TilePool& pool);

  /// Parts that the work grids of a batch of so many IFs of a selection must have.
  [[nodiscard]] int partsFor(std::size_t ifs) const { return partsFor(ifs, team_.size()); }
  [[nodiscard]] static int partsFor(std::size_t ifs, int threads);
  /// Groups that are gridded before the work grids' memory is looked at.
  [[nodiscard]] static std::uint64_t blockGroups(std::size_t ifs, int threads);
  /// IFs, of all selections together, that can share a pass, at least 1: however their visibilities lie, the
  /// work grids take about `workGridBytes` at most until their memory is looked at for the first time, with
  /// kernels of a cell; wider ones up to four times that.
  [[nodiscard]] static std::size_t mostTogether(const GridGeometry& geometry, int threads,
                                                std::uint64_t workGridBytes);
  /// Memory of the buffers of a batch of so many IFs of a selection.
  [[nodiscard]] static std::uint64_t bufferBytes(std::size_t ifs, int threads);
  /// How much of a file a pass over `ifs` of its IFs holds at most; what it reads through the map the system
  /// can take back.
  struct FileFacts {
    std::size_t ifs = 1;
    std::uint64_t groupBytes = 0, bytes = 0;
  };
  [[nodiscard]] static std::uint64_t fileWindow(std::size_t ifs, int threads, const FileFacts& file);

  /// Grids the batch onto `grids`, which has an empty work grid for each (selection, IF), selections outer.
  /// When they take more than `workGridBytes` of the pool together (looked at after each block), the last
  /// ones are removed and left out: whole selections, then IFs of the first one, but never its first. Returns
  /// how many grids were filled; 0 when cancelled.
  [[nodiscard]] std::size_t run(AUVXFile& file, const IfBatch& batch, std::uint64_t workGridBytes,
                                std::vector<WorkGrid>& grids);

  /// Wall-clock seconds so far: reading and averaging, with making the points where the work grids have
  /// several parts; making the points otherwise, and adding them.
  struct Seconds {
    double read = 0, add = 0;
  };
  [[nodiscard]] const Seconds& seconds() const { return seconds_; }

 private:
  struct Job;

  void makeRoom(std::size_t ifs, int parts);
  bool gridBlock(const Job& job, std::uint64_t begin, std::uint64_t end, bool release);
  void leaveOut(Job& job, std::uint64_t workGridBytes) const;
  void makePoints(const Job& job, std::size_t s, std::size_t i, PointList& points) const;
  void addPoints(const Job& job, std::size_t i, int part, std::size_t member);

  const PointMaker& maker_;
  const PointAdder& adder_;
  const RunIndicators& indicators_;
  ThreadTeam& team_;
  const TilePool& pool_;
  std::vector<StretchReader::Room> rooms_;    ///< one for each member
  std::vector<Stretch> stretches_;            ///< of a block
  std::vector<PointList> points_;             ///< one for each member; with parts for each (stretch, IF)
  std::vector<PointAdder::Scratch> scratch_;  ///< one for each member
  Seconds seconds_;
};

}  // namespace lumo
