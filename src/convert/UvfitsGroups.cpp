// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/UvfitsGroups.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr std::int64_t kMaxParameters = 999;  // PTYPEn has room for three digits
constexpr std::uint64_t kMaxVisibilities = (std::numeric_limits<std::uint32_t>::max() - 26) / 12;

/// The big-endian number at `bytes`.
template <typename T>
double loadBig(const std::uint8_t* bytes) {
  using Bits = std::conditional_t<
      sizeof(T) == 1, std::uint8_t,
      std::conditional_t<sizeof(T) == 2, std::uint16_t,
                         std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;
  Bits bits = 0;
  std::memcpy(&bits, bytes, sizeof bits);
  if constexpr (sizeof(T) == 2) bits = __builtin_bswap16(bits);
  if constexpr (sizeof(T) == 4) bits = __builtin_bswap32(bits);
  if constexpr (sizeof(T) == 8) bits = __builtin_bswap64(bits);
  return static_cast<double>(std::bit_cast<T>(bits));
}

bool isFinite(float value) {
  return std::abs(value) <= std::numeric_limits<float>::max();
}

}  // namespace

Status UvfitsGroups::read(const UvfitsFile& file, const UvfitsAxes& axes) {
  std::int64_t bitpix = 0;
  std::int64_t parameters = 0;
  std::int64_t groups = 0;
  Status status = file.whole("BITPIX", -64, 64, bitpix);
  if (status.ok()) status = file.whole("PCOUNT", 1, kMaxParameters, parameters);
  if (status.ok()) status = file.whole("GCOUNT", 0, std::int64_t{1} << 53, groups);
  if (status.ok()) status = file.number("BSCALE", 1.0, scale_);
  if (status.ok()) status = file.number("BZERO", 0.0, zero_);
  if (!status.ok()) return status;
  if (bitpix != 8 && bitpix != 16 && bitpix != 32 && bitpix != -32 && bitpix != -64)
    return {StatusCode::kUnsupported, "card BITPIX is " + toStr(bitpix) + "; expected 8, 16, 32, -32 or -64"};
  if (bitpix > 0)
    if (Status blank = file.number("BLANK", blank_); !blank.ok()) return blank;
  bitpix_ = static_cast<int>(bitpix);
  parameterCount_ = static_cast<std::uint32_t>(parameters);
  count_ = static_cast<std::uint64_t>(groups);
  first_ = file.dataOffset();
  if (count_ == 0) return {StatusCode::kNoData, "holds no visibilities: card GCOUNT is 0"};
  const std::uint64_t space = file.map().size() - first_;
  const auto bytes = static_cast<std::uint64_t>(std::abs(bitpix_) / 8);
  if (axes.numbers > space || (axes.numbers + parameterCount_) * bytes > space / count_)
    return {StatusCode::kBadFormat, "the header promises " + toStr(groups) + " groups of " +
                                        toStr(static_cast<std::int64_t>(axes.numbers + parameterCount_)) +
                                        " numbers of " + toStr(static_cast<std::int64_t>(bytes)) +
                                        " bytes, but only " + toStr(static_cast<std::int64_t>(space)) +
                                        " bytes follow it: the file is cut short"};
  groupBytes_ = (axes.numbers + parameterCount_) * bytes;
  if (axes.shape().visibilities() > kMaxVisibilities)
    return {StatusCode::kUnsupported, "a group of so many IFs, channels and products is too large"};
  weights_ = axes.complexParts == 3;
  complexStride_ = axes.complexStride;
  places_.clear();
  places_.reserve(axes.shape().visibilities());
  for (std::uint64_t i = 0; i < axes.ifs; ++i)
    for (std::uint64_t c = 0; c < axes.channels; ++c)
      for (std::uint64_t p = 0; p < axes.products.size(); ++p)
        places_.push_back(i * axes.ifStride + c * axes.channelStride + p * axes.stokesStride);
  return {};
}

template <typename T>
void UvfitsGroups::decodeAs(const std::uint8_t* bytes, std::span<double> parameters,
                            std::span<AUVXComplex> visibilities, Damage& damage) const {
  for (std::size_t i = 0; i < parameters.size(); ++i) parameters[i] = loadBig<T>(bytes + i * sizeof(T));
  const std::uint8_t* const array = bytes + parameters.size() * sizeof(T);
  const auto value = [&](std::uint64_t place) {
    const double stored = loadBig<T>(array + place * sizeof(T));
    if constexpr (std::is_integral_v<T>)
      if (blank_ && stored == *blank_) return std::numeric_limits<float>::quiet_NaN();
    return static_cast<float>(stored * scale_ + zero_);
  };
  for (std::size_t k = 0; k < visibilities.size(); ++k) {
    const float re = value(places_[k]);
    const float im = value(places_[k] + complexStride_);
    float weight = weights_ ? value(places_[k] + 2 * complexStride_) : 1.0F;
    const bool weightFinite = isFinite(weight);
    const bool valueFinite = isFinite(re) && isFinite(im);
    if (weightFinite && valueFinite) {
      visibilities[k] = AUVXComplex(re, im, weight);
      continue;
    }
    damage.weights += weightFinite ? 0 : 1;
    damage.values += valueFinite ? 0 : 1;
    visibilities[k] = valueFinite ? AUVXComplex(re, im, 0.0) : AUVXComplex();
  }
}

void UvfitsGroups::decode(const std::uint8_t* bytes, std::span<double> parameters,
                          std::span<AUVXComplex> visibilities, Damage& damage) const {
  switch (bitpix_) {
    case 8:
      return decodeAs<std::uint8_t>(bytes, parameters, visibilities, damage);
    case 16:
      return decodeAs<std::int16_t>(bytes, parameters, visibilities, damage);
    case 32:
      return decodeAs<std::int32_t>(bytes, parameters, visibilities, damage);
    case -32:
      return decodeAs<float>(bytes, parameters, visibilities, damage);
    default:
      return decodeAs<double>(bytes, parameters, visibilities, damage);
  }
}

}  // namespace lumo
