// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Progress.h"

#include <algorithm>

namespace lumo {

void AProgress::SetPos(double done) {
  if (bar_ == nullptr) return;
  // A range of 0 has nothing left to do. NaN, which a clamp would let through, must not reach the conversion.
  const double percent = range_ > 0.0 ? done / range_ * 100.0 + 0.5 : 100.0;
  const int shown = percent > 0.0 ? static_cast<int>(std::min(percent, 100.0)) : 0;
  if (shown == last_) return;
  last_ = shown;
  bar_->setPos(shown);
}

}  // namespace lumo
