// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanCandidates.h"

#include <algorithm>
#include <numeric>

namespace lumo {

void CleanCandidates::prepare(const CleanTileMaps& maps, std::size_t capacity) {
  const std::size_t room = (capacity + kCandidateLanes - 1) / kCandidateLanes * kCandidateLanes;
  maps_ = &maps;
  size_ = 0;
  capacity_ = capacity;
  tiles_.assign(room, 0);
  rows_.assign(room, 0);
  columns_.assign(room, 0);
  for (std::int32_t k = 0; k < maps.terms; ++k) residuals_[k].assign(room, 0.0F);
  scores_.assign(room, 0.0);
  order_.assign(room, 0);
}

std::size_t CleanCandidates::bytes() const {
  std::size_t bytes = (tiles_.capacity() + rows_.capacity() + columns_.capacity() + order_.capacity()) *
                          sizeof(std::uint32_t) +
                      scores_.capacity() * sizeof(double);
  for (const std::vector<float>& map : residuals_) bytes += map.capacity() * sizeof(float);
  return bytes;
}

void CleanCandidates::residuals(std::size_t index, double* r) const {
  for (std::int32_t k = 0; k < maps_->terms; ++k) r[k] = static_cast<double>(residuals_[k][index]);
}

void CleanCandidates::add(std::uint32_t tile, std::size_t offset) {
  tiles_[size_] = tile;
  rows_[size_] = static_cast<std::uint32_t>(offset / maps_->mapColumns);
  columns_[size_] = static_cast<std::uint32_t>(offset % maps_->mapColumns);
  for (std::int32_t k = 0; k < maps_->terms; ++k) residuals_[k][size_] = maps_->maps[k][offset];
  ++size_;
}

void CleanCandidates::sortOut(std::size_t count, double gain) {
  static_cast<void>(findBestCandidate(*maps_, gain, view(), scores_.data()));
  const auto end = order_.begin() + static_cast<std::ptrdiff_t>(size_);
  const auto middle = order_.begin() + static_cast<std::ptrdiff_t>(count);
  std::iota(order_.begin(), end, 0U);
  std::nth_element(order_.begin(), middle, end, [this](std::uint32_t a, std::uint32_t b) {
    if (scores_[a] != scores_[b]) return scores_[a] > scores_[b];
    return rows_[a] != rows_[b] ? rows_[a] > rows_[b] : columns_[a] > columns_[b];
  });
  // In the order of before: an index is never below the place that it moves to.
  std::sort(order_.begin(), middle);
}

CandidateView CleanCandidates::view() {
  CandidateView view{size_, rows_.data(), columns_.data(), {}};
  for (std::int32_t k = 0; k < maps_->terms; ++k) view.residuals[k] = residuals_[k].data();
  return view;
}

void CleanCandidates::move(std::size_t from, std::size_t to) {
  tiles_[to] = tiles_[from];
  rows_[to] = rows_[from];
  columns_[to] = columns_[from];
  for (std::int32_t k = 0; k < maps_->terms; ++k) residuals_[k][to] = residuals_[k][from];
}

}  // namespace lumo
