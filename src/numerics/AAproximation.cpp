// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/AAproximation.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "numerics/NormalEquations.h"

namespace lumo {

AAproximation::AAproximation(int termCount)
    : termCount_(termCount),
      basis_(static_cast<std::size_t>(std::max(termCount, 0))),
      coef_(static_cast<std::size_t>(std::max(termCount, 0))) {}

double AAproximation::valueAt(float x) const {
  basisAt(basis_.data(), termCount_, x * scale_ + offset_);
  float sum = 0.0F;
  for (std::size_t k = 0; k < coef_.size(); ++k) sum += coef_[k] * basis_[k];
  return sum;
}

int AAproximation::fit(const float* x, const float* y, int first, int last) {
  std::fill(coef_.begin(), coef_.end(), 0.0F);
  const std::int64_t points = static_cast<std::int64_t>(last) - first + 1;
  const std::string found = std::to_string(std::max<std::int64_t>(points, 0)) + " points";
  const std::string series = "a series of " + std::to_string(termCount_) + " terms";
  if (points < 2) return fail(1, "a fit needs at least 2 points, found " + found);
  if (termCount_ < 1) return fail(2, series + " cannot be fitted: it needs at least 1 term");
  if (termCount_ > points) return fail(3, series + " needs as many points, found " + found);

  scaleArgument(x, y, first, last);
  beginFit(static_cast<int>(points));
  NormalEquations equations(static_cast<std::uint32_t>(termCount_));
  for (int i = first; i <= last; ++i) {
    basisAt(basis_.data(), termCount_, x[i] * scale_ + offset_);
    equations.add(basis_.data(), y[i]);
  }
  if (!equations.solve(coef_.data()))
    return fail(4, found + " do not determine " + series + ": its equations are singular");
  endFit(coef_.data(), coef_.data());
  status_ = Status();
  return 0;
}

void AAproximation::basisAt(float* /*out*/, int /*n*/, float /*t*/) const {}

void AAproximation::scaleArgument(const float* /*x*/, const float* /*y*/, int /*first*/, int /*last*/) {
  setScaling(1.0F, 0.0F);
}

void AAproximation::setScaling(float scale, float offset) {
  scale_ = scale;
  offset_ = offset;
}

int AAproximation::fail(int code, const std::string& why) {
  status_ = Status(code == 2 ? StatusCode::kInvalidValue : StatusCode::kNoData, why);
  return code;
}

}  // namespace lumo
