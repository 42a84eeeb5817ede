// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fitsio.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "analysis/AreaShape.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo::test {

inline constexpr double kDegree = 3600.0;  // arcseconds
inline constexpr double kBeamMajor = 5.0;  // arcseconds
inline constexpr double kBeamMinor = 3.0;
// Off the centre in both directions, turned, and on a slope, so that a mirrored or turned map shows.
inline const AreaShape kArea = AreaShape::ellipse({6.0, -4.0}, 5.3, 3.1, 25.0);

/// Jy per beam at a place in arcseconds, x to the east.
inline double brightness(double x, double y) {
  return 1.5 * std::exp(-((x - 6) * (x - 6) / 18 + (y + 4) * (y + 4) / 8)) + 0.002 * x + 0.003 * y + 0.2;
}

/// The same test as the area's, written out once more: x and y turned by 25 degrees from east towards north.
inline bool insideArea(double x, double y) {
  const double c = std::cos(25.0 * kRadianPerDegree);
  const double s = std::sin(25.0 * kRadianPerDegree);
  const double along = (x - 6) * c + (y + 4) * s;
  const double across = (y + 4) * c - (x - 6) * s;
  return along * along / (5.3 * 5.3) + across * across / (3.1 * 3.1) <= 1;
}

/// An image that cfitsio writes: 48 x 40 pixels, and whatever cards a test adds.
class ForeignImage {
 public:
  static constexpr long kFast = 48, kSlow = 40;
  static constexpr double kFastReference = 22, kSlowReference = 21;
  using Matrix = std::array<double, 4>;  ///< arcseconds: dx/di, dx/dj, dy/di, dy/dj

  explicit ForeignImage(Matrix matrix = {-1, 0, 0, 1}) : matrix_(matrix) {
    // Cards of any program; a test's own come later and replace them.
    set("CTYPE1", "RA---SIN").set("CTYPE2", "DEC--SIN");
    set("CRVAL1", 187.5).set("CRVAL2", 12.25);
    set("CRPIX1", kFastReference).set("CRPIX2", kSlowReference);
    set("BMAJ", kBeamMajor / kDegree).set("BMIN", kBeamMinor / kDegree).set("BPA", 30.0);
    set("BUNIT", "JY/BEAM");
  }

  ForeignImage& set(const std::string& key, double value) { return put({key, value, {}}); }
  ForeignImage& set(const std::string& key, const char* text) { return put({key, 0, text}); }
  ForeignImage& drop(const std::string& key) {
    std::erase_if(cards_, [&](const Card& card) { return card.key == key; });
    return *this;
  }
  ForeignImage& steps(double perUnit = kDegree) {
    return set("CDELT1", matrix_[0] / perUnit).set("CDELT2", matrix_[3] / perUnit);
  }
  ForeignImage& frequency(int axis, double hertz) {
    const std::string n = toStr(axis);
    return set("CTYPE" + n, "FREQ").set("CRVAL" + n, hertz).set("CRPIX" + n, 1.0).set("CDELT" + n, 1e8);
  }
  ForeignImage& axes(std::vector<long> more) {
    more_ = std::move(more);
    return *this;
  }
  ForeignImage& type(int bitpix, double scale = 1, double zero = 0) {
    bitpix_ = bitpix;
    scale_ = scale;
    zero_ = zero;
    return *this;
  }
  /// Pixels that are missing: NaN, or for integers the BLANK.
  ForeignImage& missing(long fast, long slow) {
    missing_ = {fast, slow};
    return *this;
  }

  /// Flux density in the area, from this image's own pixels.
  [[nodiscard]] double flux() const {
    double sum = 0;
    eachPixel([&](long i, long j, double x, double y) {
      if (insideArea(x, y) && !isMissing(i, j)) sum += stored(x, y) * scale_ + zero_;
    });
    const double pixel = std::abs(matrix_[0] * matrix_[3] - matrix_[1] * matrix_[2]);
    return sum * pixel / (kPi * kBeamMajor * kBeamMinor / (4 * std::log(2.0)));
  }

  void write(const std::string& path) const {
    fitsfile* file = nullptr;
    int error = 0;
    std::vector<long> lengths{kFast, kSlow};
    lengths.insert(lengths.end(), more_.begin(), more_.end());
    fits_create_diskfile(&file, path.c_str(), &error);
    fits_create_img(file, bitpix_, static_cast<int>(lengths.size()), lengths.data(), &error);
    for (const Card& card : cards_) {
      if (card.text.empty())
        fits_update_key_dbl(file, card.key.c_str(), card.value, -15, nullptr, &error);
      else
        fits_update_key_str(file, card.key.c_str(), card.text.c_str(), nullptr, &error);
    }
    if (bitpix_ > 0) {
      fits_update_key_dbl(file, "BSCALE", scale_, -15, nullptr, &error);
      fits_update_key_dbl(file, "BZERO", zero_, -15, nullptr, &error);
      fits_update_key_lng(file, "BLANK", kBlank, nullptr, &error);
      fits_set_bscale(file, 1, 0, &error);
    }
    std::vector<double> pixels;
    eachPixel([&](long i, long j, double x, double y) {
      const double none = bitpix_ > 0 ? kBlank : std::numeric_limits<double>::quiet_NaN();
      pixels.push_back(isMissing(i, j) ? none : stored(x, y));
    });
    long planes = 1;
    for (const long length : more_) planes *= length;
    for (long plane = 0; plane < planes; ++plane)
      fits_write_img(file, TDOUBLE, 1 + plane * kFast * kSlow, kFast * kSlow, pixels.data(), &error);
    fits_close_file(file, &error);
    ASSERT_EQ(error, 0);
  }

 private:
  static constexpr long kBlank = -99;
  struct Card {
    std::string key;
    double value;
    std::string text;
  };

  ForeignImage& put(Card card) {
    drop(card.key);
    cards_.push_back(std::move(card));
    return *this;
  }
  [[nodiscard]] bool isMissing(long i, long j) const { return i == missing_[0] && j == missing_[1]; }
  [[nodiscard]] double stored(double x, double y) const {
    const double value = (brightness(x, y) - zero_) / scale_;
    if (bitpix_ > 0) return std::round(value);
    return bitpix_ == FLOAT_IMG ? static_cast<float>(value) : value;
  }
  template <typename Visit>
  void eachPixel(Visit visit) const {
    for (long j = 1; j <= kSlow; ++j) {
      for (long i = 1; i <= kFast; ++i) {
        const double p = static_cast<double>(i) - kFastReference;
        const double q = static_cast<double>(j) - kSlowReference;
        visit(i, j, matrix_[0] * p + matrix_[1] * q, matrix_[2] * p + matrix_[3] * q);
      }
    }
  }

  Matrix matrix_;
  std::vector<Card> cards_;
  std::vector<long> more_;
  int bitpix_ = FLOAT_IMG;
  double scale_ = 1, zero_ = 0;
  std::array<long, 2> missing_{0, 0};
};

}  // namespace lumo::test
