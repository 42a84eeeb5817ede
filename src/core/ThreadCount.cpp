// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ThreadCount.h"

#include <algorithm>
#include <thread>

namespace lumo {

int threadCount(int wanted) {
  // 0 is also the answer of a system that does not know.
  const int asked = wanted > 0 ? wanted : static_cast<int>(std::thread::hardware_concurrency());
  return std::clamp(asked, 1, kMostThreads);
}

}  // namespace lumo
