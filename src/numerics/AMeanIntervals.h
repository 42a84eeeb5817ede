// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/TMinMax.h"

namespace lumo {

/// Means of values around n evenly spaced nodes, the first at rangeMin and the last at rangeMax.
///
///     add() for every value, then finish() once
class AMeanIntervals {
 public:
  struct Range {
    double min = TMinMax::kUnsetMin;
    double max = TMinMax::kUnsetMax;
  };

  /// @param n number of nodes, at least 1. A single node lies at the range's minimum and takes every value.
  /// @param range minimum below maximum.
  AMeanIntervals(int n, Range range);
  AMeanIntervals(const AMeanIntervals&) = default;
  AMeanIntervals& operator=(const AMeanIntervals&) = default;
  virtual ~AMeanIntervals() = default;

  /// Adds the value v to the node nearest to x; half-way between two nodes it is the upper one. x has to lie
  /// in the range: that is only asserted, not checked.
  void add(double x, double v);

  /// Drops the nodes that got no value, so n may become smaller, and turns sums into means. The nodes that
  /// stay keep their place on the axis.
  void finish();

  [[nodiscard]] double rangeMin() const { return rangeMin_; }
  [[nodiscard]] double rangeMax() const { return rangeMax_; }
  [[nodiscard]] std::int32_t n() const { return n_; }
  /// Sums of the values, [n]; after finish() their means.
  [[nodiscard]] std::span<const double> sum() const { return nodes(sum_); }
  /// Numbers of values, [n]; after finish() the positions of the nodes.
  [[nodiscard]] std::span<const double> count() const { return nodes(count_); }
  /// Sums, sums of squares and numbers of values, [n], which finish() does not change.
  [[nodiscard]] std::span<const double> sumRaw() const { return nodes(sumRaw_); }
  [[nodiscard]] std::span<const double> sumSq() const { return nodes(sumSq_); }
  [[nodiscard]] std::span<const double> countRaw() const { return nodes(countRaw_); }

 private:
  [[nodiscard]] std::span<const double> nodes(const std::vector<double>& array) const {
    return {array.data(), static_cast<std::size_t>(n_)};
  }

  double rangeMin_;
  double rangeMax_;
  std::vector<double> sum_;
  std::vector<double> count_;
  std::vector<double> sumRaw_;
  std::vector<double> sumSq_;
  std::vector<double> countRaw_;
  std::int32_t n_;
};

}  // namespace lumo
