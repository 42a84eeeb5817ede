// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <complex>
#include <string>
#include <string_view>
#include <vector>

#include "core/Status.h"

namespace lumo {

/// One component of a model sky: a point or an elliptical Gaussian with a curved power-law spectrum.
struct SkyComponent {
  enum class Shape { kPoint, kGaussian };

  std::string name;
  Shape shape = Shape::kPoint;
  double east = 0;       ///< radians from the phase centre, direction cosine l
  double north = 0;      ///< radians from the phase centre, direction cosine m
  double fluxJy = 0;     ///< flux density at the model's reference frequency
  double index = 0;      ///< spectral index at the reference frequency
  double curvature = 0;  ///< see flux()
  double major = 0;      ///< Gaussian: full width at half maximum, radians
  double minor = 0;      ///< Gaussian: full width at half maximum, radians
  double pa = 0;         ///< Gaussian: position angle of the major axis, radians, north through east

  /// Flux density in Jy: S = fluxJy · x^(index + curvature · ln x) with x = frequency / reference.
  [[nodiscard]] double flux(double frequency, double reference) const;
  /// Spectral index d ln S / d ln ν = index + 2 · curvature · ln(frequency / reference).
  [[nodiscard]] double indexAt(double frequency, double reference) const;
  /// Visibility of the component with a flux density of 1 Jy at (u, v) in wavelengths:
  /// e^(+2πi(u·east + v·north)), for a Gaussian times exp(-π²/(4 ln 2) · (major²·p² + minor²·q²)) with p and
  /// q the parts of (u, v) along its axes.
  [[nodiscard]] std::complex<double> response(double u, double v) const;
};

/// A model sky read from a JSON file: a phase centre, a reference frequency and components.
///
/// Keys: name, ra_deg, dec_deg, reference_mhz, components; each component has type ("point" or "gaussian"),
/// east, north, flux_jy, index and, if wanted, name and curvature; a Gaussian adds major, minor and pa_deg.
/// An angle's key ends in its unit: east_mas or east_arcsec, and so on. Unknown keys are refused.
class SkyModel {
 public:
  static constexpr std::size_t kMaxFileBytes = 1 << 20;
  static constexpr std::size_t kMaxComponents = 1024;
  static constexpr std::size_t kMaxNameBytes = 16;  ///< what a source table holds

  /// Replaces the model by the file's. A failure names the key and leaves the model as it was.
  [[nodiscard]] Status load(const std::string& path);
  /// The same from a text.
  [[nodiscard]] Status parse(std::string_view text);

  /// Visibility in Jy at (u, v) in wavelengths and a frequency in Hz: Σ flux · response in the order of the
  /// components, with the sign of the stored u and v (docs/formats.md). There is no w term, since the imaging
  /// is two-dimensional: the model is what a perfectly flat sky would give.
  [[nodiscard]] std::complex<double> visibility(double u, double v, double frequency) const;

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] double rightAscension() const { return rightAscension_; }          ///< degrees, J2000
  [[nodiscard]] double declination() const { return declination_; }                ///< degrees, J2000
  [[nodiscard]] double referenceFrequency() const { return referenceFrequency_; }  ///< Hz
  [[nodiscard]] const std::vector<SkyComponent>& components() const { return components_; }

 private:
  std::string name_;
  double rightAscension_ = 0;
  double declination_ = 0;
  double referenceFrequency_ = 0;
  std::vector<SkyComponent> components_;
};

}  // namespace lumo
