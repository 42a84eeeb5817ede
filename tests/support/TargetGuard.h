// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <hwy/highway.h>

#include <cstdint>

namespace lumo::test {

/// Chooses an instruction set for the vector code, and all again at its end.
class TargetGuard {
 public:
  /// @param target of hwy::SupportedAndGeneratedTargets().
  explicit TargetGuard(std::int64_t target) { choose(target); }
  TargetGuard(const TargetGuard&) = delete;
  TargetGuard& operator=(const TargetGuard&) = delete;
  ~TargetGuard() { choose(0); }

 private:
  static void choose(std::int64_t targets) {
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  }
};

}  // namespace lumo::test
