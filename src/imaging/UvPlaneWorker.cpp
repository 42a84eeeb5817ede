// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvPlaneWorker.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace lumo {

namespace {

constexpr std::uint64_t kRecordsAtOnce = 4096;

}  // namespace

UvPlaneWorker::UvPlaneWorker(UvPlaneData data, std::function<void()> changed, std::size_t keep)
    : data_(std::move(data)), bands_(data_), changed_(std::move(changed)), mostKept_(keep), thread_([this] {
        run();
      }) {}

UvPlaneWorker::~UvPlaneWorker() {
  stop_ = true;
  {
    const std::lock_guard lock(mutex_);
    request_.reset();
  }
  wanted_.notify_all();
  thread_.join();
}

void UvPlaneWorker::show(const UvFrame& frame) {
  {
    const std::lock_guard lock(mutex_);
    if (asked_ == frame) return;
    asked_ = request_ = frame;
  }
  wanted_.notify_all();
}

UvPicture UvPlaneWorker::latest() const {
  const std::lock_guard lock(mutex_);
  return latest_;
}

Status UvPlaneWorker::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

void UvPlaneWorker::run() noexcept {
  while (!stop_) {
    UvFrame frame;
    {
      std::unique_lock lock(mutex_);
      wanted_.wait(lock, [this] { return stop_ || request_.has_value(); });
      if (stop_) return;
      frame = *request_;
      request_.reset();
    }
    try {
      draw(frame);
    } catch (const std::exception& error) {
      const std::lock_guard lock(mutex_);
      status_ = {StatusCode::kOutOfMemory, error.what()};
    }
  }
}

void UvPlaneWorker::draw(const UvFrame& frame) {
  bool isFirst = true;
  {
    const std::lock_guard lock(mutex_);
    isFirst = !latest_.complete;
  }
  grid_ = std::make_unique<UvHitGrid>(frame);
  isPublished_ = false;
  nextPicture_ = std::chrono::steady_clock::now() + (isFirst ? kFirstPicture : kPatience);
  // A mirror is drawn wherever its point is taken, so the range must be the same in every quadrant.
  const UvRange range = frame.visible.mirrored();
  if (drawKept(range) && drawRest(range)) publish(1.0, true);
}

void UvPlaneWorker::addGroups(const UvGroup* groups, std::size_t count, const UvRange& range) {
  for (const UvGroup* group = groups; group != groups + count; ++group)
    bands_.forEachFrequency(group->band, [&](double frequency) {
      const UvPoint point{-frequency * group->u, -frequency * group->v};
      if (range.contains(point)) grid_->add(point);
    });
}

bool UvPlaneWorker::drawKept(const UvRange& range) {
  for (std::size_t first = 0; first < kept_.size(); first += kRecordsAtOnce) {
    addGroups(kept_.data() + first, std::min<std::size_t>(kRecordsAtOnce, kept_.size() - first), range);
    // The files' share is not known here, and while groups are kept it is soon told.
    if (!goOn(latest_.share)) return false;
  }
  return true;
}

bool UvPlaneWorker::drawRest(const UvRange& range) {
  if (readAll_) return true;
  UvGroupReader reader(data_, bands_, keptTo_);
  std::vector<UvGroup> groups;
  while (reader.next(groups, kRecordsAtOnce)) {
    addGroups(groups.data(), groups.size(), range);
    keepSome(groups, reader.place());
    if (!goOn(reader.share())) return false;
  }
  readAll_ = keepsAll_;
  const std::lock_guard lock(mutex_);
  status_ = reader.status();
  return true;
}

void UvPlaneWorker::keepSome(const std::vector<UvGroup>& groups, UvGroupReader::Place after) {
  if (!keepsAll_ || kept_.size() + groups.size() > mostKept_) {
    keepsAll_ = false;
    return;
  }
  kept_.insert(kept_.end(), groups.begin(), groups.end());
  keptTo_ = after;
}

bool UvPlaneWorker::goOn(double share) {
  if (stop_) return false;
  if (std::chrono::steady_clock::now() >= nextPicture_) {
    publish(share, false);
    nextPicture_ = std::chrono::steady_clock::now() + kNextPicture;
    isPublished_ = true;
  }
  if (!isPublished_) return true;
  const std::lock_guard lock(mutex_);
  return !request_.has_value();
}

void UvPlaneWorker::publish(double share, bool complete) {
  auto picture = complete ? std::shared_ptr<const UvHitGrid>(std::move(grid_))
                          : std::make_shared<const UvHitGrid>(*grid_);
  {
    const std::lock_guard lock(mutex_);
    latest_ = {std::move(picture), share, complete};
  }
  if (changed_) changed_();
}

}  // namespace lumo
