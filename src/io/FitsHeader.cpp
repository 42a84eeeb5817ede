// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsHeader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "core/AFile.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

constexpr std::size_t kCardBytes = 80;
constexpr std::uint64_t kMaxHeaderBytes = std::uint64_t{64} << 20;
constexpr int kMostAxes = 32;
constexpr std::int64_t kLongestAxis = std::numeric_limits<std::int32_t>::max();

Status bad(std::string sentence) {
  return {StatusCode::kBadFormat, std::move(sentence)};
}

Status refuse(std::string sentence) {
  return {StatusCode::kUnsupported, std::move(sentence)};
}

Status checkStart(std::string_view start) {
  if (start.starts_with("SIMPLE  =")) return {};
  const bool compressed = start.starts_with("\x1f\x8b") || start.starts_with("\x1f\x9d") ||
                          start.starts_with("BZh") || start.starts_with("PK\x03\x04");
  if (compressed) return refuse("is compressed; uncompress it before it is read");
  return bad("is not a FITS file (it does not start with SIMPLE)");
}

// Takes the cards of one block; `ended` when END was among them.
Status takeCards(std::string_view block, FitsCards& cards, bool& ended) {
  for (std::size_t at = 0; at < block.size() && !ended; at += kCardBytes) {
    std::string_view card = block.substr(at, kCardBytes);
    card = card.substr(0, card.find_last_not_of(' ') + 1);
    ended = card == "END";
    if (!valueFits(card)) return bad("has a broken header: no FITS card is " + printable(card));
    if (!ended) cards.addRecord(std::string(card));
  }
  return {};
}

Status readCards(AFile& file, FitsCards& cards) {
  std::array<char, kFitsBlockBytes> block{};
  bool ended = false;
  for (std::uint64_t read = 0; !ended; read += kFitsBlockBytes) {
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(file.remaining(), kFitsBlockBytes));
    if (file.Read(block.data(), size) == 0) return file.status();
    if (read == 0)
      if (Status start = checkStart({block.data(), size}); !start.ok()) return start;
    if (size < kFitsBlockBytes) return bad("is cut short: its header has no END");
    if (read >= kMaxHeaderBytes) return refuse("has a header of more than 64 MiB");
    if (Status taken = takeCards({block.data(), size}, cards, ended); !taken.ok()) return taken;
  }
  return {};
}

std::optional<std::int64_t> integer(const FitsCards& cards, const std::string& key) {
  const auto value = cards.number(key);
  if (!value || *value != std::trunc(*value) || std::abs(*value) > 1e15) return std::nullopt;
  return static_cast<std::int64_t>(*value);
}

// The mandatory cards stand first and in order: FITS libraries read them by place, so those that count here
// must be the same ones.
Status readShape(const FitsCards& cards, ImageShape& shape) {
  const auto bitpix = integer(cards, "BITPIX");
  const auto axes = integer(cards, "NAXIS");
  if (!cards.standsAt(1, "BITPIX") || !cards.standsAt(2, "NAXIS") || !bitpix || !axes || *axes < 0)
    return bad("has a broken header: SIMPLE, BITPIX and NAXIS must come first");
  constexpr std::array<std::int64_t, 6> kTypes{8, 16, 32, 64, -32, -64};
  if (std::find(kTypes.begin(), kTypes.end(), *bitpix) == kTypes.end())
    return bad("has BITPIX " + toStr(*bitpix) + ", which is none of 8, 16, 32, 64, -32, -64");
  if (*axes > kMostAxes)
    return refuse("has " + toStr(*axes) + " axes; at most " + toStr(kMostAxes) + " are read");
  shape.bitpix = static_cast<int>(*bitpix);
  for (int axis = 1; axis <= *axes; ++axis) {
    const auto length = integer(cards, axisKey("NAXIS", axis));
    if (!cards.standsAt(static_cast<std::size_t>(axis) + 2, axisKey("NAXIS", axis)) || !length || *length < 0)
      return bad("has a broken header: " + axisKey("NAXIS", axis) + " is missing or no length");
    if (*length > kLongestAxis)
      return refuse("has an axis of " + toStr(*length) + " pixels; at most " + toStr(kLongestAxis) +
                    " are read");
    shape.lengths.push_back(*length);
  }
  return {};
}

Status checkImage(const FitsCards& cards, const ImageShape& shape) {
  if (!shape.lengths.empty() && shape.lengths[0] == 0 && cards.has("GROUPS"))
    return refuse("holds visibilities (random groups), not an image");
  if (shape.lengths.empty() ||
      std::find(shape.lengths.begin(), shape.lengths.end(), 0) != shape.lengths.end())
    return refuse(
        "holds no image in its primary HDU (images in extensions, compressed ones too, are not read)");
  if (integer(cards, "PCOUNT").value_or(0) != 0 || integer(cards, "GCOUNT").value_or(1) != 1)
    return refuse("is not a plain image: PCOUNT is not 0 or GCOUNT not 1");
  for (const char* const key : {"BSCALE", "BZERO"})
    if (cards.has(key) && !cards.number(key))
      return bad(std::string("has a ") + key + " that is not a number");
  if (cards.number("BSCALE").value_or(1.0) == 0.0) return bad("has BSCALE 0, which leaves no pixel values");
  return {};
}

}  // namespace

Status readFitsHeader(const std::string& path, FitsHeader& header) {
  header = FitsHeader();
  AFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  Status status = readCards(file, header.cards);
  if (status.ok()) status = readShape(header.cards, header.shape);
  if (status.ok()) status = checkImage(header.cards, header.shape);
  header.dataBytes = file.remaining();
  return status;
}

}  // namespace lumo
