// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace lumo {

/// Growable array of plain values, the list type of a run's per-file data.
///
/// Grows by a fixed step, never geometrically, and never shrinks its storage. There is no bounds checking.
/// AArray itself allocates raw storage, so T must be trivially copyable; AObjArray constructs its elements.
/// Copies are deep. Not safe for concurrent modification.
template <typename T>
class AArray {
 public:
  /// How many elements a full array grows by.
  static constexpr std::int32_t kGrowStep = 256;

  AArray() = default;
  /// An array of `count` elements of unspecified value; a negative count gives an empty array.
  explicit AArray(std::int32_t count) { construct(count); }
  AArray(const AArray& other) { copyFrom(other); }
  AArray(AArray&& other) noexcept { swap(other); }
  AArray& operator=(const AArray& other) {
    if (this != &other) {
      Clear();
      copyFrom(other);
    }
    return *this;
  }
  AArray& operator=(AArray&& other) noexcept {
    swap(other);
    return *this;
  }
  virtual ~AArray() { release(data_); }

  [[nodiscard]] std::int32_t count() const { return count_; }
  [[nodiscard]] std::int32_t capacity() const { return capacity_; }
  [[nodiscard]] bool empty() const { return count_ == 0; }
  T& operator[](std::int32_t index) { return data_[index]; }
  const T& operator[](std::int32_t index) const { return data_[index]; }
  T* begin() { return data_; }
  T* end() { return data_ + count_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + count_; }

  /// Inserts before `index` (0..count); appending is InsertAt(count(), value). Returns the index.
  std::int32_t InsertAt(std::int32_t index, const T& value) {
    // The argument may live in this array's own storage, which growing releases.
    T kept(value);
    if (count_ >= capacity_) {
      const std::int32_t grown = capacity_ + growStep_ > count_ ? capacity_ + growStep_ : count_ + growStep_;
      reallocate(grown);
      capacity_ = grown;
    }
    for (std::int32_t i = count_; i > index; --i) data_[i] = std::move(data_[i - 1]);
    data_[index] = std::move(kept);
    ++count_;
    return index;
  }

  /// Removes the element at `index`; anything from the last index on only shortens the array to `index`.
  /// Returns the new count. Storage stays.
  std::int32_t RemoveAt(std::int32_t index) {
    if (index + 1 >= count_) {
      count_ = index;
    } else {
      for (std::int32_t i = index; i + 1 < count_; ++i) data_[i] = std::move(data_[i + 1]);
      --count_;
    }
    return count_;
  }

  /// Sets the count. When storage has to grow, the capacity is recorded as the *old count*: the next growth
  /// starts again from there. This is the arrays' rule, not an oversight. A negative count counts as 0.
  void SetSize(std::int32_t count) {
    count = std::max(count, 0);
    if (capacity_ < count) {
      const std::int32_t oldCount = count_;
      // The recorded capacity may be below the count, so "growing" can ask for less than is in use.
      reallocate(std::max(count, oldCount));
      capacity_ = oldCount;
    }
    count_ = count;
  }

  /// Releases the storage; count and capacity become 0.
  void Clear() {
    release(data_);
    data_ = nullptr;
    count_ = capacity_ = 0;
  }

 protected:
  /// Storage for n elements.
  virtual T* allocate(std::int32_t n) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): an array of pointers stores the pointers
    return static_cast<T*>(::operator new(sizeof(T) * static_cast<std::size_t>(n)));
  }
  /// Gives storage from allocate() back; null is allowed.
  virtual void release(T* storage) { ::operator delete(storage); }

  void construct(std::int32_t count) {
    if (count <= 0) return;
    data_ = allocate(count);
    count_ = capacity_ = count;
  }
  void copyFrom(const AArray& other) {
    if (other.count_ <= 0) return;
    data_ = allocate(other.count_);
    for (std::int32_t i = 0; i < other.count_; ++i) data_[i] = other.data_[i];
    count_ = capacity_ = other.count_;
  }
  void swap(AArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(count_, other.count_);
    std::swap(capacity_, other.capacity_);
  }
  /// For destructors of classes that override release(): theirs must run before the base's.
  void releaseStorage() { Clear(); }

 private:
  void reallocate(std::int32_t n) {
    T* const fresh = allocate(n);
    for (std::int32_t i = 0; i < count_; ++i) fresh[i] = std::move(data_[i]);
    release(data_);
    data_ = fresh;
  }

  std::int32_t count_ = 0;
  std::int32_t capacity_ = 0;
  std::int32_t growStep_ = kGrowStep;
  T* data_ = nullptr;
};

}  // namespace lumo
