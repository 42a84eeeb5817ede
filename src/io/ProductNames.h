// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "core/TextForm.h"

namespace lumo {

// Names of the files of one run: work folder (with its separator) + prefix + suffix, by plain concatenation.
// The suffix begins with a literal "^", which separates the user's prefix from the product's own name. k
// counts spectral terms or beam orders from 0.

/// Dirty map of term k.
[[nodiscard]] inline std::string dirtyMapName(const std::string& folder, const std::string& prefix,
                                              std::int32_t k) {
  return folder + prefix + "^dm" + toStr(k) + ".exm";
}
/// Dirty beam of order k.
[[nodiscard]] inline std::string beamName(const std::string& folder, const std::string& prefix,
                                          std::int32_t k) {
  return folder + prefix + "^bm" + toStr(k) + ".exm";
}
/// Restored map of term k.
[[nodiscard]] inline std::string cleanName(const std::string& folder, const std::string& prefix,
                                           std::int32_t k) {
  return folder + prefix + "^cln" + toStr(k) + ".exm";
}
/// Restored map of term k with its residuals added.
[[nodiscard]] inline std::string cleanResName(const std::string& folder, const std::string& prefix,
                                              std::int32_t k) {
  return folder + prefix + "^cln_res" + toStr(k) + ".exm";
}
/// Residual map of term 0, the only one that is written.
[[nodiscard]] inline std::string residualName(const std::string& folder, const std::string& prefix) {
  return folder + prefix + "^residual0.exm";
}
/// Spectral-index map.
[[nodiscard]] inline std::string indexName(const std::string& folder, const std::string& prefix) {
  return folder + prefix + "^sindex.exm";
}
/// Standard deviation of the spectral index.
[[nodiscard]] inline std::string indexErrorName(const std::string& folder, const std::string& prefix) {
  return folder + prefix + "^sindex_err.exm";
}
/// Text file with the frequency range.
[[nodiscard]] inline std::string freqRangeName(const std::string& folder, const std::string& prefix) {
  return folder + prefix + "^freqrange.txt";
}

}  // namespace lumo
