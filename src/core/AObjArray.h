// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AArray.h"

namespace lumo {

/// AArray for elements with resources of their own (strings, masks, matrices): they are constructed when
/// storage is allocated and destroyed when it is released.
template <typename T>
class AObjArray : public AArray<T> {
 public:
  AObjArray() = default;
  explicit AObjArray(std::int32_t count) { this->construct(count); }
  AObjArray(const AObjArray& other) : AArray<T>() { this->copyFrom(other); }
  AObjArray(AObjArray&& other) noexcept { this->swap(other); }
  AObjArray& operator=(const AObjArray& other) {
    if (this != &other) {
      this->Clear();
      this->copyFrom(other);
    }
    return *this;
  }
  AObjArray& operator=(AObjArray&& other) noexcept {
    this->swap(other);
    return *this;
  }
  ~AObjArray() override { this->releaseStorage(); }

 protected:
  T* allocate(std::int32_t n) override { return new T[static_cast<std::size_t>(n)]; }
  void release(T* storage) override { delete[] storage; }
};

}  // namespace lumo
