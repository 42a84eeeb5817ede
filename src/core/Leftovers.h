// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

/// The end of a PendingFile's temporary name: kTemporaryPrefix, 16 hexadecimal digits, this.
inline constexpr const char* kTemporarySuffix = ".tmp";

/// Removes the temporary files that PendingFiles of processes which have ended left in `folder` (empty: the
/// current one), and returns how many. A file of another name, a link, a folder, and a file that a living
/// process writes stay.
///
/// On a disk of this machine a writer holds a lock on its file, which ends with the process. Elsewhere
/// (network shares) locks may not reach other machines: there a file goes when nothing was written to it for
/// a day.
int removeLeftovers(const std::string& folder);

/// Whether a lock on this open file is seen by everyone who can reach it and hinders nobody's writing.
[[nodiscard]] bool hasReliableLocks(int descriptor);

}  // namespace lumo
