// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace lumo::test {

/// An image file as casacore's own reader of FITS images understands it. The header keeps to C++17, since
/// casacore's are not ready for C++20.
struct CasacoreImage {
  struct Pixel {
    double rightAscension = 0, declination = 0;  ///< degrees
    double frequency = 0;                        ///< Hz
    std::string stokes;
    float value = 0;
    bool isValid = false;  ///< by the image's mask
  };

  std::vector<int> shape;
  std::vector<std::string> axes;
  std::string projection;
  std::string directionFrame;
  std::string frequencyFrame;
  double restFrequency = 0;  ///< Hz
  std::string unit;          ///< of the pixels
  std::string object;
  double beamMajor = 0, beamMinor = 0;  ///< arcseconds
  double beamPa = 0;                    ///< degrees
  std::vector<Pixel> pixels;
};

/// False in a build without casacore's images.
[[nodiscard]] bool hasCasacoreImages();

/// Opens an image and looks at some of its pixels, counted from 0 along the first and the second axis. Throws
/// a std::exception when casacore does not read the file.
[[nodiscard]] CasacoreImage readWithCasacore(const std::string& path,
                                             const std::vector<std::pair<int, int>>& pixels);

}  // namespace lumo::test
