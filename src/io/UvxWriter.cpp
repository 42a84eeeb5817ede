// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/UvxWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "core/Crc32.h"
#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo {

namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename T>
void put(Bytes& bytes, std::type_identity_t<T> value) {
  const std::size_t at = bytes.size();
  bytes.resize(at + sizeof(T));
  storeLittle<T>(bytes.data() + at, value);
}

void putName(Bytes& bytes, const std::string& name) {
  const std::size_t length = std::min(name.size(), kNameBytes);
  bytes.insert(bytes.end(), name.begin(), name.begin() + static_cast<std::ptrdiff_t>(length));
  bytes.insert(bytes.end(), kNameBytes - length, ' ');
}

Bytes sourceTable(const UvxContent& content) {
  Bytes bytes;
  for (const AUVXSourceItem& source : content.sources) {
    put<std::int32_t>(bytes, source.id);
    putName(bytes, source.name);
    put<std::uint32_t>(bytes, static_cast<std::uint32_t>(source.frame));
    put<double>(bytes, source.rightAscension);
    put<double>(bytes, source.declination);
    put<double>(bytes, source.epoch);
  }
  return bytes;
}

Bytes selectionTable(const UvxContent& content) {
  Bytes bytes;
  for (const UvxSelection& selection : content.selections) {
    put<std::int32_t>(bytes, selection.id);
    put<std::uint32_t>(bytes, 0);
    for (const UvxSelection::Band& band : selection.bands) {
      put<double>(bytes, band.frequency);
      put<double>(bytes, band.increment);
    }
  }
  return bytes;
}

Bytes productTable(const UvxContent& content) {
  Bytes bytes;
  for (const std::int32_t code : content.products) put<std::int32_t>(bytes, code);
  return bytes;
}

Bytes antennaTable(const UvxContent& content) {
  Bytes bytes;
  for (const UvxAntenna& antenna : content.antennas) {
    put<std::int32_t>(bytes, antenna.id);
    putName(bytes, antenna.name);
    put<std::uint32_t>(bytes, 0);
    put<double>(bytes, antenna.x);
    put<double>(bytes, antenna.y);
    put<double>(bytes, antenna.z);
  }
  return bytes;
}

Bytes historyTable(const UvxContent& content) {
  Bytes bytes;
  for (const std::string& line : content.history) {
    for (const char c : line) bytes.push_back(static_cast<std::uint8_t>(c == '\n' ? ' ' : c));
    bytes.push_back('\n');
  }
  return bytes;
}

Status invalid(const std::string& what) {
  return {StatusCode::kInvalidValue, what};
}

Status checkContent(const UvxContent& content) {
  const UvxShape& shape = content.shape;
  if (shape.ifs == 0 || shape.channels == 0 || shape.products == 0)
    return invalid("a UVX file needs at least one IF, channel and product");
  constexpr std::uint64_t kMostVisibilities =
      (std::numeric_limits<std::uint32_t>::max() - UvxRecord::kBytes) / kVisibilityBytes;
  if (shape.ifs > kMostVisibilities || shape.channels > kMostVisibilities / shape.ifs ||
      shape.products > kMostVisibilities / (std::uint64_t{shape.ifs} * shape.channels))
    return invalid("a group of so many IFs, channels and products is larger than UVX can hold");
  if (content.sources.empty()) return invalid("a UVX file needs a source");
  for (const AUVXSourceItem& source : content.sources)
    if (!std::isfinite(source.rightAscension) || !std::isfinite(source.declination) ||
        !std::isfinite(source.epoch))
      return invalid("the position of source '" + source.name + "' is not finite");
  if (content.selections.empty()) return invalid("a UVX file needs a frequency selection");
  for (const UvxSelection& selection : content.selections) {
    if (selection.id < -128 || selection.id > 127)
      return invalid("frequency-selection ID " + std::to_string(selection.id) + " is outside -128..127");
    if (selection.bands.size() != shape.ifs)
      return invalid("frequency selection " + std::to_string(selection.id) + " has " +
                     std::to_string(selection.bands.size()) + " IFs, the groups have " +
                     std::to_string(shape.ifs));
    for (const UvxSelection::Band& band : selection.bands)
      if (!std::isfinite(band.frequency) || !std::isfinite(band.increment))
        return invalid("a frequency of selection " + std::to_string(selection.id) + " is not finite");
  }
  if (content.products.size() != shape.products)
    return invalid("the product list has " + std::to_string(content.products.size()) +
                   " entries, the groups have " + std::to_string(shape.products));
  for (const std::int32_t code : content.products)
    if (!isProductCode(code)) return invalid("unknown Stokes product code " + std::to_string(code));
  if (content.unit.size() >= uvx_header::kUnitBytes) return invalid("the unit text is longer than 15 bytes");
  return {};
}

}  // namespace

Status UvxWriter::begin(const std::string& name, UvxContent content) {
  const Status checked = checkContent(content);
  if (!checked.ok()) return checked.about(name);
  content_ = std::move(content);
  groups_ = 0;
  extentKnown_ = false;
  uMin_ = uMax_ = vMin_ = vMax_ = 0;
  const std::size_t groupBytes = UvxRecord::kBytes + kVisibilityBytes * content_.shape.visibilities();
  group_.assign(groupBytes, 0);
  // The counts of the header are known only at the end: finish() comes back for it.
  const Bytes header(uvx_header::kBytes, 0);
  if (file_.Open(name, AFile::kCreate) == 0 || file_.Write(header.data(), header.size()) == 0)
    return file_.status();
  position_ = header.size();
  return {};
}

Status UvxWriter::append(const UvxRecord& record, std::span<const AUVXComplex> visibilities) {
  if (visibilities.size() != content_.shape.visibilities())
    return invalid("a group of " + std::to_string(visibilities.size()) + " visibilities where " +
                   std::to_string(content_.shape.visibilities()) + " are expected");
  record.store(group_.data());
  std::memcpy(group_.data() + UvxRecord::kBytes, visibilities.data(), visibilities.size_bytes());
  if (file_.Write(group_.data(), group_.size()) == 0) return file_.status();
  position_ += group_.size();
  ++groups_;
  if (record.flag != 0 || !std::isfinite(record.u) || !std::isfinite(record.v)) return {};
  if (!extentKnown_) {
    uMin_ = uMax_ = record.u;
    vMin_ = vMax_ = record.v;
    extentKnown_ = true;
  }
  uMin_ = std::min<double>(uMin_, record.u);
  uMax_ = std::max<double>(uMax_, record.u);
  vMin_ = std::min<double>(vMin_, record.v);
  vMax_ = std::max<double>(vMax_, record.v);
  return {};
}

Status UvxWriter::writeTables(Bytes& directory, std::uint32_t& count) {
  struct Table {
    const char* name;
    Bytes bytes;
    std::size_t rows;
  };
  const Table tables[] = {{"SU", sourceTable(content_), content_.sources.size()},
                          {"FQ", selectionTable(content_), content_.selections.size()},
                          {"ST", productTable(content_), content_.products.size()},
                          {"AN", antennaTable(content_), content_.antennas.size()},
                          {"HI", historyTable(content_), content_.history.size()}};
  for (const Table& table : tables) {
    if (table.rows == 0) continue;
    const std::size_t at = directory.size();
    directory.resize(at + uvx_entry::kBytes);
    std::uint8_t* const entry = directory.data() + at;
    std::memcpy(entry, table.name, std::strlen(table.name));
    storeLittle<std::uint64_t>(entry + uvx_entry::kOffset, position_);
    storeLittle<std::uint64_t>(entry + uvx_entry::kSize, table.bytes.size());
    storeLittle<std::uint32_t>(entry + uvx_entry::kRows, static_cast<std::uint32_t>(table.rows));
    storeLittle<std::uint32_t>(entry + uvx_entry::kCrc, crc32Of(table.bytes.data(), table.bytes.size()));
    if (file_.Write(table.bytes.data(), table.bytes.size()) == 0) return file_.status();
    position_ += table.bytes.size();
    ++count;
  }
  return {};
}

Status UvxWriter::finish() {
  Bytes directory;
  std::uint32_t count = 0;
  const Status tables = writeTables(directory, count);
  if (!tables.ok()) return tables;
  if (file_.Write(directory.data(), directory.size()) == 0) return file_.status();

  Bytes header(uvx_header::kBytes, 0);
  std::memcpy(header.data(), kUvxMagic.data(), kUvxMagic.size());
  const auto put32 = [&](std::size_t at, std::uint32_t value) {
    storeLittle<std::uint32_t>(header.data() + at, value);
  };
  const auto put64 = [&](std::size_t at, std::uint64_t value) {
    storeLittle<std::uint64_t>(header.data() + at, value);
  };
  put32(uvx_header::kVersion, kUvxVersion);
  put32(uvx_header::kHeaderSize, uvx_header::kBytes);
  put64(uvx_header::kGroupCount, groups_);
  put64(uvx_header::kGroupOffset, uvx_header::kBytes);
  put32(uvx_header::kGroupBytes, static_cast<std::uint32_t>(group_.size()));
  put32(uvx_header::kIfs, content_.shape.ifs);
  put32(uvx_header::kChannels, content_.shape.channels);
  put32(uvx_header::kProducts, content_.shape.products);
  const double extents[] = {uMin_, uMax_, vMin_, vMax_};
  for (std::size_t i = 0; i < 4; ++i)
    storeLittle<double>(header.data() + uvx_header::kExtents + 8 * i, extents[i]);
  put64(uvx_header::kDirectoryOffset, position_);
  put32(uvx_header::kTableCount, count);
  std::memcpy(header.data() + uvx_header::kUnit, content_.unit.data(), content_.unit.size());
  put32(uvx_header::kCrc, crc32Of(header.data(), uvx_header::kCrc));
  if (file_.Rewind() == 0 || file_.Write(header.data(), header.size()) == 0 || file_.Close() == 0)
    return file_.status();
  return {};
}

}  // namespace lumo
