// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

/// The separator that ends a folder name; the only place that knows the system's.
#ifdef _WIN32
inline constexpr char kDirSeparator = '\\';
#else
inline constexpr char kDirSeparator = '/';
#endif

/// Folder of a path with its trailing separator, "" when the path names none.
[[nodiscard]] std::string getfPath(const std::string& path);
/// The name after the last separator.
[[nodiscard]] std::string fileName(const std::string& path);
/// Folder of the running executable with its trailing separator; "" when the system does not tell.
[[nodiscard]] std::string getExePath();
/// `folder`, with a separator appended unless it ends in one. An empty folder stays empty.
[[nodiscard]] std::string withSeparator(const std::string& folder);

}  // namespace lumo
