// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TestSwitches.h"

#include <hwy/highway.h>

#include <cstdlib>
#include <string>

namespace lumo {

Status takeInstructionSet() {
  const char* const wanted = std::getenv("LUMO_SIMD");
  if (wanted == nullptr) return {};
  std::string known;
  for (const auto target : hwy::SupportedAndGeneratedTargets()) {
    const std::string name = hwy::TargetName(target);
    if (name == wanted) {
      hwy::SetSupportedTargetsForTest(target);
      return {};
    }
    known += (known.empty() ? "" : " ") + name;
  }
  return {StatusCode::kInvalidValue,
          std::string("LUMO_SIMD: this machine has no instruction set '") + wanted + "'; it has: " + known};
}

CleanEngineKind exactCleanEngine() {
  const char* const wanted = std::getenv("LUMO_CLEAN");
  return wanted != nullptr && std::string(wanted) == "plain" ? CleanEngineKind::kPlain
                                                             : CleanEngineKind::kFast;
}

}  // namespace lumo
