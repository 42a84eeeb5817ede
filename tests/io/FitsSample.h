// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace lumo::test {

/// A FITS image put together byte by byte, with no FITS library between it and the reader under test.
class FitsSample {
 public:
  FitsSample(int bitpix, std::vector<std::int64_t> lengths) {
    add("SIMPLE  =                    T");
    addInteger("BITPIX", bitpix);
    addInteger("NAXIS", static_cast<std::int64_t>(lengths.size()));
    for (std::size_t i = 0; i < lengths.size(); ++i) addInteger("NAXIS" + std::to_string(i + 1), lengths[i]);
  }

  /// One card as it stands, padded to 80 characters.
  FitsSample& add(std::string card) {
    card.resize(80, ' ');
    header_ += card;
    return *this;
  }
  FitsSample& addInteger(std::string key, std::int64_t value) {
    key.resize(8, ' ');
    return add(key + "= " + std::to_string(value));
  }
  /// The right ascension and declination axes of an AIPS or CASA image, `step` degrees a pixel.
  FitsSample& addSky(const std::string& raStep, const std::string& decStep) {
    for (const char* const card :
         {"CTYPE1  = 'RA---SIN'", "CRVAL1  = 187.5", "CRPIX1  = 2.0", "CTYPE2  = 'DEC--SIN'",
          "CRVAL2  = 12.25", "CRPIX2  = 1.0", "EQUINOX = 2000.0"})
      add(card);
    return add("CDELT1  = " + raStep).add("CDELT2  = " + decStep);
  }
  /// The pixels, fastest axis first, in the type that BITPIX names.
  template <typename T>
  FitsSample& pixels(const std::vector<T>& values) {
    for (const T value : values) {
      unsigned char bytes[sizeof(T)];
      std::memcpy(bytes, &value, sizeof(T));
      for (std::size_t i = 0; i < sizeof(T); ++i) {
        const std::size_t from = std::endian::native == std::endian::little ? sizeof(T) - 1 - i : i;
        data_ += static_cast<char>(bytes[from]);
      }
    }
    return *this;
  }

  [[nodiscard]] std::string bytes() const {
    constexpr std::size_t kBlock = 2880;
    std::string end = "END";
    end.resize(80, ' ');
    std::string all = header_ + end;
    all.resize((all.size() + kBlock - 1) / kBlock * kBlock, ' ');
    all += data_;
    all.resize((all.size() + kBlock - 1) / kBlock * kBlock, '\0');
    return all;
  }

 private:
  std::string header_;
  std::string data_;
};

}  // namespace lumo::test
