// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/SelectionIndex.h"

#include <algorithm>

namespace lumo {

void SelectionIndex::read(const AUVXFile& file, const CancelFlag* cancel) {
  clear();
  if (file.groupCount() > kMostGroups) return;
  ids_.reserve(file.groupCount());
  const std::uint64_t between = MappedFile::kResidentBytes / file.groupBytes() + 1;
  for (std::uint64_t group = 0; group < file.groupCount(); ++group) {
    if (group % between == 0) {
      if (cancel != nullptr && *cancel != 0) return clear();
      file.releaseBefore(group);
    }
    ids_.push_back(UvxRecord::load(file.groupAt(group)).freqSel);
  }
}

bool SelectionIndex::holds(std::uint64_t begin, std::uint64_t end,
                           const std::vector<std::int8_t>& ids) const {
  const auto first = ids_.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto last = ids_.begin() + static_cast<std::ptrdiff_t>(end);
  return std::any_of(ids.begin(), ids.end(),
                     [&](std::int8_t id) { return std::find(first, last, id) != last; });
}

}  // namespace lumo
