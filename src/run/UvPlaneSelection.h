// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "imaging/UvPlaneData.h"
#include "run/UvxFileList.h"

namespace lumo {

/// What the picture of the uv plane shows of a file list: its selection and what the survey found.
[[nodiscard]] UvPlaneData uvPlaneSelection(const UvxFileList& list);

}  // namespace lumo
