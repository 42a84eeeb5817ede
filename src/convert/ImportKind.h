// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

enum class ImportKind { kNone, kUvfits, kMeasurementSet };

/// Something that importVisibilities() takes.
struct Importable {
  ImportKind kind = ImportKind::kNone;
  std::string input;  ///< what to hand to it; empty for kNone
};

/// What a path stands for, as far as its beginning tells: damage further in shows in the import. A file whose
/// FITS header announces random groups is a UVFITS file. A folder that calls itself a Measurement Set in its
/// table.info is one, and a file dialog may give any table file in it, or in one of its subtables, for the
/// whole: `input` is the set's folder then. Reads 288 kB of a file at most.
[[nodiscard]] Importable importableAt(const std::string& path);

}  // namespace lumo
