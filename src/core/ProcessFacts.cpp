// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ProcessFacts.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <limits>
#include <string>

namespace lumo {

double processSeconds() {
  std::ifstream file("/proc/self/stat");
  // The name of the program stands in parentheses and may hold anything.
  file.ignore(std::numeric_limits<std::streamsize>::max(), ')');
  std::string skipped;
  constexpr int kBetween = 19;  // the fields from the state to the one before the start
  for (int i = 0; i < kBetween; ++i) file >> skipped;
  double started = 0;
  timespec now{};
  if (!(file >> started) || ::clock_gettime(CLOCK_BOOTTIME, &now) != 0) return 0;
  const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
  return std::max(static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 - started / ticks,
                  0.0);
}

std::uint64_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::uint64_t size = 0;
  std::uint64_t resident = 0;
  if (!(file >> size >> resident)) return 0;
  return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace lumo
