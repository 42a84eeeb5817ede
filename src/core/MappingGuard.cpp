// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/MappingGuard.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace lumo {

/// One guarded mapping. Never freed, but taken again: the handler walks the list without a lock.
struct MappingGuard::Watched {
  std::atomic<bool> used{true};
  std::atomic<bool> lost{false};
  std::atomic<std::uintptr_t> begin{0};
  std::atomic<std::uintptr_t> end{0};
  Watched* next = nullptr;
};

struct MappingGuard::Registry {
  Registry() : page(static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE))) {}

  /// Puts zeros in place of what a guarded mapping has from `place` on; false for other addresses.
  bool fill(void* place) {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    const std::uintptr_t inPage = address % page;
    for (Watched* entry = first.load(); entry != nullptr; entry = entry->next) {
      const std::uintptr_t end = entry->end.load();
      if (address < entry->begin.load() || address >= end) continue;
      if (::mmap(static_cast<char*>(place) - inPage, end - address + inPage, PROT_READ,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED)
        return false;
      entry->lost = true;
      return true;
    }
    return false;
  }

  static void onBusError(int number, siginfo_t* info, void* /*context*/) {
    const int error = errno;
    // Not ours: the read is repeated when this returns, and then does what it did before there was a guard.
    if (!registry().fill(info->si_addr)) ::sigaction(number, &registry().before, nullptr);
    errno = error;
  }

  void arm() {
    struct sigaction action {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(SIGBUS, &action, &before);
  }

  std::atomic<Watched*> first{nullptr};
  struct sigaction before {};
  std::uintptr_t page;
};

MappingGuard::Registry& MappingGuard::registry() {
  static Registry registry;
  return registry;
}

void MappingGuard::watch(const void* begin, std::size_t size) {
  forget();
  Registry& all = registry();
  static const bool armed = (registry().arm(), true);
  static_cast<void>(armed);
  for (Watched* entry = all.first.load(); entry != nullptr && watched_ == nullptr; entry = entry->next) {
    bool free = false;
    if (entry->used.compare_exchange_strong(free, true)) watched_ = entry;
  }
  if (watched_ == nullptr) {
    watched_ = new Watched;
    watched_->next = all.first.load();
    while (!all.first.compare_exchange_weak(watched_->next, watched_)) {
    }
  }
  watched_->lost = false;
  watched_->end = reinterpret_cast<std::uintptr_t>(begin) + size;
  watched_->begin = reinterpret_cast<std::uintptr_t>(begin);
}

void MappingGuard::forget() {
  if (watched_ == nullptr) return;
  watched_->end = 0;
  watched_->begin = 0;
  watched_->used = false;
  watched_ = nullptr;
}

bool MappingGuard::lost() const {
  return watched_ != nullptr && watched_->lost;
}

}  // namespace lumo
