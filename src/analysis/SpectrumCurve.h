// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/TMinMax.h"

namespace lumo {

/// Scale of an axis, as the area dialog's lists count it.
inline constexpr int kLogarithmicScale = 0;
inline constexpr int kLinearScale = 1;

/// A point of the drawn line: frequency in Hz and flux density.
struct SpectrumSample {
  double freq = 0.0;
  double flux = 0.0;
};

/// One curve of a spectrum graph: measured or modelled points with error bars, the smooth line through them
/// and the line of text that says what they mean.
class SpectrumCurve {
 public:
  static constexpr int kSampleCount = 256;

  /// Takes the points: `freqs` in Hz, flux densities and the half-lengths of their error bars, all [n].
  void setData(std::vector<double> freqs, std::vector<double> fluxes, std::vector<double> errors);

  [[nodiscard]] std::size_t count() const { return freqs_.size(); }
  [[nodiscard]] const std::vector<double>& freqs() const { return freqs_; }
  [[nodiscard]] const std::vector<double>& fluxes() const { return fluxes_; }
  [[nodiscard]] const std::vector<double>& errors() const { return errors_; }

  /// True when point `i` is drawn with its error bar: one that would reach zero or below is left out.
  [[nodiscard]] bool hasErrorBar(std::size_t i) const { return fluxes_[i] - errors_[i] > 0.0; }
  /// Widens x and y of a frame's range so that the points and the bars that are drawn fit in, and then the
  /// range by a margin: on a linear axis 5 % of its span at each end, on a logarithmic one the rest of the
  /// decades. Coordinates that are not finite are left out, and on a logarithmic axis those that are not
  /// positive.
  void getRange(TMinMax& range, int xScaleMode, int yScaleMode) const;
  /// The natural cubic spline through the points, at kSampleCount frequencies in equal steps from the lowest
  /// to the highest. Points may come in any order; of several at one frequency the first counts, and those
  /// without a finite one do not. Empty without points.
  [[nodiscard]] std::vector<SpectrumSample> samples() const;
  /// "Reference freq: ...[MHz], Reference intensity: ..., Spectral index: ... ", with the blank at its end.
  [[nodiscard]] std::string legend() const;

  double refFreq = 0.0;  ///< Hz
  double refIntensity = 0.0;
  double specIndex = 0.0;

 private:
  std::vector<double> freqs_;
  std::vector<double> fluxes_;
  std::vector<double> errors_;
};

/// The decades (powers of ten) that hold [min, max], at least one. Where `min` is not positive, three decades
/// below `max`; 1..10 where `max` is not either.
struct DecadeRange {
  double min = 1.0;
  double max = 10.0;
};
[[nodiscard]] DecadeRange decadeRange(double min, double max);

/// A spectrum graph: its curves and how its frame is set. "%s" in a title is where the axis puts its scale
/// prefix.
struct SpectrumGraph {
  std::string xTitle;
  std::string yTitle;
  int xScaleMode = kLogarithmicScale;
  int yScaleMode = kLogarithmicScale;
  int invertColors = 0;
  std::vector<SpectrumCurve> curves;
};

/// The title, with " (log scale)" behind it for a logarithmic axis.
[[nodiscard]] std::string scaledTitle(const std::string& title, int scaleMode);
/// The title without what scaledTitle() adds.
[[nodiscard]] std::string bareTitle(const std::string& title);

}  // namespace lumo
