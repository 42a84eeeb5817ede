// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "convert/ImportReport.h"
#include "convert/UvfitsAxes.h"
#include "convert/UvfitsFile.h"
#include "core/Status.h"
#include "io/UvxTables.h"

namespace lumo {

// The extension tables of a random-groups visibility file. Each function moves the file to the tables it
// reads; what it leaves current is not defined.

/// One frequency set-up: where its IFs lie relative to the FREQ axis.
struct UvfitsSetup {
  std::int32_t id = 1;
  std::vector<double> offset;     ///< Hz, per IF
  std::vector<double> increment;  ///< Hz from channel to channel, signed, per IF
};

/// A source and its own frequency offsets.
struct UvfitsSource {
  AUVXSourceItem item;
  std::vector<double> frequencyOffset;  ///< Hz, per IF; empty where there is none
};

/// Stations, and the difference between the file's times and UTC.
struct UvfitsStations {
  std::vector<UvxAntenna> antennas;
  double secondsFromUtc = 0;  ///< file time minus UTC
};

/// Reads the set-ups of table "AIPS FQ". Its channel widths override the FREQ axis; the increment is the
/// width as given, but minus its magnitude where SIDEBAND is negative (a disagreement of the two signs is
/// reported). Without the table one IF is one set-up with ID 1; more IFs fail.
[[nodiscard]] Status readUvfitsSetups(UvfitsFile& file, const UvfitsAxes& axes,
                                      std::vector<UvfitsSetup>& setups, ImportReport& report);

/// Reads table "AIPS SU"; empty when there is none.
[[nodiscard]] Status readUvfitsSources(UvfitsFile& file, const UvfitsAxes& axes,
                                       std::vector<UvfitsSource>& sources, ImportReport& report);

/// The one source that the primary header describes: OBJECT, the RA and DEC axes, EQUINOX or EPOCH, RADESYS.
[[nodiscard]] Status readUvfitsHeaderSource(UvfitsFile& file, const UvfitsAxes& axes, UvfitsSource& source,
                                            ImportReport& report);

/// Reads the tables "AIPS AN", of several subarrays the first entry of each antenna number. Imaging does not
/// need them, so one that is missing or damaged is only reported.
[[nodiscard]] UvfitsStations readUvfitsStations(UvfitsFile& file, ImportReport& report);

/// Frequency of channel 0 and increment of every IF for a set-up and a source, Hz:
/// CRVAL + IF FREQ + FREQOFF + (1 - CRPIX) increment. Fails when a channel's frequency is not positive.
[[nodiscard]] Status uvfitsSelection(const UvfitsAxes& axes, const UvfitsSetup& setup,
                                     const UvfitsSource& source, UvxSelection& selection);

}  // namespace lumo
