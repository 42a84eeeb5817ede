// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/SpectralIndexMap.h"

#include <cmath>
#include <limits>

#include "core/TextForm.h"
#include "io/MapProduct.h"

namespace lumo {

float spectralIndex(float zero, float first, const SpectralIndexRule& rule) {
  constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
  if (!(std::abs(zero) >= rule.threshold)) return kNone;
  const float index = first / zero;
  return index > rule.highest || !(index >= rule.lowest) ? kNone : index;
}

Status makeSpectralIndexMap(AMatrix<float>& zero, const AMatrix<float>& first,
                            const SpectralIndexRule& rule) {
  if (zero.rows() != first.rows() || zero.columns() != first.columns())
    return {StatusCode::kBadFormat, "the zero-order CLEAN map has " + toStr(zero.rows()) + " x " +
                                        toStr(zero.columns()) + " pixels, the first-order one " +
                                        toStr(first.rows()) + " x " + toStr(first.columns())};
  for (std::size_t i = 0; i < zero.size(); ++i)
    zero.data()[i] = spectralIndex(zero.data()[i], first.data()[i], rule);
  return {};
}

Status writeSpectralIndexMap(const SpectralIndexFiles& files, double fraction, double lowest,
                             double highest) {
  LoadedMap zero;
  LoadedMap first;
  if (Status status = readMap(files.zero, zero); !status.ok()) return status;
  if (Status status = readMap(files.first, first); !status.ok()) return status;
  const SpectralIndexRule rule{fraction * zero.range.vMax, lowest, highest};
  if (Status status = makeSpectralIndexMap(*zero.matrix, *first.matrix, rule); !status.ok())
    return status.about(files.first);
  zero.header.unit = "Sp. Index";
  zero.header.kind = MapKind::kSpectralIndex;
  return writeMap(files.index, zero.header, zero.range, *zero.matrix);
}

}  // namespace lumo
