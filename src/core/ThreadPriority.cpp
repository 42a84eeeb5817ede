// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ThreadPriority.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace lumo {

namespace {

constexpr const char* kNames[kThreadPriorityCount] = {"Idle",  "Low",  "Below",       "Normal",
                                                      "Above", "High", "Timecritical"};

// Nice values of the entries that stay in the normal scheduling class; the first and the last have classes of
// their own (SCHED_IDLE, SCHED_RR).
constexpr int kNice[kThreadPriorityCount] = {19, 10, 5, 0, -5, -10, -20};

}  // namespace

ThreadPriority GetPriorityConst(int index) {
  return index < 0 || index >= kThreadPriorityCount ? ThreadPriority::kNormal
                                                    : static_cast<ThreadPriority>(index);
}

Status setThreadPriority(ThreadPriority priority) {
  sched_param parameters{};
  int error = 0;
  if (priority == ThreadPriority::kIdle) {
    error = ::pthread_setschedparam(::pthread_self(), SCHED_IDLE, &parameters);
  } else if (priority == ThreadPriority::kTimecritical) {
    parameters.sched_priority = ::sched_get_priority_min(SCHED_RR);
    error = ::pthread_setschedparam(::pthread_self(), SCHED_RR, &parameters);
  } else {
    const auto thread = static_cast<pid_t>(::syscall(SYS_gettid));
    if (::setpriority(PRIO_PROCESS, static_cast<id_t>(thread), kNice[static_cast<int>(priority)]) != 0)
      error = errno;
    else if (::sched_getscheduler(thread) != SCHED_OTHER)
      error = ::pthread_setschedparam(::pthread_self(), SCHED_OTHER, &parameters);
  }
  if (error == 0) return {};
  return {StatusCode::kUnsupported, std::string("the thread priority \"") +
                                        kNames[static_cast<int>(priority)] +
                                        "\" was refused, the one before stays: " + std::strerror(error)};
}

}  // namespace lumo
