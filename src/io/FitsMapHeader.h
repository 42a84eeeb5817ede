// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "io/FitsCards.h"
#include "io/FitsMapAxes.h"

namespace lumo {

/// True for the header of a map that this program wrote: it carries the exact values.
[[nodiscard]] bool hasExactValues(const FitsCards& cards);

/// The record of an image. Each exact value is taken as long as the standard keywords that say the same still
/// agree with it: a program that cut, smoothed or moved the image keeps the cards that it does not know.
void readRecord(const FitsCards& cards, const ImageShape& shape, const MapLayout& layout, AMapHeader& header,
                TMinMax& range);

}  // namespace lumo
