// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "analysis/SpectrumCurve.h"
#include "core/Status.h"

namespace lumo {

/// Writes a spectrum graph to a picture whose extension says how: .png, .pdf or .svg. Needs a QApplication
/// (the offscreen platform will do), but shows no window.
[[nodiscard]] Status drawSpectrum(SpectrumGraph graph, const std::string& path);

}  // namespace lumo
