// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/Status.h"

namespace lumo {

// The pieces of the text of a DS9 region file, before they mean anything on a map.

/// One statement: a frame, a shape, or the defaults. Comment lines are not statements.
struct RegionStatement {
  std::size_t line = 0;         ///< from 1
  std::string_view body;        ///< in front of the "#", trimmed, not empty
  std::string_view properties;  ///< behind it
};
/// Takes the statements of a file one by one: it is split at line ends (of any system) and semicolons, but
/// not at those inside the text of a property. Ends with the first status of `take` that is not ok.
[[nodiscard]] Status forEachRegionStatement(std::string_view text,
                                            const std::function<Status(const RegionStatement&)>& take);

/// The value of text={...}, text="..." or text='...'; empty without one.
[[nodiscard]] std::string regionName(std::string_view properties);
/// A property that gives an area this name, with a blank in front; empty for an empty name.
[[nodiscard]] std::string regionNameText(const std::string& name);

/// A size or plain number with the letter or quote that gives its unit: one of " ' d r i p, or 0 for none.
struct RegionNumber {
  double value = 0.0;
  char unit = 0;
};
/// Nothing when the text is not a finite number with at most one unit.
[[nodiscard]] std::optional<RegionNumber> regionNumber(std::string_view text);

/// The rotation of an area (from east towards north) whose angle a sky frame gives, and the other way round:
/// angles run from west towards north.
[[nodiscard]] inline double skyRotation(double angle) {
  return angle == 0.0 ? 0.0 : -angle;
}

/// An angle on the sky in degrees: decimal degrees, "d" or "r" behind it, or sexagesimal with colons or with
/// the letters h or d, m, s. With `hours`, colons mean hours, minutes and seconds of time.
[[nodiscard]] std::optional<double> regionAngle(std::string_view text, bool hours);

}  // namespace lumo
