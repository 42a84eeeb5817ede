// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Interrupt.h"

#include <csignal>

namespace lumo {

namespace {

// A signal handler has no other way to reach its program than a variable of static storage.
CancelFlag flag{0};

extern "C" void onInterrupt(int number) {
  flag.store(1);
  std::signal(number, SIG_DFL);
}

}  // namespace

const CancelFlag& interruptFlag() {
  static_assert(CancelFlag::is_always_lock_free, "the handler must not wait for a lock");
  static const bool armed = [] {
    for (const int number : {SIGINT, SIGTERM})
      // Started in the background or under nohup, the program was told to ignore the signal.
      if (std::signal(number, onInterrupt) == SIG_IGN) std::signal(number, SIG_IGN);
    return true;
  }();
  static_cast<void>(armed);
  return flag;
}

}  // namespace lumo
