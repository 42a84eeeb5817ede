// SPDX-License-Identifier: GPL-3.0-or-later
#include "UvfitsBuilder.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <stdexcept>

namespace lumo::test {
namespace {

constexpr std::size_t kBlock = 2880;
constexpr std::size_t kCard = 80;

std::string padded(std::string text, std::size_t size) {
  text.resize(size, ' ');
  return text;
}

std::string quoted(const std::string& value) {
  std::string text(1, '\'');
  text.append(padded(value, std::max<std::size_t>(8, value.size())));
  return text.append(1, '\'');
}

std::string decimal(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17G", value);
  return text;
}

template <typename Bits>
void appendBits(std::string& bytes, Bits bits) {
  for (int shift = static_cast<int>(sizeof(Bits)) * 8 - 8; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<char>((bits >> shift) & 0xFF));
}

}  // namespace

FitsHeader& FitsHeader::set(const std::string& name, const std::string& value) {
  for (auto& card : cards_) {
    if (card.first != name) continue;
    card.second = value;
    return *this;
  }
  cards_.emplace_back(name, value);
  return *this;
}

FitsHeader& FitsHeader::number(const std::string& name, double value) {
  return set(name, decimal(value));
}
FitsHeader& FitsHeader::whole(const std::string& name, std::int64_t value) {
  return set(name, std::to_string(value));
}
FitsHeader& FitsHeader::logical(const std::string& name, bool value) {
  return set(name, value ? "T" : "F");
}
FitsHeader& FitsHeader::text(const std::string& name, const std::string& value) {
  return set(name, quoted(value));
}
FitsHeader& FitsHeader::history(const std::string& line) {
  cards_.emplace_back("HISTORY", line);
  return *this;
}
FitsHeader& FitsHeader::remove(const std::string& name) {
  std::erase_if(cards_, [&](const auto& card) { return card.first == name; });
  return *this;
}

std::string FitsHeader::bytes() const {
  std::string all;
  for (const auto& [name, value] : cards_) {
    if (name == "HISTORY")
      all += padded(padded(name, 8) + value, kCard);
    else if (value.starts_with("'"))
      all += padded(padded(name, 8) + "= " + value, kCard);
    else
      all +=
          padded(padded(name, 8) + "= " + std::string(value.size() < 20 ? 20 - value.size() : 0, ' ') + value,
                 kCard);
  }
  all += padded("END", kCard);
  padBlock(all, ' ');
  return all;
}

void padBlock(std::string& bytes, char with) {
  bytes.resize((bytes.size() + kBlock - 1) / kBlock * kBlock, with);
}

void appendBig(std::string& bytes, int bitpix, double value) {
  switch (bitpix) {
    case 8:
      return appendBits(bytes, static_cast<std::uint8_t>(value));
    case 16:
      return appendBits(bytes, static_cast<std::uint16_t>(static_cast<std::int16_t>(value)));
    case 32:
      return appendBits(bytes, static_cast<std::uint32_t>(static_cast<std::int32_t>(value)));
    case -32:
      return appendBits(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
    case -64:
      return appendBits(bytes, std::bit_cast<std::uint64_t>(value));
    default:
      throw std::invalid_argument("BITPIX");
  }
}

FitsTable& FitsTable::column(const std::string& name, const std::string& form) {
  columns_.push_back({name, form.back(), std::stoul(form.substr(0, form.size() - 1))});
  return *this;
}

FitsTable& FitsTable::card(const std::string& name, const std::string& value) {
  cards_.emplace_back(name, value);
  return *this;
}

FitsTable& FitsTable::numbers(const std::vector<double>& values) {
  for (const double value : values) {
    const Column& column = columns_.at(next_);
    appendBig(data_, column.type == 'D' ? -64 : column.type == 'E' ? -32 : 32, value);
    if (++inCell_ < column.repeat) continue;
    inCell_ = 0;
    next_ = (next_ + 1) % columns_.size();
  }
  return *this;
}

FitsTable& FitsTable::text(const std::string& cell) {
  data_ += padded(cell, columns_.at(next_).repeat);
  next_ = (next_ + 1) % columns_.size();
  return *this;
}

std::size_t FitsTable::width() const {
  std::size_t bytes = 0;
  for (const Column& column : columns_)
    bytes += column.repeat * (column.type == 'D' ? 8 : column.type == 'A' ? 1 : 4);
  return bytes;
}

std::string FitsTable::bytes() const {
  FitsHeader header;
  header.text("XTENSION", "BINTABLE").whole("BITPIX", 8).whole("NAXIS", 2);
  header.whole("NAXIS1", static_cast<std::int64_t>(width()));
  header.whole("NAXIS2", static_cast<std::int64_t>(data_.size() / width()));
  header.whole("PCOUNT", 0).whole("GCOUNT", 1).whole("TFIELDS", static_cast<std::int64_t>(columns_.size()));
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::string n = std::to_string(i + 1);
    header.text("TTYPE" + n, columns_[i].name);
    header.text("TFORM" + n, std::to_string(columns_[i].repeat) + columns_[i].type);
  }
  header.text("EXTNAME", name_).whole("EXTVER", 1);
  for (const auto& [name, value] : cards_) header.set(name, value);
  std::string all = header.bytes() + data_;
  padBlock(all, '\0');
  return all;
}

UvfitsBuilder::UvfitsBuilder() = default;

UvfitsBuilder::Axis& UvfitsBuilder::axis(const std::string& type) {
  const auto found =
      std::find_if(axes.begin(), axes.end(), [&](const Axis& candidate) { return candidate.type == type; });
  if (found == axes.end()) throw std::invalid_argument("no axis " + type);
  return *found;
}

std::size_t UvfitsBuilder::numbers() const {
  std::size_t count = 1;
  for (const Axis& entry : axes) count *= static_cast<std::size_t>(entry.pixels);
  return count;
}

void UvfitsBuilder::addParameter(const std::string& name, double scale, double zero) {
  parameterNames.push_back(name);
  parameterScales.push_back(scale);
  parameterZeros.push_back(zero);
}

UvfitsBuilder::Group& UvfitsBuilder::add(double u, double v, double baseline, double re, double im,
                                         double weight, const std::vector<double>& more) {
  Group group{{u, v, 0, baseline, 0, 0.25}, {}};
  group.parameters.insert(group.parameters.end(), more.begin(), more.end());
  const std::size_t parts = static_cast<std::size_t>(axis("COMPLEX").pixels);
  const double values[] = {re, im, weight};
  for (std::size_t i = 0; i < numbers(); ++i) group.array.push_back(values[i % parts]);
  return groups.emplace_back(std::move(group));
}

std::string UvfitsBuilder::bytes() const {
  FitsHeader header;
  header.logical("SIMPLE", true).whole("BITPIX", bitpix);
  header.whole("NAXIS", static_cast<std::int64_t>(axes.size()) + 1).whole("NAXIS1", 0);
  for (std::size_t i = 0; i < axes.size(); ++i) header.whole("NAXIS" + std::to_string(i + 2), axes[i].pixels);
  header.logical("EXTEND", true).logical("GROUPS", true);
  header.whole("PCOUNT", static_cast<std::int64_t>(parameterNames.size()));
  header.whole("GCOUNT", static_cast<std::int64_t>(groups.size()));
  for (std::size_t i = 0; i < axes.size(); ++i) {
    const std::string n = std::to_string(i + 2);
    header.text("CTYPE" + n, axes[i].type).number("CRVAL" + n, axes[i].value);
    header.number("CRPIX" + n, axes[i].pixel).number("CDELT" + n, axes[i].step);
  }
  for (std::size_t i = 0; i < parameterNames.size(); ++i) {
    const std::string n = std::to_string(i + 1);
    header.text("PTYPE" + n, parameterNames[i]);
    header.number("PSCAL" + n, parameterScales[i]).number("PZERO" + n, parameterZeros[i]);
  }
  header.text("OBJECT", "SRC").number("EQUINOX", 2000).text("BUNIT", "JY");
  if (edit) edit(header);
  std::string all = header.bytes();
  for (const Group& group : groups) {
    for (const double value : group.parameters) appendBig(all, bitpix, value);
    for (const double value : group.array) appendBig(all, bitpix, value);
  }
  padBlock(all, '\0');
  for (const FitsTable& table : tables) all += table.bytes();
  return all;
}

std::size_t UvfitsBuilder::primaryBytes() const {
  UvfitsBuilder alone = *this;
  alone.tables.clear();
  return alone.bytes().size();
}

FitsTable frequencyTable(std::size_t ifs) {
  const std::string n = std::to_string(ifs);
  FitsTable table("AIPS FQ");
  table.column("FRQSEL", "1J").column("IF FREQ", n + "D").column("CH WIDTH", n + "E");
  table.column("TOTAL BANDWIDTH", n + "E").column("SIDEBAND", n + "J");
  return table;
}

FitsTable sourceTable(std::size_t ifs) {
  FitsTable table("AIPS SU");
  table.column("ID. NO.", "1J").column("SOURCE", "16A").column("RAEPO", "1D").column("DECEPO", "1D");
  table.column("EPOCH", "1D").column("FREQOFF", std::to_string(ifs) + "D");
  return table;
}

FitsTable antennaTable() {
  FitsTable table("AIPS AN");
  table.column("ANNAME", "8A").column("STABXYZ", "3D").column("NOSTA", "1J");
  return table;
}

}  // namespace lumo::test
