// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AStokesMix.h"

#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo {

namespace {

struct QuantityName {
  StokesQuantity quantity;
  const char* name;
  std::int32_t code;  ///< as a stored product and as a FITS Stokes value
};

// In the order in which mixes are offered.
constexpr QuantityName kQuantities[] = {{StokesQuantity::kI, "I", 1},    {StokesQuantity::kRR, "RR", -1},
                                        {StokesQuantity::kLL, "LL", -2}, {StokesQuantity::kXX, "XX", -5},
                                        {StokesQuantity::kYY, "YY", -6}, {StokesQuantity::kV, "V", 4},
                                        {StokesQuantity::kQ, "Q", 2},    {StokesQuantity::kU, "U", 3}};

}  // namespace

AUVXStokes::AUVXStokes(const AUVXFile& file) {
  const auto table = file.GetTable("ST");
  if (!table) return;
  for (std::size_t at = 0; at + kProductRowBytes <= table->size(); at += kProductRowBytes)
    products_.push_back(loadLittle<std::int32_t>(table->data() + at));
}

int AUVXStokes::indexOf(std::int32_t code) const {
  for (std::size_t i = 0; i < products_.size(); ++i)
    if (products_[i] == code) return static_cast<int>(i);
  return -1;
}

const char* AStokesMix::name() const {
  for (const QuantityName& entry : kQuantities)
    if (entry.quantity == quantity_) return entry.name;
  return "";
}

int stokesFitsCode(const std::string& name) {
  for (const QuantityName& entry : kQuantities)
    if (name == entry.name) return entry.code;
  return 0;
}

AArray<AStokesMix>* toListMix(const AUVXStokes& stokes) {
  auto* const list = new AArray<AStokesMix>();
  const auto append = [list](const AStokesMix& mix) { list->InsertAt(list->count(), mix); };
  const auto stored = [&stokes](std::int32_t code) { return stokes.indexOf(code); };
  for (const QuantityName& entry : kQuantities) {
    if (stored(entry.code) >= 0) {
      append({entry.quantity, stored(entry.code)});
    } else if (entry.quantity == StokesQuantity::kI) {
      if (stored(-1) >= 0 && stored(-2) >= 0)
        append({StokesQuantity::kI, stored(-1), stored(-2)});
      else if (stored(-5) >= 0 && stored(-6) >= 0)
        append({StokesQuantity::kI, stored(-5), stored(-6)});
    }
  }
  return list;
}

}  // namespace lumo
