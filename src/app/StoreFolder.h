// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

class Log;

/// Whether a file can be made in a folder, which ends in its separator; an empty name is none. Found out by
/// making one that goes at once.
[[nodiscard]] bool canWriteTo(const std::string& folder);

/// Where the parameter set is kept from one use to the next, with its separator: the folder of the
/// executable, or, where nothing can be written there, the user's folder of settings, which is made when
/// missing. The log says why when it is not the first.
[[nodiscard]] std::string storeFolder(const std::string& executableFolder, const std::string& settingsFolder,
                                      Log& log);

}  // namespace lumo
