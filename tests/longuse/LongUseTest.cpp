// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop program under a user who does not tire. LUMO_LONG_USE_MINUTES says for how long; without it the
// user comes a few times only, as many as show that nothing breaks. LUMO_LONG_USE_RECORD names a file for
// what was held after each visit.
#include <gtest/gtest.h>

#include <QApplication>
#include <chrono>
#include <cstdlib>
#include <fstream>

#include "longuse/MemoryWatch.h"
#include "longuse/ScriptedUser.h"

namespace lumo::test {
namespace {

constexpr int kFewVisits = 3;
/// Below as many nothing can be said about growth.
constexpr std::size_t kEnoughVisits = 60;
/// Of the heap in a visit: the smallest window alone takes some ten times as much.
constexpr double kHeapAllowance = 1000.0;
#ifndef __SANITIZE_ADDRESS__
/// Of resident memory: some pages; allocators keep more or less of them for later.
constexpr double kResidentAllowance = 16384.0;
#endif

class LongUseTest : public ScriptedUser {
 protected:
  [[nodiscard]] static std::chrono::duration<double> wantedTime() {
    const char* const minutes = std::getenv("LUMO_LONG_USE_MINUTES");
    return std::chrono::duration<double>(60.0 * (minutes != nullptr ? std::atof(minutes) : 0.0));
  }
  void note(int visit, double seconds) {
    settle();
    const Holding now = currentHolding();
    heap_.push_back(static_cast<double>(now.heapBytes));
    resident_.push_back(static_cast<double>(now.residentBytes));
    descriptors_.push_back(now.descriptors);
    widgets_.push_back(static_cast<int>(QApplication::allWidgets().size()));
    if (!record_.is_open()) return;
    record_ << visit << '\t' << seconds << '\t' << now.heapBytes << '\t' << now.residentBytes << '\t'
            << now.descriptors << '\t' << now.threads << '\t' << widgets_.back() << std::endl;
  }

  std::vector<double> heap_, resident_;
  std::vector<int> descriptors_, widgets_;
  std::ofstream record_;
};

TEST_F(LongUseTest, TheSameVisitAgainAndAgainLeavesNothingBehind) {
  if (const char* const name = std::getenv("LUMO_LONG_USE_RECORD")) {
    record_.open(name);
    record_ << "visit\tseconds\theap\tresident\tdescriptors\tthreads\twidgets" << std::endl;
  }
  // The log keeps so many lines and no more: full from the start, it does not look like growth.
  for (std::size_t line = 0; line < Log::kMaxLines; ++line)
    log_.add("One line of a log that has been written to for long, as long as most lines are");
  const auto start = std::chrono::steady_clock::now();
  const auto elapsed = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
  };
  begin();
  for (int number = 1; !HasFailure(); ++number) {
    visit(number);
    note(number, elapsed().count());
    if (number >= kFewVisits && elapsed() >= wantedTime()) break;
  }
  // From the second visit on: the first opens what stays open.
  for (std::size_t i = 2; i < heap_.size(); ++i) {
    EXPECT_EQ(descriptors_[i], descriptors_[1]) << "open files after visit " << i + 1;
    EXPECT_EQ(widgets_[i], widgets_[1]) << "widgets after visit " << i + 1;
  }
  RecordProperty("visits", static_cast<int>(heap_.size()));
  if (heap_.size() >= kEnoughVisits) {
    EXPECT_FALSE(grows(heap_, kHeapAllowance));
#ifndef __SANITIZE_ADDRESS__
    // The sanitizer's own records of who allocated what grow as well.
    EXPECT_FALSE(grows(resident_, kResidentAllowance));
#endif
  }
}

}  // namespace
}  // namespace lumo::test
