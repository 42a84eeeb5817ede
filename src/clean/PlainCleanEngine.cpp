// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/PlainCleanEngine.h"

#include <algorithm>

namespace lumo {

void PlainCleanEngine::prepare() {
  mapData_.clear();
  for (AMatrix<float>* map : residuals()) mapData_.push_back(map->data());
  beamData_.clear();
  for (const AMatrix<float>* beam : beams()) beamData_.push_back(beam->data());
  pixel_.assign(static_cast<std::size_t>(terms()), 0.0);
  solution_.assign(static_cast<std::size_t>(terms()), 0.0);
}

template <int kTerms>
double PlainCleanEngine::solve(std::size_t offset) {
  const std::int32_t count = kTerms != 0 ? kTerms : terms();
  const double* const inverse = beamMatrix().inverse().data();
  const float* const* const maps = mapData_.data();
  double* const r = pixel_.data();
  double* const a = solution_.data();
  for (std::int32_t k = 0; k < count; ++k) r[k] = static_cast<double>(maps[k][offset]);
  double sum = 0.0;
  for (std::int32_t j = count - 1; j >= 0; --j) {
    const double* const row = inverse + static_cast<std::ptrdiff_t>(j) * count;
    double value = 0.0;
    for (std::int32_t k = 0; k < count; ++k) value += r[k] * row[k];
    a[j] = value;
    sum += r[j] * value;
  }
  return sum;
}

template <int kTerms>
bool PlainCleanEngine::searchTerms(double gain, CleanStep& step) {
  const std::int32_t count = kTerms != 0 ? kTerms : terms();
  const std::uint32_t rows = residuals()[0]->rows();
  const std::uint32_t columns = residuals()[0]->columns();
  const float* const intensity = components()[0].data();
  const AArray<double>& v = beamMatrix().constraint();
  const double q = beamMatrix().q();
  const bool nonNegative = parameters().nonNegative;
  const double* const a = solution_.data();
  const double h = 2.0 - gain;
  const double scale = h * gain;

  double best = 0.0;
  bool found = false;
  std::size_t offset = 0;
  for (std::uint32_t row = 0; row < rows; ++row) {
    for (std::uint32_t column = 0; column < columns; ++column, ++offset) {
      double score = solve<kTerms>(offset) * scale;
      const double current = static_cast<double>(intensity[offset]);
      const double tentative = a[0] * gain + current;
      double factor = 0.0;
      if (nonNegative && tentative < 0.0) {
        score -= (h * a[0] + current) * (tentative * q);
        factor = tentative;
      }
      // Written so that a score that is not a number is chosen.
      if (best > score) continue;
      best = score;
      found = true;
      step.row = row;
      step.column = column;
      step.score = score;
      step.residual = static_cast<double>(residuals()[0]->data()[offset]);
      for (std::int32_t j = 0; j < count; ++j)
        step.increments[static_cast<std::size_t>(j)] = gain * a[j] - factor * v[j];
    }
  }
  return found;
}

template <int kTerms>
void PlainCleanEngine::subtractTerms(const CleanStep& step) {
  const std::int64_t rows = residuals()[0]->rows();
  const std::int64_t columns = residuals()[0]->columns();
  const std::int64_t beamRows = beams()[0]->rows();
  const std::int64_t beamColumns = beams()[0]->columns();
  const std::int64_t firstRow = beamRows / 2 - step.row;
  const std::int64_t firstColumn = beamColumns / 2 - step.column;
  // The one wrap of the beam's columns cuts a map row in two: what comes after it starts at beam column 0.
  const bool wrapsBelow = firstColumn < 0;
  const std::int64_t cut = std::min(columns, wrapsBelow ? -firstColumn : beamColumns - firstColumn);
  const std::int64_t startColumn = wrapsBelow ? firstColumn + beamColumns : firstColumn;

  for (std::int64_t row = 0; row < rows; ++row) {
    std::int64_t beamRow = firstRow + row;
    if (beamRow < 0) {
      beamRow += beamRows;
    } else if (beamRow >= beamRows) {
      beamRow -= beamRows;
    }
    const auto map = static_cast<std::size_t>(row * columns);
    const auto beam = static_cast<std::size_t>(beamRow * beamColumns);
    subtractRun<kTerms>(step, map, beam + static_cast<std::size_t>(startColumn),
                        static_cast<std::size_t>(cut));
    subtractRun<kTerms>(step, map + static_cast<std::size_t>(cut), beam,
                        static_cast<std::size_t>(columns - cut));
  }
}

template <int kTerms>
void PlainCleanEngine::subtractRun(const CleanStep& step, std::size_t mapOffset, std::size_t beamOffset,
                                   std::size_t pixels) {
  const double* const increments = step.increments.data();
  const std::int32_t count = kTerms != 0 ? kTerms : terms();
  // The maps do not depend on each other, so each takes its whole run at once.
  for (std::int32_t k = 0; k < count; ++k) {
    float* const map = mapData_[static_cast<std::size_t>(k)] + mapOffset;
    const float* const* const response = beamData_.data() + k;  // of map k to term j: beam k + j
    for (std::size_t i = 0; i < pixels; ++i) {
      float value = map[i];
      for (std::int32_t j = 0; j < count; ++j) {
        const double beam = static_cast<double>(response[j][beamOffset + i]);
        value = static_cast<float>(static_cast<double>(value) - beam * increments[j]);
      }
      map[i] = value;
    }
  }
}

bool PlainCleanEngine::search(double gain, CleanStep& step) {
  switch (terms()) {
    case 1:
      return searchTerms<1>(gain, step);
    case 2:
      return searchTerms<2>(gain, step);
    case 3:
      return searchTerms<3>(gain, step);
    case 4:
      return searchTerms<4>(gain, step);
    default:
      return searchTerms<0>(gain, step);
  }
}

void PlainCleanEngine::subtract(const CleanStep& step) {
  switch (terms()) {
    case 1:
      return subtractTerms<1>(step);
    case 2:
      return subtractTerms<2>(step);
    case 3:
      return subtractTerms<3>(step);
    case 4:
      return subtractTerms<4>(step);
    default:
      return subtractTerms<0>(step);
  }
}

}  // namespace lumo
