// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "io/AUVXFile.h"
#include "io/UvxTables.h"

namespace lumo {

/// The source table "SU" of an open file.
class AUVXSources {
 public:
  explicit AUVXSources(const AUVXFile& file);

  [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(items_.size()); }
  [[nodiscard]] const AUVXSourceItem& operator[](std::int32_t index) const {
    return items_[static_cast<std::size_t>(index)];
  }
  /// The item of a source ID, null if there is none.
  [[nodiscard]] const AUVXSourceItem* ForID(std::int32_t id) const;

 private:
  std::vector<AUVXSourceItem> items_;
};

}  // namespace lumo
