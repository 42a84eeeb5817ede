// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stddef.h>

// What a headless program and the drawing module it loads say to each other: plain C, so that the program
// needs no window library and the two share no memory but what this call lends. Texts are UTF-8 or file names
// as the system has them, ended by a NUL; none may be null.

extern "C" {

/// Raised whenever anything below changes; a module refuses a request of another version.
enum { kLumoPlotVersion = 1 };

/// What is drawn.
enum LumoPlotKind {
  kLumoPlotMap = 1,       ///< files[0] with axes, colour scale and beam, and the areas of `regions`
  kLumoPlotSpectrum = 2,  ///< the curves
  kLumoPlotCoverage = 3   ///< the uv coverage of all files
};

/// One spectrum: `count` frequencies in Hz, flux densities and half-lengths of error bars.
struct LumoPlotCurve {
  const double* freqs;
  const double* fluxes;
  const double* errors;
  size_t count;
  double refFreq;  ///< Hz
  double refIntensity;
  double specIndex;
};

struct LumoPlotRequest {
  int version;
  int kind;
  const char* out;  ///< picture; its extension (.png, .pdf, .svg) says how
  const char* const* files;
  size_t fileCount;
  const char* regions;  ///< region file, empty for none
  const char* xTitle;
  const char* yTitle;
  int xScaleMode;  ///< as SpectrumGraph counts them
  int yScaleMode;
  int invertColors;
  const struct LumoPlotCurve* curves;
  size_t curveCount;
};

/// Where the module says why it failed: a sentence and the file it is about (empty for none), each cut to
/// what fits.
struct LumoPlotAnswer {
  char message[1024];
  char file[4096];
};

/// Draws. Returns 0 when the picture is complete, 1 for a failure told in the answer. To be called from the
/// program's first thread only.
using LumoPlotFunction = int(const struct LumoPlotRequest* request, struct LumoPlotAnswer* answer);

/// Name of the one function a module exports.
#define LUMO_PLOT_FUNCTION "lumoPlot"

}  // extern "C"
