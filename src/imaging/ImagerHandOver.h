// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "core/Status.h"
#include "imaging/ImagerLink.h"
#include "imaging/UvPlaneData.h"

namespace lumo {

// Hands a selection of data to the external imager: a text file in one of ten slots, and a message to the
// imager's window that names the slot. The imager removes the file when it has read it, which frees the slot.

inline constexpr int kHandOverSlots = 10;
inline constexpr unsigned kHandOverMessage = 1369;
inline constexpr const char* kImagerWindowClass = "ZELImageFrameWnd";
inline constexpr const char* kImagerProgram = "zelimag.exe";
inline constexpr std::chrono::milliseconds kImagerStartTime{1000};

/// "mfs_zel" + slot + ".dat" in a folder, which has its trailing separator.
[[nodiscard]] std::string handOverPath(const std::string& folder, int slot);
/// The first slot whose file cannot be opened for reading; none when all ten are in use.
[[nodiscard]] std::optional<int> freeHandOverSlot(const std::string& folder);
/// The file's text. Line 1: the v extent, a tab, the u extent, six significant digits each; then for every
/// file in list order and every set bit of its selection, ascending: the row's index, a tab, the file's name.
[[nodiscard]] std::string handOverText(const UvPlaneData& data);

/// What became of a hand-over. None of it is for a message box: the imager's window is the only answer.
struct HandOver {
  std::optional<int> slot;  ///< whose file was written
  bool posted = false;
  Status status;  ///< why it went no further; ok when the message was posted
};

/// Writes the file and posts message 1369 with `ownWindow` and the slot. Without an imager window it starts
/// the imager of `folder`, waits a second and looks once more; if there still is none, the file stays. With
/// no `link` (null) only the file is written. Nothing is posted about a file that could not be written.
[[nodiscard]] HandOver handOverToImager(const UvPlaneData& data, const std::string& folder,
                                        ImagerLink::Window ownWindow, ImagerLink* link);

}  // namespace lumo
