// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/AMatrix.h"
#include "core/Status.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"
#include "io/FitsFile.h"
#include "io/FitsHeader.h"
#include "io/FitsMapAxes.h"

namespace lumo {

/// How the stored pixels become values.
struct PixelForm {
  bool integers = false;  ///< BLANK counts
  bool single = false;    ///< single precision as they stand
  double scale = 1.0;
  double zero = 0.0;
};

/// What the header of an image tells.
struct MapRecord {
  AMapHeader header;
  TMinMax range;
  MapLayout layout;
  PixelForm form;
};

/// Understands the header of an image. Fails when it is not one plane of the sky that this program reads, or
/// when the file is too short for the pixels that the header promises.
[[nodiscard]] Status readMapRecord(const FitsHeader& header, MapRecord& record);

/// Reads the pixels, as matrix rows from south to north and columns from west to east. Integer pixels equal
/// to BLANK become NaN. Resizes the matrix; readMapRecord() has bound its size by that of the file.
[[nodiscard]] Status readMapPixels(fitsfile* file, const MapRecord& record, AMatrix<float>& matrix);

}  // namespace lumo
