// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FullDisk.h"

#include <gtest/gtest.h>

namespace lumo::test {

FullDisk::FullDisk(std::uint64_t bytes) {
  EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &oldLimit_), 0);
  // The signal's default action would end the process before the write could fail.
  oldHandler_ = ::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = oldLimit_;
  limit.rlim_cur = bytes;
  EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

FullDisk::~FullDisk() {
  EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &oldLimit_), 0);
  ::signal(SIGXFSZ, oldHandler_);
}

}  // namespace lumo::test
