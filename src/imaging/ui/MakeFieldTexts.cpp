// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/MakeFieldTexts.h"

#include <array>
#include <cstddef>

namespace lumo {

namespace {

constexpr const char* kLimitTip =
    "Half-extent of the uv grid in units of the data's extent, 0 or more; 0 stands for 2. "
    "A larger grid gives smaller map cells.";
constexpr const char* kScaleTip =
    "Largest baseline component of the data in wavelengths, 0 or more. "
    "Measured whenever files or frequencies change.";
constexpr const char* kShiftXTip = "Shift of the phase centre to the east in arcseconds, any number.";
constexpr const char* kShiftYTip = "Shift of the phase centre to the north in arcseconds, any number.";
constexpr const char* kBoxTip =
    "Size of the blocks of uniform weighting as the reciprocal of a number of grid cells, 2 or less: "
    "1 is one cell, 0.1 ten cells; 0 or less is the whole grid.";
constexpr const char* kKernelWidthTip =
    "Full width of the convolution kernel at half maximum in grid cells, 0 or more; 0 is without bounds.";
constexpr const char* kTaperWidthTip =
    "Full width of the taper at half maximum in wavelengths, 0 or more; 0 is without bounds. "
    "For the th taper the unit of centre and slope, the same in u and v.";

constexpr std::array<MakeFieldTexts, kMakeFieldCount> kTexts{{
    {"Grid limit in u", kLimitTip},
    {"Grid limit in v", kLimitTip},
    {"Data extent in u", kScaleTip},
    {"Data extent in v", kScaleTip},
    {"Shift in x", kShiftXTip},
    {"Shift in y", kShiftYTip},
    {"Columns", "Number of map columns in pixels; only these sizes can be transformed."},
    {"Rows", "Number of map rows in pixels; only these sizes can be transformed."},
    {"Weighting",
     "Natural: every visibility counts with its weight. Uniform: every block of the uv grid counts alike."},
    {"Uniform box in u", kBoxTip},
    {"Uniform box in v", kBoxTip},
    {"Kernel width in u", kKernelWidthTip},
    {"Kernel width in v", kKernelWidthTip},
    {"Kernel type", "Function that spreads a visibility over the grid; the pill box is exactly one cell."},
    {"Taper width in u", kTaperWidthTip},
    {"Taper width in v", kTaperWidthTip},
    {"Taper centre", "Where the th taper falls to one half, in units of its width, any number."},
    {"Taper slope", "Over what range the th taper falls, in units of its width, any number; 0 is a step."},
    {"Taper type", "Function of the baseline that multiplies the weights."},
    {"Use visibility weights",
     "On: the weight of each visibility multiplies the taper. Off: all count alike."},
}};

}  // namespace

const MakeFieldTexts& makeFieldTexts(MakeField field) {
  return kTexts[static_cast<std::size_t>(field)];
}

}  // namespace lumo
