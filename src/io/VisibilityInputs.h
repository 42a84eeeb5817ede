// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "core/AArray.h"
#include "core/ABitArray.h"
#include "core/AObjArray.h"
#include "io/AStokesMix.h"
#include "io/AUVXFqTbl.h"

namespace lumo {

/// What a run takes from each visibility file: five parallel arrays of equal length, in list order. A
/// copyable value.
struct VisibilityInputs {
  AObjArray<std::string> names;     ///< full paths
  AObjArray<AUVXFqTbl> tables;      ///< frequency table, built for the file's one source
  AObjArray<ABitArray> selections;  ///< one bit per frequency selection; set = used
  AArray<AStokesMix> mixes;         ///< how the stored products are combined
  AArray<std::int32_t> sources;     ///< ID of the file's one source

  [[nodiscard]] std::int32_t count() const { return names.count(); }
};

}  // namespace lumo
