// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AArray.h"

namespace lumo {

template <typename P>
class APtrArray;

/// Array of pointers that, while its owning flag is set (it is at construction), deletes every pointee when
/// it is destroyed. Removing an element or clearing the array does not delete. Cannot be copied: two owners
/// would delete twice.
template <typename T>
class APtrArray<T*> : public AArray<T*> {
 public:
  APtrArray() = default;
  APtrArray(const APtrArray&) = delete;
  APtrArray& operator=(const APtrArray&) = delete;
  ~APtrArray() override {
    if (owning_ != 0)
      for (T* pointee : *this) delete pointee;
  }

  [[nodiscard]] std::int32_t owning() const { return owning_; }
  void setOwning(std::int32_t owning) { owning_ = owning; }

 private:
  std::int32_t owning_ = 1;
};

}  // namespace lumo
