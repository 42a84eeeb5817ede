// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace lumo {

/// Basis functions of series at one argument: each routine writes n values into `out`, in single precision.

/// 1, t, t^2, ..., each the one before times t.
void powerBasis(float* out, int n, float t);

/// Chebyshev polynomials of the first kind, T_k = 2 t T_{k-1} - T_{k-2} from T_0 = 1 and T_1 = t.
void chebyshevBasis(float* out, int n, float t);

/// 1, sin t, cos t, sin 2t, cos 2t, ...; t in radians, computed in double and rounded.
void trigonometricBasis(float* out, int n, float t);

/// An argument t = x scale + offset.
struct ArgumentScaling {
  float scale = 1.0F;
  float offset = 0.0F;
};

/// The scaling that maps the smallest to the largest of x[first .. last] onto [-1, 1]; needs first <= last.
/// Equal abscissae have no such scaling: the scale is infinite then.
[[nodiscard]] ArgumentScaling chebyshevScaling(const float* x, int first, int last);

}  // namespace lumo
