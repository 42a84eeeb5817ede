// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "core/ThreadTeam.h"
#include "imaging/ABMakeParameters.h"
#include "imaging/TileCover.h"
#include "io/VisibilityInputs.h"
#include "run/GroupTally.h"
#include "run/InputFileFacts.h"

namespace lumo {

/// What the scan of one input found.
struct ScannedFile {
  InputFileFacts facts;
  GroupTally tally;
  std::uint32_t groupBytes = 0;
  std::uint64_t visibilitiesPerGroup = 0;  ///< channels of all IFs
};

/// The one pass over every byte of all inputs before a run: each file's checksum and what its groups hold.
///
/// Files are cut into pieces at borders of groups, which depend on the file alone. Threads take pieces, also
/// of different files; their results are put together in the order of the pieces, so they do not depend on
/// the threads. The files are read, not mapped: a disk that fails is a failure of the scan.
class InputScan {
 public:
  /// `inputs` must be inStep(), `imaging` have been through Setup; the references must outlive the scan.
  InputScan(const VisibilityInputs& inputs, const ABMakeParameters& imaging, int threads,
            const RunIndicators& indicators);
  ~InputScan();
  InputScan(const InputScan&) = delete;
  InputScan& operator=(const InputScan&) = delete;

  /// Reads all files, in memory of a few MB a thread, and calls take(number of the file, result) in their
  /// order. kCancelled when the indicators say so; a file that cannot be read to its end or does not fit its
  /// table fails.
  [[nodiscard]] Status run(const std::function<void(std::int32_t, const ScannedFile&)>& take);

 private:
  struct Source;
  struct Piece;

  [[nodiscard]] Status open(std::int32_t number);
  [[nodiscard]] Status fillRound();
  void readRound();
  [[nodiscard]] Status mergeRound(const std::function<void(std::int32_t, const ScannedFile&)>& take);

  const VisibilityInputs& inputs_;
  const RunIndicators& indicators_;
  bool useWeights_;
  TileCover::Layout layout_;
  GridReach reach_;
  ThreadTeam team_;
  std::vector<std::vector<std::uint8_t>> buffers_;  ///< one for each member
  std::int32_t opened_ = 0;                         ///< files
  std::deque<std::unique_ptr<Source>> sources_;     ///< opened and not finished
  std::vector<Piece> round_;
};

}  // namespace lumo
