// SPDX-License-Identifier: GPL-3.0-or-later
#include "longuse/MemoryWatch.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#ifdef __SANITIZE_ADDRESS__
// Of the sanitizer's run-time library; its header is not installed with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace lumo::test {

namespace {

constexpr std::size_t kBlock = 10;

std::int64_t heapBytes() {
#ifdef __SANITIZE_ADDRESS__
  return static_cast<std::int64_t>(__sanitizer_get_current_allocated_bytes());
#else
  const struct mallinfo2 info = mallinfo2();
  return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
#endif
}

std::int64_t residentBytes() {
  std::ifstream file("/proc/self/statm");
  std::int64_t pages = 0;
  file >> pages >> pages;
  return pages * ::sysconf(_SC_PAGESIZE);
}

int entriesOf(const char* folder) {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// The smallest value of each block of steps; what is left of a block at the beginning is not looked at.
std::vector<double> floorOf(const std::vector<double>& values) {
  std::vector<double> floor;
  for (auto i = static_cast<std::ptrdiff_t>(values.size() % kBlock);
       i < static_cast<std::ptrdiff_t>(values.size()); i += kBlock)
    floor.push_back(*std::min_element(values.begin() + i, values.begin() + i + kBlock));
  return floor;
}

}  // namespace

Holding currentHolding() {
  return {heapBytes(), residentBytes(), entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
}

Trend trendOf(const std::vector<double>& values) {
  const auto n = static_cast<double>(values.size());
  if (values.size() < 3) return {0.0, std::numeric_limits<double>::infinity()};
  double mean = 0.0;
  for (const double value : values) mean += value / n;
  double product = 0.0;
  double square = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double step = static_cast<double>(i) - (n - 1.0) / 2.0;
    product += step * (values[i] - mean);
    square += step * step;
  }
  Trend trend{product / square, 0.0};
  double scatter = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double line = mean + trend.perStep * (static_cast<double>(i) - (n - 1.0) / 2.0);
    scatter += (values[i] - line) * (values[i] - line);
  }
  trend.error = std::sqrt(scatter / (n - 2.0) / square);
  return trend;
}

bool grows(const std::vector<double>& values, double allowance) {
  const auto half = static_cast<std::ptrdiff_t>(values.size() / 2);
  Trend trend = trendOf(floorOf({values.begin() + half, values.end()}));
  trend.perStep /= kBlock;
  trend.error /= kBlock;
  return trend.perStep > allowance && trend.perStep > 5.0 * trend.error;
}

}  // namespace lumo::test
