// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "core/AMatrix.h"
#include "core/Status.h"

namespace lumo {

/// Variances and covariance of the first two spectral terms at a pixel, in squared map units.
struct TermCovariance {
  double zero = 0;   ///< of term 0
  double both = 0;   ///< of the two
  double first = 0;  ///< of term 1
};

/// The covariance of two maps of noise over all pixels at which both are finite, such that what stands out of
/// the noise in a small part of the maps hardly counts: the standard deviations are 1.4826 times the median
/// distance from the median, their correlation is (s² - d²) / (s² + d²), s and d being the same measure of
/// the sum and of the difference of the two maps, each in units of its own standard deviation (Gnanadesikan
/// and Kettenring 1972, Biometrics 28, 81). So the correlation never leaves -1 .. 1. NaN when no pixel
/// counts. The maps must have one size. Memory: three maps of doubles.
[[nodiscard]] TermCovariance termCovariance(const AMatrix<double>& zero, const AMatrix<double>& first);

/// The standard deviation of index = first / zero to first order in the errors of the two:
///
///     sqrt(var(first) - 2 index cov + index² var(zero)) / |zero|
///
/// NaN where the index is.
[[nodiscard]] float spectralIndexError(float index, float zero, const TermCovariance& covariance);

/// The error map's files. Those of a list are in the order of terms or beam orders.
struct SpectralIndexErrorFiles {
  std::string index;                      ///< index map, read
  std::vector<std::string> clean;         ///< CLEAN maps of all N >= 2 terms, read
  std::vector<std::string> withResidual;  ///< the same with their residuals added, read
  std::vector<std::string> beams;         ///< the 2 N - 1 dirty beams, read
  std::string error;                      ///< written
};

/// Makes the map of the standard deviation of an index map. The residuals r of the N terms, which are the
/// differences of the two kinds of CLEAN maps, are taken through the beam matrix M at every pixel: W r with
/// W = M^-1 is what they would still add to the terms there (the principal solution of Rau and Cornwell 2011,
/// A&A 532, A71), so its covariance, W cov(r) W^T, is that of the terms. One covariance, termCovariance(),
/// serves the whole map.
///
/// The map has the header of the index map and the value range of its own finite pixels. Fails when a map
/// cannot be read or has another size than the index map. Memory: three maps of doubles and two of floats,
/// and a beam at a time.
[[nodiscard]] Status writeSpectralIndexErrorMap(const SpectralIndexErrorFiles& files);

}  // namespace lumo
