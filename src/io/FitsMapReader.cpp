// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsMapReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "core/TextForm.h"
#include "io/FitsMapHeader.h"

namespace lumo {

namespace {

constexpr int kBitsPerByte = 8;

// The file must hold all pixels that the header promises, before memory is taken for them.
Status checkLength(const FitsHeader& header, const MapLayout& layout) {
  const auto pixelBytes = static_cast<std::uint64_t>(std::abs(header.shape.bitpix) / kBitsPerByte);
  // Both lengths are below 2^31, so their product cannot overflow; it is compared without the bytes for that.
  const std::uint64_t pixels = std::uint64_t{layout.rows} * layout.columns;
  if (pixels <= header.dataBytes / pixelBytes) return {};
  return {StatusCode::kBadFormat,
          "is cut short: " + toStr(layout.columns) + " x " + toStr(layout.rows) + " pixels of " +
              toStr(static_cast<std::int64_t>(pixelBytes)) + " bytes, but only " +
              toStr(static_cast<std::int64_t>(header.dataBytes)) + " bytes behind the header"};
}

float toFloat(double value) {
  if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max()))
    return std::copysign(std::numeric_limits<float>::infinity(), value < 0 ? -1.0F : 1.0F);
  return static_cast<float>(value);
}

// Single-precision pixels as they stand, line by line into their rows.
int readPlain(fitsfile* file, const MapLayout& layout, AMatrix<float>& matrix) {
  int error = 0;
  const std::int64_t columns = layout.columns;
  for (std::uint32_t line = 0; line < layout.rows && error == 0; ++line) {
    float* const row = &matrix(layout.mirrorY ? layout.rows - 1 - line : line, 0);
    fits_read_img(file, TFLOAT, line * columns + 1, columns, nullptr, row, nullptr, &error);
    if (layout.mirrorX) std::reverse(row, row + columns);
  }
  return error;
}

// Any type and orientation, in blocks through double precision.
int readConverted(fitsfile* file, const MapLayout& layout, bool integers, AMatrix<float>& matrix) {
  constexpr std::int64_t kBlockPixels = std::int64_t{1} << 16;
  const std::int64_t total = std::int64_t{layout.rows} * layout.columns;
  std::vector<double> block(static_cast<std::size_t>(std::min(kBlockPixels, total)));
  double blank = std::numeric_limits<double>::quiet_NaN();
  int anyBlank = 0;  // cfitsio writes through this pointer unasked
  const std::uint32_t lineLength = layout.fastIsX ? layout.columns : layout.rows;
  std::uint32_t line = 0;
  std::uint32_t inLine = 0;
  int error = 0;
  for (std::int64_t done = 0; done < total && error == 0; done += kBlockPixels) {
    const std::int64_t count = std::min(kBlockPixels, total - done);
    fits_read_img(file, TDOUBLE, done + 1, count, integers ? &blank : nullptr, block.data(), &anyBlank,
                  &error);
    for (std::int64_t i = 0; i < count && error == 0; ++i) {
      const std::uint32_t x = layout.fastIsX ? inLine : line;
      const std::uint32_t y = layout.fastIsX ? line : inLine;
      matrix(layout.mirrorY ? layout.rows - 1 - y : y, layout.mirrorX ? layout.columns - 1 - x : x) =
          toFloat(block[static_cast<std::size_t>(i)]);
      if (++inLine == lineLength) {
        inLine = 0;
        ++line;
      }
    }
  }
  return error;
}

}  // namespace

Status readMapRecord(const FitsHeader& header, MapRecord& record) {
  const FitsCards& cards = header.cards;
  Status status = findLayout(cards, header.shape, record.layout);
  if (status.ok()) status = checkLength(header, record.layout);
  if (!status.ok()) return status;
  PixelForm& form = record.form;
  form.integers = header.shape.bitpix > 0;
  form.scale = cards.number("BSCALE").value_or(1.0);
  form.zero = cards.number("BZERO").value_or(0.0);
  form.single = header.shape.bitpix == FLOAT_IMG && form.scale == 1.0 && form.zero == 0.0;
  readRecord(cards, header.shape, record.layout, record.header, record.range);
  return {};
}

Status readMapPixels(fitsfile* file, const MapRecord& record, AMatrix<float>& matrix) {
  const MapLayout& layout = record.layout;
  matrix.resize(layout.rows, layout.columns);
  int error = 0;
  fits_set_bscale(file, record.form.scale, record.form.zero, &error);
  if (error == 0)
    error = record.form.single && layout.fastIsX ? readPlain(file, layout, matrix)
                                                 : readConverted(file, layout, record.form.integers, matrix);
  if (error == 0) return {};
  matrix.clear();
  return fitsFailure(error, StatusCode::kReadFailed, "has pixels that cannot be read");
}

}  // namespace lumo
