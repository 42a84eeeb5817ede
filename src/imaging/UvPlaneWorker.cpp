// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvPlaneWorker.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "imaging/UvPlanePoints.h"

namespace lumo {

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
      fail(error.what());
    }
  }
}

void UvPlaneWorker::fail(const char* reason) {
  grid_.reset();
  {
    const std::lock_guard lock(mutex_);
    latest_.complete = false;
    latest_.status = {StatusCode::kOutOfMemory, std::string("the uv plane cannot be drawn: ") + reason};
  }
  if (changed_) changed_();
}

void UvPlaneWorker::draw(const UvFrame& frame) {
  bool isFirst = true;
  {
    const std::lock_guard lock(mutex_);
    isFirst = !latest_.complete;
    if (isFirst) latest_.status = {};
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
    forEachPoint(*group, bands_, range, [this](const UvPoint& point) { grid_->add(point); });
}

bool UvPlaneWorker::drawKept(const UvRange& range) {
  const std::size_t atOnce = bands_.groupsAtOnce();
  for (std::size_t done = 0; done < kept_.size();) {
    const std::size_t count = std::min(atOnce, kept_.size() - done);
    addGroups(kept_.data() + done, count, range);
    done += count;
    if (!goOn(keptShare_ * static_cast<double>(done) / static_cast<double>(kept_.size()))) return false;
  }
  return true;
}

bool UvPlaneWorker::drawRest(const UvRange& range) {
  if (readAll_) return true;
  UvGroupReader reader(data_, bands_, keptTo_);
  std::vector<UvGroup> groups;
  while (reader.next(groups, bands_.groupsAtOnce())) {
    addGroups(groups.data(), groups.size(), range);
    keepSome(groups, reader);
    if (!goOn(reader.share())) return false;
  }
  readAll_ = keepsAll_;
  readStatus_ = reader.status();
  return true;
}

void UvPlaneWorker::keepSome(const std::vector<UvGroup>& groups, const UvGroupReader& reader) {
  if (!keepsAll_ || kept_.size() + groups.size() > mostKept_) {
    keepsAll_ = false;
    return;
  }
  try {
    kept_.insert(kept_.end(), groups.begin(), groups.end());
  } catch (const std::bad_alloc&) {
    keepsAll_ = false;  // the rest is read again each time
    return;
  }
  keptTo_ = reader.place();
  keptShare_ = reader.share();
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
    latest_ = {std::move(picture), share, complete, complete ? readStatus_ : Status()};
  }
  if (changed_) changed_();
}

}  // namespace lumo
