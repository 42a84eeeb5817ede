// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "core/Progress.h"
#include "core/Status.h"
#include "imaging/UvGroupReader.h"
#include "imaging/UvHitGrid.h"
#include "imaging/UvPlaneData.h"

namespace lumo {

/// How far a picture of the uv plane is.
struct UvPicture {
  std::shared_ptr<const UvHitGrid> grid;
  double share = 0.0;  ///< of the data, 0..1
  bool complete = false;
  Status
      status;  ///< why a complete picture does not show every file, or why none was completed; ok otherwise
};

/// Draws pictures of the uv plane on a thread of its own, however many points there are.
///
/// show() asks for a picture; latest() is the newest there is, which first comes when the drawing has taken
/// kFirstPicture and then every kNextPicture until it is complete. A picture of another part that follows a
/// complete one waits for kPatience before it comes incomplete, because points that vanish for a moment look
/// worse than a picture that is late. Requests that come in faster than pictures are skipped, the last one
/// is always drawn.
///
/// What the pictures need of the files is kept, up to a bound; files beyond it are read again for every
/// picture. Stopping takes about as long as UvBands::groupsAtOnce() groups. When memory
/// does not suffice for a picture, the one before stays, incomplete, with the reason.
class UvPlaneWorker {
 public:
  static constexpr std::chrono::milliseconds kFirstPicture{50};
  static constexpr std::chrono::milliseconds kNextPicture{100};
  static constexpr std::chrono::milliseconds kPatience{400};
  static constexpr std::size_t kMostGroupsKept = std::size_t{1} << 22U;

  /// `changed`, which may be empty, is called on the worker's thread after latest() has changed. At most
  /// `keep` groups are kept.
  explicit UvPlaneWorker(UvPlaneData data, std::function<void()> changed = {},
                         std::size_t keep = kMostGroupsKept);
  UvPlaneWorker(const UvPlaneWorker&) = delete;
  UvPlaneWorker& operator=(const UvPlaneWorker&) = delete;
  /// Stops and waits.
  ~UvPlaneWorker();

  /// Asks for a picture of a part of the plane. Any thread. What was asked for last is not asked for again.
  void show(const UvFrame& frame);
  /// The newest picture; its grid is null before the first. Any thread.
  [[nodiscard]] UvPicture latest() const;
  [[nodiscard]] const UvPlaneData& data() const { return data_; }

 private:
  void run() noexcept;
  void fail(const char* reason);
  /// Draws until the picture is complete, the worker is to stop, or another picture is wanted.
  void draw(const UvFrame& frame);
  void addGroups(const UvGroup* groups, std::size_t count, const UvRange& range);
  bool drawKept(const UvRange& range);
  bool drawRest(const UvRange& range);
  /// Keeps what the reader has just read, while there is room.
  void keepSome(const std::vector<UvGroup>& groups, const UvGroupReader& reader);
  /// Publishes when it is time; false when this picture is to be given up.
  bool goOn(double share);
  void publish(double share, bool complete);

  const UvPlaneData data_;
  const UvBands bands_;
  const std::function<void()> changed_;
  const std::size_t mostKept_;

  // Of the worker's thread.
  std::vector<UvGroup> kept_;
  UvGroupReader::Place keptTo_;  ///< what comes after the groups that are kept
  double keptShare_ = 0.0;       ///< of the files, that the groups kept stand for
  bool keepsAll_ = true;         ///< while nothing had to be left out
  bool readAll_ = false;         ///< the groups kept are all there are
  Status readStatus_;            ///< of the last reading that came to its end
  std::unique_ptr<UvHitGrid> grid_;
  std::chrono::steady_clock::time_point nextPicture_;
  bool isPublished_ = false;  ///< this picture, in part

  std::atomic<bool> stop_{false};
  mutable std::mutex mutex_;  ///< guards what follows up to the thread
  std::condition_variable wanted_;
  std::optional<UvFrame> request_;  ///< not begun yet
  std::optional<UvFrame> asked_;    ///< the last one, begun or not
  UvPicture latest_;

  std::jthread thread_;
};

}  // namespace lumo
