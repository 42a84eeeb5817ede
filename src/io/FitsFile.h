// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fitsio.h>

#include <memory>
#include <string>

#include "core/Status.h"

namespace lumo {

struct FitsCloser {
  void operator()(fitsfile* file) const;
};

/// An open cfitsio file, closed with its owner. Belongs to one thread at a time.
using FitsHandle = std::unique_ptr<fitsfile, FitsCloser>;

/// The failure of a cfitsio call: `what`, then cfitsio's short text for its error number. Clears cfitsio's
/// message stack; its longer messages are not used because all threads share that stack.
[[nodiscard]] Status fitsFailure(int error, StatusCode code, const std::string& what);

/// A path for cfitsio, which skips leading blanks and expands a leading "~" even in names it is told to take
/// as they stand.
[[nodiscard]] std::string literalFitsPath(const std::string& path);

/// Opens a FITS file for reading at its primary HDU, by plain file name: nothing in the name is special.
/// cfitsio trusts headers and unpacks compressed files into memory, so the file must have passed
/// readFitsHeader().
[[nodiscard]] Status openFits(const std::string& path, FitsHandle& file);

}  // namespace lumo
