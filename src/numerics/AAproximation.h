// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/Status.h"
#include "numerics/ABAproximation.h"

namespace lumo {

/// Linear least squares with termCount basis functions: y = sum of coef[k] phi_k(t), t = x scale + offset.
///
/// A concrete series overrides basisAt(), and scaleArgument() if its functions want t in a certain interval:
///
///     coef = 0;  leave with 1, 2 or 3 if the points cannot determine the terms
///     scaleArgument(x, y, first, last);  beginFit(number of points)
///     accumulate the normal equations without weights, basisAt(t) for every point
///     solve them;  leave with 4 if they are singular
///     endFit(coef, coef)
///
/// Sums and elimination are single precision. That is enough for a handful of terms on a scaled argument;
/// powers of an unscaled one lose their digits quickly. One object serves one thread at a time, also for
/// valueAt(): the basis values of a point are kept in it.
class AAproximation : public ABAproximation {
 public:
  /// A fitter of `termCount` terms, all coefficients 0, scale 1, offset 0. Below 1 no fit succeeds.
  explicit AAproximation(int termCount);

  /// The fitted series at x, summed in single precision.
  [[nodiscard]] double valueAt(float x) const override;

  /// @return 0 on success; 1 fewer than two points; 2 no term; 3 more terms than points; 4 singular normal
  ///   equations (a pivot below 1e-15). status() says it in words. After 1, 2 and 3 the coefficients are 0,
  ///   after 4 they are unspecified.
  int fit(const float* x, const float* y, int first, int last) override;

  [[nodiscard]] int termCount() const { return termCount_; }
  /// The fitted coefficients, [termCount].
  [[nodiscard]] std::span<const float> coef() const { return coef_; }
  [[nodiscard]] float scale() const { return scale_; }
  [[nodiscard]] float offset() const { return offset_; }
  /// How the last fit ended.
  [[nodiscard]] const Status& status() const { return status_; }

 protected:
  /// Writes phi_0(t) .. phi_{n-1}(t) into `out`. A series has to override it: here it does nothing.
  virtual void basisAt(float* out, int n, float t) const;
  /// Sets scale and offset for the coming fit, here to 1 and 0.
  virtual void scaleArgument(const float* x, const float* y, int first, int last);
  /// Free for a series of its own; nothing calls it.
  virtual void spareHook() {}
  /// Called before the normal equations are built.
  virtual void beginFit(int /*pointCount*/) {}
  /// Called after a successful solve with the coefficients as both arguments: the place to transform them.
  virtual void endFit(const float* /*coefIn*/, float* /*coefOut*/) {}

  void setScaling(float scale, float offset);

 private:
  int fail(int code, const std::string& why);

  int termCount_;
  mutable std::vector<float> basis_;
  std::vector<float> coef_;
  float scale_ = 1.0F;
  float offset_ = 0.0F;
  Status status_;
};

}  // namespace lumo
