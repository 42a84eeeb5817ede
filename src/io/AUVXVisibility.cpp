// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXVisibility.h"

#include <cstring>

namespace lumo {

AUVXVisibility::AUVXVisibility(const AUVXFile& file)
    : channels_(file.shape().channels),
      products_(file.shape().products),
      // A file without groups may claim any shape; nothing is ever loaded from it.
      values_(file.groupCount() == 0 ? 0 : static_cast<std::size_t>(file.shape().visibilities())) {}

int AUVXVisibility::load(const AUVXFile& file) {
  if (file.group() == nullptr) return 0;
  std::memcpy(values_.data(), file.group() + UvxRecord::kBytes, values_.size() * sizeof(AUVXComplex));
  return 1;
}

}  // namespace lumo
