// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ImagerHandOver.h"

#include <fstream>

#include "core/PendingFile.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

#ifdef _WIN32
constexpr const char* kLineEnd = "\r\n";
#else
constexpr const char* kLineEnd = "\n";
#endif

}  // namespace

std::string handOverPath(const std::string& folder, int slot) {
  return folder + "mfs_zel" + toStr(slot) + ".dat";
}

std::optional<int> freeHandOverSlot(const std::string& folder) {
  for (int slot = 0; slot < kHandOverSlots; ++slot)
    if (!std::ifstream(handOverPath(folder, slot)).is_open()) return slot;
  return std::nullopt;
}

std::string handOverText(const UvPlaneData& data) {
  std::string text = generalText(data.vExtent) + '\t' + generalText(data.uExtent) + kLineEnd;
  for (std::int32_t file = 0; file < data.names.count() && file < data.selections.count(); ++file) {
    const ABitArray& rows = data.selections[file];
    for (std::int32_t row = 0; row < rows.count(); ++row)
      if (rows(row) != 0) text += toStr(row) + '\t' + data.names[file] + kLineEnd;
  }
  return text;
}

HandOver handOverToImager(const UvPlaneData& data, const std::string& folder, ImagerLink::Window ownWindow,
                          ImagerLink* link) {
  HandOver result;
  const std::optional<int> slot = freeHandOverSlot(folder);
  if (!slot) {
    result.status = {StatusCode::kWriteFailed, "all ten hand-over files are waiting for the imager", folder};
    return result;
  }
  result.status = writeWholeFile(handOverPath(folder, *slot), handOverText(data));
  if (!result.status.ok()) return result;
  result.slot = slot;
  if (link == nullptr) {
    result.status = {StatusCode::kUnsupported, "this system has no way to tell the imager",
                     handOverPath(folder, *slot)};
    return result;
  }
  ImagerLink::Window imager = link->findWindow(kImagerWindowClass);
  if (imager == 0) {
    link->start(folder + kImagerProgram);
    link->wait(kImagerStartTime);
    imager = link->findWindow(kImagerWindowClass);
  }
  if (imager == 0) {
    result.status = {StatusCode::kNotFound, "the imager is not running and could not be started", folder};
    return result;
  }
  link->post(imager, kHandOverMessage, ownWindow, *slot);
  result.posted = true;
  return result;
}

}  // namespace lumo
