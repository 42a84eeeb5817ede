// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "clean/CandidateKernel.h"

namespace lumo {

/// The candidates of a TiledCleanEngine: the pixels that may have the best score of the maps in one of the
/// next iterations. Their residuals are those of the maps with no step lacking, whatever their tiles lack.
class CleanCandidates {
 public:
  /// Drops all. `maps` must outlive this. Memory for `capacity` >= 1 candidates.
  void prepare(const CleanTileMaps& maps, std::size_t capacity);
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::size_t capacity() const { return capacity_; }
  [[nodiscard]] std::size_t bytes() const;

  void follow(const CleanUpdate& step) { followCandidates(*maps_, step, view()); }
  [[nodiscard]] CandidateBest best(double gain) { return findBestCandidate(*maps_, gain, view(), nullptr); }
  /// r_0 .. r_{N-1} of a candidate.
  void residuals(std::size_t index, double* r) const;

  /// Takes away the candidates of the tiles for which condition(tile) holds.
  template <typename Condition>
  void removeWhere(const Condition& condition) {
    for (std::size_t i = 0; i < size_;)
      if (condition(tiles_[i]))
        move(--size_, i);
      else
        ++i;
  }
  /// Adds the map pixel at `offset` of a tile that lacks no step. Precondition: size() < capacity().
  void add(std::uint32_t tile, std::size_t offset);
  /// Keeps `count` <= size() of them, those of the best scores, and among equal ones the last in scan order.
  /// Calls leave(tile, score) for each of the others.
  template <typename Leave>
  void keepBest(std::size_t count, double gain, const Leave& leave) {
    sortOut(count, gain);
    for (std::size_t i = count; i < size_; ++i) leave(tiles_[order_[i]], scores_[order_[i]]);
    for (std::size_t i = 0; i < count; ++i) move(order_[i], i);
    size_ = count;
  }

 private:
  [[nodiscard]] CandidateView view();
  void sortOut(std::size_t count, double gain);
  void move(std::size_t from, std::size_t to);

  const CleanTileMaps* maps_ = nullptr;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
  std::vector<std::uint32_t> tiles_;
  std::vector<std::uint32_t> rows_;
  std::vector<std::uint32_t> columns_;
  std::vector<float> residuals_[kMaxTileTerms];
  std::vector<double> scores_;        ///< while some are left out
  std::vector<std::uint32_t> order_;  ///< those to keep, then the others
};

}  // namespace lumo
