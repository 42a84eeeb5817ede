// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/AArray.h"
#include "core/LittleEndian.h"
#include "io/AUVXComplex.h"
#include "io/AUVXFile.h"
#include "io/UvxTables.h"

namespace lumo {

/// The stored polarisation products of an open file, table "ST".
class AUVXStokes {
 public:
  explicit AUVXStokes(const AUVXFile& file);
  explicit AUVXStokes(UvxProducts products) : products_(std::move(products)) {}

  [[nodiscard]] const UvxProducts& products() const { return products_; }
  /// Index of a product code among the stored ones (the first one), -1 if it is not stored.
  [[nodiscard]] int indexOf(std::int32_t code) const;

 private:
  UvxProducts products_;
};

/// What an AStokesMix yields.
enum class StokesQuantity : std::uint8_t { kI, kRR, kLL, kXX, kYY, kV, kQ, kU };

/// How stored products are combined into the imaged Stokes quantity: one product as it is, or the mean of
/// two. A plain value of a few bytes.
class AStokesMix {
 public:
  AStokesMix() = default;
  AStokesMix(StokesQuantity quantity, int product) : quantity_(quantity), first_(product), second_(-1) {}
  AStokesMix(StokesQuantity quantity, int first, int second)
      : quantity_(quantity), first_(first), second_(second) {}

  /// The combined visibility of one channel; `products` points at its stored products, `offset` channels
  /// away. A mean needs both products usable (finite, weight > 0; otherwise its weight is 0); it is formed in
  /// double and rounded to single, with the weight 4 w1 w2 / (w1 + w2) of independent products.
  [[nodiscard]] AUVXComplex GetVisible(const AUVXComplex* products, int offset) const {
    return second_ < 0 ? products[offset + first_]
                       : mean(products[offset + first_], products[offset + second_]);
  }
  /// The same for a mix of one product, or of two (kTwoProducts, which must be second() >= 0), from the bytes
  /// of a channel's products as a file holds them: nothing is aligned.
  template <bool kTwoProducts>
  [[nodiscard]] AUVXComplex fromBytes(const std::uint8_t* channel) const {
    const AUVXComplex a = loadVisible(channel + static_cast<std::size_t>(first_) * sizeof(AUVXComplex));
    if constexpr (!kTwoProducts) return a;
    return mean(a, loadVisible(channel + static_cast<std::size_t>(second_) * sizeof(AUVXComplex)));
  }
  /// The combination of two products that GetVisible forms.
  [[nodiscard]] static AUVXComplex mean(const AUVXComplex& a, const AUVXComplex& b) {
    const double re = (double{a.Re()} + double{b.Re()}) / 2;
    const double im = (double{a.Im()} + double{b.Im()}) / 2;
    if (!a.isUsable() || !b.isUsable()) return {re, im, 0.0};
    const double wa = a.Weight();
    const double wb = b.Weight();
    return {re, im, 4 * wa * wb / (wa + wb)};
  }
  /// Indices of the products that are combined; the second is -1 for a product taken as it is.
  [[nodiscard]] int first() const { return first_; }
  [[nodiscard]] int second() const { return second_; }
  /// True when every product it combines is among the first `products`.
  [[nodiscard]] bool fits(std::uint32_t products) const {
    return first_ >= 0 && first_ < static_cast<std::int64_t>(products) &&
           second_ < static_cast<std::int64_t>(products);
  }
  [[nodiscard]] StokesQuantity quantity() const { return quantity_; }
  /// "I", "RR", "LL", "XX", "YY", "V", "Q" or "U".
  [[nodiscard]] const char* name() const;
  bool operator==(const AStokesMix&) const = default;

 private:
  [[nodiscard]] static AUVXComplex loadVisible(const std::uint8_t* bytes) {
    return {loadLittle<float>(bytes), loadLittle<float>(bytes + 4), loadLittle<float>(bytes + 8)};
  }

  StokesQuantity quantity_ = StokesQuantity::kI;
  std::int32_t first_ = 0;
  std::int32_t second_ = -1;
};

/// FITS code of a mix's name (I Q U V 1..4, RR LL -1 -2, XX YY -5 -6); 0 for a name that is none of them.
[[nodiscard]] int stokesFitsCode(const std::string& name);

/// The combinations that the stored products allow, in this order: I (stored I; else the mean of RR and LL;
/// else of XX and YY), RR, LL, XX, YY, V, Q, U (the last three only when stored as such). Empty when none is
/// possible. The caller deletes the list.
[[nodiscard]] AArray<AStokesMix>* toListMix(const AUVXStokes& stokes);

}  // namespace lumo
