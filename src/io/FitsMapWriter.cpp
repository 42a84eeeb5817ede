// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsMapWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "core/TextForm.h"
#include "core/Version.h"
#include "io/MapForm.h"

namespace lumo {

namespace {

constexpr double kArcsecPerDegree = 3600.0;

// The mandatory cards, in the words of cfitsio.
void addImage(FitsCards& cards, std::uint32_t rows, std::uint32_t columns) {
  const auto add = [&cards](const std::string& key, const std::string& value, const std::string& comment) {
    cards.addRecord(formatted("%-8s= %20s / %s", key.c_str(), value.c_str(), comment.c_str()));
  };
  add("SIMPLE", "T", "file does conform to FITS standard");
  add("BITPIX", "-32", "number of bits per data pixel");
  const std::uint32_t sizes[] = {columns, rows, 1, 1};
  add("NAXIS", toStr(std::int64_t{std::size(sizes)}), "number of data axes");
  for (int axis = 1; const std::uint32_t size : sizes) {
    add(axisKey("NAXIS", axis), toStr(std::int64_t{size}),
        "length of data axis " + toStr(std::int64_t{axis}));
    ++axis;
  }
  add("EXTEND", "T", "FITS dataset may contain extensions");
}

struct AxisCards {
  const char* type;
  const char* unit;
  double value;
  double pixel;
  double step;
};

void addAxis(FitsCards& cards, int axis, const AxisCards& content) {
  cards.addText(axisKey("CTYPE", axis), content.type);
  cards.add(axisKey("CRVAL", axis), content.value);
  cards.add(axisKey("CRPIX", axis), content.pixel);
  cards.add(axisKey("CDELT", axis), content.step);
  if (*content.unit != '\0') cards.addText(axisKey("CUNIT", axis), content.unit);
}

void addAxes(FitsCards& cards, const AMapHeader& header, const TMinMax& range, std::uint32_t rows,
             std::uint32_t columns) {
  const PixelAxis x = pixelAxis(range.xMin, range.xMax, columns).mirrored(columns);
  const PixelAxis y = pixelAxis(range.yMin, range.yMax, rows);
  const double frequency = std::isfinite(header.frequency) ? header.frequency : 0.0;
  addAxis(cards, 1,
          {"RA---SIN", "deg", fitsLongitude(header.rightAscension), x.reference, x.step / kArcsecPerDegree});
  addAxis(cards, 2, {"DEC--SIN", "deg", header.declination, y.reference, y.step / kArcsecPerDegree});
  addAxis(cards, 3, {"FREQ", "Hz", frequency, 1.0, fitsBandwidth(header.bandwidth)});
  addAxis(cards, 4, {"STOKES", "", static_cast<double>(fitsStokes(header.stokes)), 1.0, 1.0});
}

void addSky(FitsCards& cards, const AMapHeader& header) {
  constexpr double kHalfTurn = 180.0;
  cards.add("LONPOLE", kHalfTurn, "[deg]");
  cards.add("LATPOLE", header.declination, "[deg]");
  const std::string frame = fitsFrame(header.frame, header.epoch);
  if (!frame.empty()) cards.addText("RADESYS", frame);
  cards.add("EQUINOX", header.epoch, "[yr]");
  cards.addText("SPECSYS", "TOPOCENT");
  if (header.frequency > 0) cards.add("RESTFRQ", header.frequency, "[Hz] reference frequency");
}

void addValues(FitsCards& cards, const AMapHeader& header, const ValueRange& values) {
  cards.addText("OBJECT", header.sourceName);
  if (const auto beam = fitsBeam(header)) {
    cards.add("BMAJ", beam->major / kArcsecPerDegree, "[deg] beam FWHM, major axis");
    cards.add("BMIN", beam->minor / kArcsecPerDegree, "[deg] beam FWHM, minor axis");
    cards.add("BPA", beam->pa, "[deg] from north through east");
  }
  cards.addText("BUNIT", fitsUnit(header.unit));
  cards.addText("BTYPE", fitsKind(header.kind));
  if (values.set()) {
    cards.add("DATAMIN", values.min, "smallest finite pixel");
    cards.add("DATAMAX", values.max, "largest finite pixel");
  }
  cards.addText("ORIGIN", programVersion());
  cards.addText("DATE", fitsDate(header.date));
}

void addExactValues(FitsCards& cards, const AMapHeader& header, const TMinMax& range) {
  cards.addText("LUNIT", header.unit, "unit text");
  cards.addText("LSTOKES", header.stokes, "Stokes mix");
  cards.addText("LFRAME", frameName(header.frame), "frame of the position");
  cards.addExact("LRA", header.rightAscension, "[deg]");
  cards.addExact("LDEC", header.declination, "[deg]");
  cards.addExact("LEPOCH", header.epoch, "[yr]");
  cards.addExact("LFREQ", header.frequency, "[Hz] reference frequency");
  cards.addExact("LBWIDTH", header.bandwidth, "[Hz] width of the frequencies");
  cards.addExact("LBMAJ", header.beamMajor, "[arcsec] first beam FWHM");
  cards.addExact("LBMIN", header.beamMinor, "[arcsec] second beam FWHM");
  cards.addExact("LBPA", header.beamPa, "[deg] from north through east");
  cards.addExact("LBAREA", header.beamArea, "[pixel] beam area");
  cards.addExact("LXMIN", range.xMin, "[arcsec] westernmost column");
  cards.addExact("LXMAX", range.xMax, "[arcsec] easternmost column");
  cards.addExact("LYMIN", range.yMin, "[arcsec] southernmost row");
  cards.addExact("LYMAX", range.yMax, "[arcsec] northernmost row");
  cards.addExact("LVMIN", range.vMin, "value range of the map");
  cards.addExact("LVMAX", range.vMax, "value range of the map");
}

}  // namespace

ValueRange finiteRange(const AMatrix<float>& matrix, const AMatrixRect& rect) {
  ValueRange range;
  for (std::int32_t row = rect.firstRow; row <= rect.lastRow; ++row) {
    const float* const line = &matrix(static_cast<std::uint32_t>(row), 0);
    for (std::int32_t column = rect.firstColumn; column <= rect.lastColumn; ++column) {
      const double value = static_cast<double>(line[column]);
      if (!std::isfinite(value)) continue;
      range.min = std::min(range.min, value);
      range.max = std::max(range.max, value);
    }
  }
  return range;
}

FitsCards mapCards(const AMapHeader& header, const TMinMax& range, std::uint32_t rows, std::uint32_t columns,
                   const ValueRange& values) {
  FitsCards cards;
  addImage(cards, rows, columns);
  addAxes(cards, header, range, rows, columns);
  addSky(cards, header);
  addValues(cards, header, values);
  addExactValues(cards, header, range);
  for (const std::string& entry : header.history) cards.addHistory(entry);
  return cards;
}

int writeMapImage(AFile& file, const FitsCards& cards, const AMatrix<float>& matrix,
                  const AMatrixRect& rect) {
  const std::string header = headerBytes(cards);
  if (file.Write(header.data(), header.size()) == 0) return 0;
  const std::int64_t rows = std::int64_t{rect.lastRow} - rect.firstRow + 1;
  const std::int64_t columns = std::int64_t{rect.lastColumn} - rect.firstColumn + 1;
  constexpr std::int64_t kBlockPixels = std::int64_t{1} << 18;
  const std::int64_t rowsPerBlock = std::clamp<std::int64_t>(kBlockPixels / columns, 1, rows);
  std::vector<std::uint32_t> block(static_cast<std::size_t>(rowsPerBlock * columns));
  for (std::int64_t row = 0; row < rows; row += rowsPerBlock) {
    auto out = block.begin();
    for (std::int64_t r = row; r < std::min(row + rowsPerBlock, rows); ++r) {
      const float* const line = &matrix(static_cast<std::uint32_t>(rect.firstRow + r), 0);
      for (std::int64_t column = rect.lastColumn; column >= rect.firstColumn; --column)
        *out++ = __builtin_bswap32(std::bit_cast<std::uint32_t>(line[column]));
    }
    if (file.Write(block.data(), static_cast<std::size_t>(out - block.begin()) * sizeof(std::uint32_t)) == 0)
      return 0;
  }
  const auto pixelBytes = static_cast<std::size_t>(rows * columns) * sizeof(float);
  const std::string padding((kFitsBlockBytes - pixelBytes % kFitsBlockBytes) % kFitsBlockBytes, '\0');
  return file.Write(padding.data(), padding.size());
}

}  // namespace lumo
