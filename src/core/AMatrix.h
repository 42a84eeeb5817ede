// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "core/LargePages.h"

namespace lumo {

/// Dense matrix, row-major: element (row, column) lies at data()[columns() * row + column].
///
/// Every image of the system is one. Maps: row 0 is the southernmost row, column 0 the westernmost column,
/// so row index grows to the north and column index to the east; NaN marks a pixel without a value.
/// Copies are deep. Elements start at T{}.
template <typename T>
class AMatrix {
 public:
  AMatrix() = default;
  AMatrix(std::uint32_t rows, std::uint32_t columns)
      : rows_(rows), columns_(columns), data_(static_cast<std::size_t>(rows) * columns) {}
  AMatrix(const AMatrix&) = default;
  AMatrix& operator=(const AMatrix&) = default;
  AMatrix(AMatrix&& other) noexcept { swap(other); }
  /// The other matrix becomes 0 × 0.
  AMatrix& operator=(AMatrix&& other) noexcept {
    AMatrix taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~AMatrix() = default;

  [[nodiscard]] std::uint32_t rows() const { return rows_; }
  [[nodiscard]] std::uint32_t columns() const { return columns_; }
  /// Number of elements.
  [[nodiscard]] std::size_t size() const { return data_.size(); }
  [[nodiscard]] T* data() { return data_.data(); }
  [[nodiscard]] const T* data() const { return data_.data(); }
  T& operator()(std::uint32_t row, std::uint32_t column) {
    return data_[static_cast<std::size_t>(columns_) * row + column];
  }
  const T& operator()(std::uint32_t row, std::uint32_t column) const {
    return data_[static_cast<std::size_t>(columns_) * row + column];
  }

  /// Sets the size; every element becomes T{}.
  void resize(std::uint32_t rows, std::uint32_t columns) {
    rows_ = rows;
    columns_ = columns;
    Storage().swap(data_);  // first, so that both are never there
    Storage(static_cast<std::size_t>(rows) * columns).swap(data_);
  }
  /// Frees the storage; the matrix becomes 0 × 0.
  void clear() {
    rows_ = columns_ = 0;
    Storage().swap(data_);
  }

 private:
  using Storage = std::vector<T, LargePages<T>>;

  void swap(AMatrix& other) noexcept {
    std::swap(rows_, other.rows_);
    std::swap(columns_, other.columns_);
    data_.swap(other.data_);
  }

  std::uint32_t rows_ = 0;
  std::uint32_t columns_ = 0;
  Storage data_;
};

}  // namespace lumo
