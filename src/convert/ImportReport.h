// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/UvxStatistics.h"
#include "io/UvxTables.h"

namespace lumo {

/// What an import asks for.
struct ImportOptions {
  std::string outFolder;           ///< created when missing
  std::string source;              ///< name of the one source to import, empty for all
  std::vector<std::string> taken;  ///< paths that earlier imports of one command wrote: never written again
  /// Column of a Measurement Set with the visibilities, "data" and "corrected" for the usual two; empty takes
  /// CORRECTED_DATA where there is one, else DATA.
  std::string column = {};
  std::uint32_t average = 0;  ///< channels averaged into an IF of their own each; 0 leaves IFs as they are
  std::vector<std::string> inputs = {};  ///< all of one command: never written over
};

struct ImportedFile {
  std::string path;
  std::string source;
  UvxShape shape;
  UvxProducts products;
  std::uint64_t records = 0;
  std::uint64_t flaggedRecords = 0;
  std::vector<UvxBand> bands;  ///< selection by selection, IF by IF
};

/// What an import did, as plain data for any front end.
struct ImportReport {
  std::string input;
  std::vector<ImportedFile> files;
  std::uint64_t groups = 0;            ///< read from the input
  std::uint64_t autocorrelations = 0;  ///< of them left out because both antennas are the same
  std::vector<std::string> notes;      ///< what was done to the data, as sentences
  std::vector<std::string> warnings;   ///< what the user should look at, as sentences
};

}  // namespace lumo
