// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AUVXFile.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

#include "core/Crc32.h"
#include "core/LittleEndian.h"
#include "io/UvxLayout.h"

namespace lumo {

namespace {

Status bad(const std::string& what) {
  return {StatusCode::kBadFormat, what};
}

bool inside(std::uint64_t offset, std::uint64_t size, std::uint64_t fileSize) {
  return offset <= fileSize && size <= fileSize - offset;
}

std::string paddedText(const std::uint8_t* bytes, std::size_t size) {
  const auto* const text = reinterpret_cast<const char*>(bytes);
  return {text, ::strnlen(text, size)};
}

}  // namespace

int AUVXFile::Open(const std::string& name, int mode) {
  Close();
  setName(name);
  if (mode != kRead) return fail({StatusCode::kUnsupported, "visibility files are only opened for reading"});
  Status status = map_.open(name);
  if (status.ok()) {
    status = readAll();
    if (Status read = intact(); !read.ok()) status = std::move(read);
  }
  if (status.ok()) return 1;
  Close();
  return fail(status);
}

int AUVXFile::Close() {
  map_.close();
  shape_ = UvxShape();
  groupCount_ = groupOffset_ = 0;
  groupBytes_ = 0;
  uMin_ = uMax_ = vMin_ = vMax_ = 0;
  unit_.clear();
  tables_.clear();
  group_ = nullptr;
  return 1;
}

Status AUVXFile::readAll() {
  Status status = readHeader();
  if (status.ok()) {
    const std::uint8_t* const header = map_.data();
    status = readDirectory(loadLittle<std::uint64_t>(header + uvx_header::kDirectoryOffset),
                           loadLittle<std::uint32_t>(header + uvx_header::kTableCount));
  }
  return status.ok() ? checkTables() : status;
}

Status AUVXFile::readHeader() {
  namespace h = uvx_header;
  const std::uint8_t* const header = map_.data();
  if (map_.size() < h::kBytes) return bad("is shorter than the 128-byte header of a UVX file");
  if (std::memcmp(header, kUvxMagic.data(), kUvxMagic.size()) != 0)
    return bad("is not a UVX file: its first 8 bytes are not the UVX signature");
  const auto version = loadLittle<std::uint32_t>(header + h::kVersion);
  if (version != kUvxVersion)
    return {StatusCode::kUnsupported,
            "is UVX version " + std::to_string(version) + "; this program reads version 1"};
  if (loadLittle<std::uint32_t>(header + h::kHeaderSize) != h::kBytes)
    return bad("has a header size other than 128");
  if (loadLittle<std::uint32_t>(header + h::kCrc) != crc32Of(header, h::kCrc))
    return bad("has a damaged header: its checksum does not match");

  shape_ = {loadLittle<std::uint32_t>(header + h::kIfs), loadLittle<std::uint32_t>(header + h::kChannels),
            loadLittle<std::uint32_t>(header + h::kProducts)};
  groupCount_ = loadLittle<std::uint64_t>(header + h::kGroupCount);
  groupOffset_ = loadLittle<std::uint64_t>(header + h::kGroupOffset);
  groupBytes_ = loadLittle<std::uint32_t>(header + h::kGroupBytes);
  if (shape_.ifs == 0 || shape_.channels == 0 || shape_.products == 0)
    return bad("has no IF, channel or Stokes product");
  // The group size is 32 bit, so a shape whose product exceeds it cannot agree with it; test without
  // overflow.
  constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
  if (std::uint64_t{shape_.ifs} * shape_.channels > kLimit || shape_.visibilities() > kLimit ||
      UvxRecord::kBytes + kVisibilityBytes * shape_.visibilities() != groupBytes_)
    return bad("has groups of " + std::to_string(groupBytes_) + " bytes, which is not 26 + 12 x " +
               std::to_string(shape_.ifs) + " IFs x " + std::to_string(shape_.channels) + " channels x " +
               std::to_string(shape_.products) + " products");
  if (groupOffset_ < h::kBytes || groupCount_ > kLimit * kLimit / groupBytes_ ||
      !inside(groupOffset_, groupCount_ * groupBytes_, map_.size()))
    return bad("is cut short: " + std::to_string(groupCount_) + " groups of " + std::to_string(groupBytes_) +
               " bytes do not fit in it");
  double* const extents[] = {&uMin_, &uMax_, &vMin_, &vMax_};
  for (std::size_t i = 0; i < 4; ++i) {
    *extents[i] = loadLittle<double>(header + h::kExtents + 8 * i);
    if (!std::isfinite(*extents[i])) return bad("has a u or v extent that is not finite");
  }
  unit_ = paddedText(header + h::kUnit, h::kUnitBytes);
  return {};
}

Status AUVXFile::readDirectory(std::uint64_t offset, std::uint32_t count) {
  namespace e = uvx_entry;
  if (offset < uvx_header::kBytes || !inside(offset, std::uint64_t{count} * e::kBytes, map_.size()))
    return bad("is cut short: its table directory lies outside the file");
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* const entry = map_.data() + offset + std::uint64_t{i} * e::kBytes;
    TableEntry table{paddedText(entry, e::kNameBytes), loadLittle<std::uint64_t>(entry + e::kOffset),
                     loadLittle<std::uint64_t>(entry + e::kSize),
                     loadLittle<std::uint32_t>(entry + e::kRows)};
    if (!inside(table.offset, table.bytes, map_.size()))
      return bad("is cut short: table '" + table.name + "' lies outside the file");
    // Only tables that are used are checksummed: a directory of many overlapping entries must not cost more
    // than reading the file.
    const bool known = table.name == "SU" || table.name == "FQ" || table.name == "ST" || table.name == "AN" ||
                       table.name == "HI";
    if (!known || GetTable(table.name).has_value()) continue;
    if (crc32Of(map_.data() + table.offset, table.bytes) != loadLittle<std::uint32_t>(entry + e::kCrc))
      return bad("has a damaged table '" + table.name + "': its checksum does not match");
    tables_.push_back(std::move(table));
  }
  return {};
}

Status AUVXFile::checkTables() const {
  const auto rows = [&](const char* name, std::uint64_t rowBytes, bool required) -> Status {
    for (const TableEntry& table : tables_) {
      if (table.name != name) continue;
      // Divided, since the product of a row of many IFs and a count may be any number.
      const bool whole = table.bytes % rowBytes == 0 && table.bytes / rowBytes == table.rows;
      if (!whole || (required && table.rows == 0))
        return bad(std::string("has a table '") + name + "' of " + std::to_string(table.bytes) +
                   " bytes for " + std::to_string(table.rows) + " rows of " + std::to_string(rowBytes));
      return {};
    }
    return required ? bad(std::string("has no table '") + name + "'") : Status();
  };
  const std::uint64_t selectionBytes = kSelectionHeadBytes + kSelectionBandBytes * shape_.ifs;
  for (const Status& status : {rows("SU", kSourceRowBytes, true), rows("FQ", selectionBytes, true),
                               rows("ST", kProductRowBytes, true), rows("AN", kAntennaRowBytes, false)})
    if (!status.ok()) return status;

  const auto sources = *GetTable("SU");
  for (std::size_t at = 0; at < sources.size(); at += kSourceRowBytes) {
    const std::uint8_t* const row = sources.data() + at;
    if (loadLittle<std::uint32_t>(row + 20) > 3) return bad("has a source with an unknown frame");
    for (const std::size_t field : {24, 32, 40})
      if (!std::isfinite(loadLittle<double>(row + field)))
        return bad("has a source position that is not finite");
  }
  const auto selections = *GetTable("FQ");
  for (std::size_t at = 0; at < selections.size(); at += selectionBytes) {
    const std::uint8_t* const row = selections.data() + at;
    const auto id = loadLittle<std::int32_t>(row);
    if (id < -128 || id > 127)
      return bad("has a frequency-selection ID " + std::to_string(id) + " outside -128..127");
    for (std::size_t field = kSelectionHeadBytes; field < selectionBytes; field += 8)
      if (!std::isfinite(loadLittle<double>(row + field))) return bad("has a frequency that is not finite");
  }
  const auto products = *GetTable("ST");
  if (products.size() != kProductRowBytes * shape_.products)
    return bad("lists " + std::to_string(products.size() / kProductRowBytes) +
               " Stokes products where its groups have " + std::to_string(shape_.products));
  for (std::size_t at = 0; at < products.size(); at += kProductRowBytes)
    if (!isProductCode(loadLittle<std::int32_t>(products.data() + at)))
      return bad("has an unknown Stokes product code " +
                 std::to_string(loadLittle<std::int32_t>(products.data() + at)));
  return {};
}

std::optional<std::span<const std::uint8_t>> AUVXFile::GetTable(std::string_view name) const {
  for (const TableEntry& table : tables_)
    if (table.name == name)
      return std::span(map_.data() + table.offset, static_cast<std::size_t>(table.bytes));
  return std::nullopt;
}

int AUVXFile::SeekUVGroup(std::uint64_t position) {
  group_ = position < groupCount_ ? groupAt(position) : nullptr;
  return group_ != nullptr ? 1 : 0;
}

void AUVXFile::releaseBefore(std::uint64_t index) const {
  map_.release(groupOffset_, groupOffset_ + index * groupBytes_);
}

}  // namespace lumo
