// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "io/UvxTables.h"

namespace lumo {

class AMapFile;

/// What kind of values a map holds; becomes BTYPE.
enum class MapKind { kIntensity, kBeam, kSpectralIndex, kSpectralIndexError };

/// How the pixels of an image file run over its map: line after line, each from its first pixel. The files of
/// this program have the default.
struct PixelOrder {
  bool westward = true;     ///< x: the first pixel is the easternmost
  bool southward = false;   ///< y: the first pixel is the northernmost
  bool linesAlongX = true;  ///< neighbours in a line are neighbours in x; false: in y

  bool operator==(const PixelOrder&) const = default;
};

/// The descriptive header of a map. NaN marks a number that is not set.
///
/// Load and Store round-trip every field to the bit (through the L-keywords of the file, docs/formats.md),
/// but for the pixel order, which is that of the file.
class AMapHeader {
 public:
  AMapHeader();

  /// Takes the header of a file open for reading. Returns 1, or 0 when the file is not open.
  int Load(AMapFile& file);
  /// Hands the header to a file open for writing; must come first. Returns 1, or 0 when the file is not open.
  int Store(AMapFile& file) const;
  /// The unit text of the map values, "Jy/Beam" or "Sp. Index" or empty.
  [[nodiscard]] const std::string& Unit() const { return unit; }

  MapKind kind = MapKind::kIntensity;
  std::string unit;
  std::string sourceName;
  UvxFrame frame = UvxFrame::kByEpoch;
  double rightAscension;             ///< degrees
  double declination;                ///< degrees
  double epoch;                      ///< 2000.0 or 1950.0
  std::string stokes;                ///< name of the Stokes mix, e.g. "I"
  double frequency;                  ///< reference frequency, Hz
  double bandwidth;                  ///< width of the selected channel-0 frequencies, Hz; becomes CDELT3
  double beamMajor;                  ///< first full width at half maximum, arcseconds
  double beamMinor;                  ///< second full width at half maximum, arcseconds
  double beamPa;                     ///< position angle, degrees, north through east
  double beamArea;                   ///< pixels
  std::string date;                  ///< file date YYYY-MM-DD[Thh:mm:ss]; empty: the day of writing
  std::vector<std::string> history;  ///< one entry a line, any length
  PixelOrder pixelOrder;             ///< of the file loaded; Store leaves it out
};

}  // namespace lumo
