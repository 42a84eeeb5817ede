// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

/// Decimals of a second of arc with which a tenth of a cell can be told apart, 0..9; 1 where the cell is not
/// a positive number.
[[nodiscard]] int arcsecDecimals(double cellArcsec);

/// `decimals` digits (0..9) after a decimal point, whatever the locale; a zero has no minus sign.
[[nodiscard]] std::string fixedText(double value, int decimals);
/// "hh:mm:ss.s" with `decimals` decimals (0..9) of a second of time; rounds over to 00:00:00 at 24 h.
[[nodiscard]] std::string raText(double raDeg, int decimals);
/// "+dd:mm:ss.s" with `decimals` decimals (0..9) of a second of arc, always with its sign.
[[nodiscard]] std::string decText(double decDeg, int decimals);

}  // namespace lumo
