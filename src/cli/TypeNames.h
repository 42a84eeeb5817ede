// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "imaging/ABMakeParameters.h"

namespace lumo {

/// A value of the imaging block's type fields under the name that options and JSON give it.
struct TypeName {
  const char* name;
  std::int32_t value;
};

inline constexpr TypeName kWeightingNames[] = {{"natural", kNaturalWeighting},
                                               {"uniform", kUniformWeighting}};
inline constexpr TypeName kKernelNames[] = {
    {"pillbox", kKernelPillBox}, {"gauss", kKernelGauss}, {"lorentz", kKernelLorentz}, {"hat", kKernelHat}};
inline constexpr TypeName kTaperNames[] = {
    {"none", kTaperNone}, {"gauss", kTaperGauss}, {"lorentz", kTaperLorentz}, {"th", kTaperTh}};

/// The name of a value, "" if it has none.
[[nodiscard]] inline const char* nameOf(std::span<const TypeName> names, std::int32_t value) {
  for (const TypeName& entry : names)
    if (entry.value == value) return entry.name;
  return "";
}

/// Finds the value of a name; false (and `value` untouched) for an unknown one.
[[nodiscard]] inline bool valueOf(std::span<const TypeName> names, std::string_view name,
                                  std::int32_t& value) {
  for (const TypeName& entry : names) {
    if (name != entry.name) continue;
    value = entry.value;
    return true;
  }
  return false;
}

/// "a, b or c".
[[nodiscard]] inline std::string listed(std::span<const TypeName> names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i)
    text.append(i == 0 ? "" : i + 1 == names.size() ? " or " : ", ").append(names[i].name);
  return text;
}

}  // namespace lumo
