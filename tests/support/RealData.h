// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo::test {

/// Folder of real observations (trailing separator), "" when this machine has none. It is the build's
/// LUMO_REAL_DATA; the files stay there and are only read.
[[nodiscard]] std::string realDataFolder();

}  // namespace lumo::test

/// Skips the test with a message when the real observations are absent.
#define LUMO_NEEDS_REAL_DATA()                                                \
  if (::lumo::test::realDataFolder().empty()) {                               \
    GTEST_SKIP() << "the real observations (LUMO_REAL_DATA) are not present"; \
  }
