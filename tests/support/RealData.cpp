// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/RealData.h"

#include <filesystem>

namespace lumo::test {

std::string realDataFolder() {
  std::error_code error;
  return std::filesystem::is_directory(LUMO_REAL_DATA, error) ? std::string(LUMO_REAL_DATA) + "/"
                                                              : std::string();
}

}  // namespace lumo::test
