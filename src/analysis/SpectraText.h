// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "analysis/MeanSigmaTable.h"
#include "analysis/SpectrumCurve.h"

namespace lumo {

// Spectra as text files for other programs: numbers with all their digits, whatever the locale; what is not
// finite stands as "nan", "inf" or "-inf".

/// The points of a graph as columns between single blanks: frequency, then flux density and error of every
/// curve.
///
///     # frequency[Hz] flux_density_1[Jy] error_1[Jy] flux_density_2[Jy] error_2[Jy]
///     # curve 1: Reference freq: 1500[MHz], ...
///     1400000000 0.25 0.01 0.5 0.01
///
/// The units are those of the axes' titles. Where the curves do not share their frequencies, each has rows of
/// its own, with "nan" in the columns of the others.
[[nodiscard]] std::string spectrumColumns(const SpectrumGraph& graph);

/// The table as comma-separated values (RFC 4180, lines end with "\n"): its column headers behind "Frequency
/// [Hz]", then a row for each frequency. A field with a comma, a quotation mark or a line end stands in
/// quotation marks.
[[nodiscard]] std::string tableCsv(const MeanSigmaTable& table);

}  // namespace lumo
