// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "imaging/MakeParametersModel.h"

namespace lumo {

/// How the sheet of the imaging parameters speaks of a field.
struct MakeFieldTexts {
  const char* title;    ///< in messages
  const char* toolTip;  ///< meaning, unit and range
};

[[nodiscard]] const MakeFieldTexts& makeFieldTexts(MakeField field);

}  // namespace lumo
