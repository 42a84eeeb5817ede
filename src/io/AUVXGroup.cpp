// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXGroup.h"

namespace lumo {

int AUVXGroup::load(const AUVXFile& file) {
  if (file.group() == nullptr) return 0;
  record_ = UvxRecord::load(file.group());
  return 1;
}

}  // namespace lumo
