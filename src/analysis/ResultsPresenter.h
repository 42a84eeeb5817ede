// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "analysis/AreaSettings.h"
#include "analysis/MeanSigmaTable.h"
#include "analysis/SpectrumCurve.h"
#include "core/AMatrix.h"
#include "core/Status.h"
#include "core/TMinMax.h"
#include "io/AMapHeader.h"

namespace lumo {

/// The power-law spectra of the areas of a run's maps.
struct AreaSpectra {
  std::vector<double> areaFlux;     ///< [area], flux density at the reference frequency (Jy for Jy/Beam maps)
  std::vector<double> areaIndex;    ///< [area], spectral index
  std::vector<double> areaTermSum;  ///< [area], sum of the first-order map
  std::vector<double> freq;         ///< [point], Hz
  AMatrix<double> flux;             ///< [area][point]
  AMatrix<double> fluxErr;          ///< [area][point], all the same
  double error = 0.0;               ///< half the standard deviation of the residual map; NaN without one
  double refFreq = 0.0;             ///< Hz
  Status noiseStatus;               ///< why there is no error
};

/// Measures areas on the products of a run: load() once, then measure() for as many choices of areas as
/// wanted, then spectraTable() or spectraGraph() of what came out.
class ResultsPresenter {
 public:
  /// Term maps beyond these are never read.
  static constexpr int kMostTerms = 50;
  static constexpr int kMostPoints = 100000;

  /// @param folder  work folder with its trailing separator.
  /// @param freqMin, freqMax  range in Hz that counts where the run left no usable one in its frequency file.
  ResultsPresenter(std::string folder, std::string prefix, double freqMin, double freqMax);

  /// Reads the frequency range and the restored term maps, as many of one size as follow each other from
  /// term 0. Fails with a sentence that names the missing product when there is no folder, no restored map of
  /// term 0 or 1 or no spectral-index map (a run of order 1 leaves none), and when terms 0 and 1 differ in
  /// size.
  [[nodiscard]] Status load();

  /// The restored intensity on which areas are marked. After load() only.
  [[nodiscard]] const AMatrix<float>& intensity() const { return *termMaps_.front(); }
  [[nodiscard]] std::size_t termCount() const { return termMaps_.size(); }
  [[nodiscard]] const AMapHeader& mapHeader() const { return mapHeader_; }
  [[nodiscard]] const TMinMax& mapRange() const { return mapRange_; }
  [[nodiscard]] double freqMin() const { return freqMin_; }
  [[nodiscard]] double freqMax() const { return freqMax_; }
  /// Why the given range counts and not that of the frequency file: kNotFound without one, else what is
  /// wrong with its content. After load().
  [[nodiscard]] const Status& rangeStatus() const { return rangeStatus_; }

  /// Integrates intensity and first-order map over every area and samples the power laws at
  /// `settings.pointCount` frequencies from freqMin() to freqMax(); a single one lies at freqMin(). Pixels
  /// whose intensity is zero or not finite, or whose first-order value is not finite, are left out; an area
  /// without a usable pixel has an index and a flux density that are not finite. Fails for a point count
  /// outside 1..kMostPoints.
  [[nodiscard]] Status measure(const AreaSettings& settings, AreaSpectra& spectra) const;

 private:
  [[nodiscard]] Status checkProducts() const;
  [[nodiscard]] Status readFrequencies();
  [[nodiscard]] Status readTerms();
  void measureArea(const AreaList& areas, std::size_t k, AreaSpectra& spectra) const;

  std::string folder_;
  std::string prefix_;
  double freqMin_;
  double freqMax_;
  Status rangeStatus_;
  std::vector<std::unique_ptr<AMatrix<float>>> termMaps_;
  AMapHeader mapHeader_;
  TMinMax mapRange_;
};

/// The frequencies of a map by its header, in Hz: its frequency and half its bandwidth to either side
/// (nothing where the header does not tell it).
[[nodiscard]] Status headerFrequencies(const std::string& path, double& freqMin, double& freqMax);
/// Standard deviation about the mean over all pixels, in double; one pixel that is not finite makes it NaN.
[[nodiscard]] double mapDeviation(const AMatrix<float>& map);
/// Title of a map's values: the unit in brackets behind the place of the scale prefix, empty without a unit.
[[nodiscard]] std::string valueTitle(const std::string& unit);
/// One row for each frequency point.
[[nodiscard]] MeanSigmaTable spectraTable(const AreaSpectra& spectra);
/// One curve for each area.
[[nodiscard]] SpectrumGraph spectraGraph(const AreaSpectra& spectra, const AreaSettings& settings);

}  // namespace lumo
