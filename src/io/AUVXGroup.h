// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "io/AUVXFile.h"
#include "io/UvxTables.h"

namespace lumo {

/// The head of one uv group.
class AUVXGroup {
 public:
  [[nodiscard]] double u() const { return record_.u; }
  [[nodiscard]] double v() const { return record_.v; }
  [[nodiscard]] int freqSel() const { return record_.freqSel; }
  [[nodiscard]] const UvxRecord& record() const { return record_; }
  /// Reads the head of the file's current group. Returns 0 when there is none.
  int load(const AUVXFile& file);

 private:
  UvxRecord record_;
};

}  // namespace lumo
