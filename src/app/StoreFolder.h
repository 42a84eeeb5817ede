// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

class Log;

/// Where the parameter set is kept from one use to the next, with its separator: the folder of the
/// executable, or, where nothing can be written there, the user's folder of settings, which is made when
/// missing. The log says why when it is not the first.
[[nodiscard]] std::string storeFolder(const std::string& executableFolder, const std::string& settingsFolder,
                                      Log& log);

}  // namespace lumo
