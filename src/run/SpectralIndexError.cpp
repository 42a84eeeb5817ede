// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/SpectralIndexError.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

#include "clean/BeamMatrix.h"
#include "core/APtrArray.h"
#include "core/TMinMax.h"
#include "core/TextForm.h"
#include "io/MapProduct.h"

namespace lumo {

namespace {

/// Standard deviation of a normal distribution in units of its median distance from the median.
constexpr double kSigmaPerMedianDistance = 1.482602218505602;

/// Reorders the values, of which there is at least one.
double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 != 0) return *middle;
  return (*std::max_element(values.begin(), middle) + *middle) / 2;
}

double spread(std::vector<double> values) {
  if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
  const double centre = median(values);
  for (double& value : values) value = std::abs(value - centre);
  return kSigmaPerMedianDistance * median(values);
}

/// W of the beams' centres.
Status invertBeamMatrix(const std::vector<std::string>& names, AMatrix<double>& inverse) {
  APtrArray<AMatrix<float>*> centres;
  for (const std::string& name : names) {
    LoadedMap beam;
    if (Status status = readMap(name, beam); !status.ok()) return status.about(name);
    auto centre = std::make_unique<AMatrix<float>>(1, 1);
    (*centre)(0, 0) = (*beam.matrix)(beam.matrix->rows() / 2, beam.matrix->columns() / 2);
    centres.InsertAt(centres.count(), centre.get());
    static_cast<void>(centre.release());  // the array owns it now
  }
  BeamMatrix matrix;
  matrix.prepare(centres, (centres.count() + 1) / 2);
  inverse = matrix.inverse();
  return {};
}

Status readLike(const std::string& name, const AMatrix<float>& index, LoadedMap& map) {
  if (Status status = readMap(name, map); !status.ok()) return status.about(name);
  if (map.matrix->rows() == index.rows() && map.matrix->columns() == index.columns()) return {};
  return {StatusCode::kBadFormat,
          "the map has " + toStr(map.matrix->rows()) + " x " + toStr(map.matrix->columns()) +
              " pixels, the spectral-index map " + toStr(index.rows()) + " x " + toStr(index.columns()),
          name};
}

/// The first two elements of W r at every pixel.
Status solveResiduals(const SpectralIndexErrorFiles& files, const AMatrix<double>& inverse,
                      const AMatrix<float>& index, AMatrix<double>& zero, AMatrix<double>& first) {
  zero.resize(index.rows(), index.columns());
  first.resize(index.rows(), index.columns());
  for (std::uint32_t k = 0; k < inverse.rows(); ++k) {
    LoadedMap clean;
    LoadedMap withResidual;
    if (Status status = readLike(files.clean[k], index, clean); !status.ok()) return status;
    if (Status status = readLike(files.withResidual[k], index, withResidual); !status.ok()) return status;
    for (std::size_t i = 0; i < zero.size(); ++i) {
      const double residual =
          static_cast<double>(withResidual.matrix->data()[i]) - static_cast<double>(clean.matrix->data()[i]);
      zero.data()[i] += inverse(0, k) * residual;
      first.data()[i] += inverse(1, k) * residual;
    }
  }
  return {};
}

}  // namespace

TermCovariance termCovariance(const AMatrix<double>& zero, const AMatrix<double>& first) {
  std::vector<double> zeros;
  std::vector<double> firsts;
  for (std::size_t i = 0; i < zero.size(); ++i) {
    if (!std::isfinite(zero.data()[i]) || !std::isfinite(first.data()[i])) continue;
    zeros.push_back(zero.data()[i]);
    firsts.push_back(first.data()[i]);
  }
  const double sigmaZero = spread(zeros);
  const double sigmaFirst = spread(firsts);
  TermCovariance result{sigmaZero * sigmaZero, 0, sigmaFirst * sigmaFirst};
  if (sigmaZero == 0 || sigmaFirst == 0) return result;
  for (std::size_t i = 0; i < zeros.size(); ++i) {
    const double a = zeros[i] / sigmaZero;
    const double b = firsts[i] / sigmaFirst;
    zeros[i] = a + b;
    firsts[i] = a - b;
  }
  const double sum = spread(std::move(zeros));
  const double difference = spread(std::move(firsts));
  const double both = sum * sum + difference * difference;
  if (both != 0) result.both = (sum * sum - difference * difference) / both * sigmaZero * sigmaFirst;
  return result;
}

float spectralIndexError(float index, float zero, const TermCovariance& covariance) {
  const double alpha = index;
  const double variance = covariance.first - 2 * alpha * covariance.both + alpha * alpha * covariance.zero;
  // Rounding can take what is 0 below it.
  return static_cast<float>(std::sqrt(variance < 0 ? 0 : variance) / std::abs(static_cast<double>(zero)));
}

Status writeSpectralIndexErrorMap(const SpectralIndexErrorFiles& files) {
  if (files.clean.size() < 2 || files.withResidual.size() != files.clean.size() ||
      files.beams.size() != 2 * files.clean.size() - 1)
    return {StatusCode::kInvalidValue,
            "an error map needs two CLEAN maps of each of N >= 2 terms and 2 N - 1 beams"};
  LoadedMap index;
  if (Status status = readMap(files.index, index); !status.ok()) return status.about(files.index);
  AMatrix<double> inverse;
  if (Status status = invertBeamMatrix(files.beams, inverse); !status.ok()) return status;
  TermCovariance covariance;
  {
    AMatrix<double> zero;
    AMatrix<double> first;
    if (Status status = solveResiduals(files, inverse, *index.matrix, zero, first); !status.ok())
      return status;
    covariance = termCovariance(zero, first);
  }
  LoadedMap clean;
  if (Status status = readLike(files.clean[0], *index.matrix, clean); !status.ok()) return status;
  for (std::size_t i = 0; i < clean.matrix->size(); ++i)
    clean.matrix->data()[i] =
        spectralIndexError(index.matrix->data()[i], clean.matrix->data()[i], covariance);
  index.header.kind = MapKind::kSpectralIndexError;
  index.range.vMin = TMinMax::kUnsetMin;
  index.range.vMax = TMinMax::kUnsetMax;
  return writeMap(files.error, index.header, index.range, *clean.matrix);
}

}  // namespace lumo
