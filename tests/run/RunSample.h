// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <functional>
#include <string>
#include <vector>

#include "io/UvxTables.h"

namespace lumo::test {

/// A small visibility file made by hand.
struct UvxSample {
  struct Selection {
    int id;
    std::vector<double> frequencies;  ///< Hz, one per IF; the same number in every selection
  };
  struct Point {
    double u, v;  ///< seconds of light travel
  };

  std::vector<Selection> selections = {{1, {1.4e9}}};
  std::vector<Point> points = {{0x1p-20, 0x1p-21}, {-0x1p-21, 0x1p-20}};
  int sources = 1;
  UvxProducts products = {1};
  /// Visibility at (u, v) in wavelengths and a frequency in Hz; 1 Jy everywhere when empty.
  std::function<std::complex<double>(double, double, double)> visibility;
};

/// Writes a group of weight 1 for each point in each selection. Source IDs are 5, 6, ...
void writeUvx(const std::string& path, const UvxSample& sample);

}  // namespace lumo::test
