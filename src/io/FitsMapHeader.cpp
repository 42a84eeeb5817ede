// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsMapHeader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "core/TextForm.h"
#include "core/Units.h"
#include "io/FitsText.h"
#include "io/MapForm.h"

namespace lumo {

namespace {

constexpr double kUnset = std::numeric_limits<double>::quiet_NaN();
constexpr double kArcsecPerDegree = 3600.0;

// Programs that rewrite a header keep about this many digits of its numbers.
bool near(double a, double b, double tolerance = 1e-6) {
  return std::abs(a - b) <= tolerance * std::max(std::abs(a), std::abs(b));
}

// Number of the axis whose CTYPE starts so, 0 if there is none.
int findAxis(const FitsCards& cards, const ImageShape& shape, std::string_view type) {
  for (int axis = 1; axis <= static_cast<int>(shape.lengths.size()); ++axis)
    if (cards.text(axisKey("CTYPE", axis)).value_or("").starts_with(type)) return axis;
  return 0;
}

// Step of an axis, as CDELTi or as CDi_i.
std::optional<double> planeStep(const FitsCards& cards, int axis) {
  const auto step = cards.number(axisKey("CDELT", axis));
  return step ? step : cards.number(axisKey("CD", axis) + "_" + axisKey("", axis));
}

// World coordinate of an axis's only plane.
std::optional<double> planeValue(const FitsCards& cards, int axis) {
  if (axis == 0) return std::nullopt;
  const auto value = cards.number(axisKey("CRVAL", axis));
  if (!value) return std::nullopt;
  const double steps = 1.0 - cards.number(axisKey("CRPIX", axis)).value_or(1.0);
  return *value + steps * planeStep(cards, axis).value_or(1.0);
}

double hertz(const FitsCards& cards, int axis) {
  const std::string unit = cards.text(axisKey("CUNIT", axis)).value_or("Hz");
  if (unit == "GHz") return 1e9;
  if (unit == "MHz") return 1e6;
  return unit == "kHz" ? 1e3 : 1.0;
}

// Frequency of the plane of a velocity axis (Greisen et al. 2006, table 3), which shifts that of the line.
double shiftedFrequency(const FitsCards& cards, const ImageShape& shape, double line) {
  for (const char* const type : {"VRAD", "VOPT", "FELO", "VELO"}) {
    const int axis = findAxis(cards, shape, type);
    const auto velocity = planeValue(cards, axis);
    if (!velocity) continue;
    const bool kilometres = cards.text(axisKey("CUNIT", axis)).value_or("") == "km/s";
    const double beta = *velocity * (kilometres ? 1e3 : 1.0) / kSpeedOfLight;
    if (std::string_view(type) == "VRAD") return line * (1.0 - beta);
    if (std::string_view(type) == "VELO") return line * std::sqrt((1.0 - beta) / (1.0 + beta));
    return line / (1.0 + beta);
  }
  return line;
}

double number(const FitsCards& cards, const std::string& key) {
  return cards.number(key).value_or(kUnset);
}

// EQUINOX (once EPOCH), a number or "J2000"; without it what the frame means.
double readEpoch(const FitsCards& cards, UvxFrame frame) {
  for (const char* const key : {"EQUINOX", "EPOCH"}) {
    if (const auto value = cards.number(key)) return *value;
    const std::string text = cards.text(key).value_or("");
    double value = 0.0;
    if (text.size() > 1 && (text[0] == 'J' || text[0] == 'B') && parseDouble(text.substr(1), value) &&
        std::isfinite(value))
      return value;
  }
  return frame == UvxFrame::kFk4 ? 1950.0 : 2000.0;
}

void readPosition(const FitsCards& cards, const MapLayout& layout, AMapHeader& header) {
  if (!layout.equatorial) return;
  const std::string system = cards.text("RADESYS").value_or(cards.text("RADECSYS").value_or(""));
  header.frame = frameOfName(system);
  header.epoch = readEpoch(cards, header.frame);
  // By the standard an image that names neither frame nor equinox is in ICRS.
  if (system.empty() && !cards.has("EQUINOX") && !cards.has("EPOCH")) header.frame = UvxFrame::kIcrs;
  // Crossed axes: the world coordinate need not be that of the pixel axis it runs along.
  const bool labelled = cards.text(axisKey("CTYPE", layout.xAxis)).value_or("").starts_with('R') ||
                        cards.text(axisKey("CTYPE", layout.xAxis)).value_or("").starts_with('r');
  const auto degrees = [&](int axis) {
    return number(cards, axisKey("CRVAL", axis)) * degreesPerUnit(cards, axis).value_or(1.0);
  };
  header.rightAscension = degrees(labelled ? layout.xAxis : layout.yAxis);
  header.declination = degrees(labelled ? layout.yAxis : layout.xAxis);
}

// "AIPS   CLEAN BMAJ=  1.3889E-03 BMIN=  1.3889E-03 BPA=   0.00"; the last such line counts.
void readHistoryBeam(const FitsCards& cards, AMapHeader& header) {
  const auto after = [](std::string_view line, std::string_view name) {
    const auto at = line.find(name);
    return at == std::string_view::npos ? 0.0 : textToDouble(line.substr(at + name.size()));
  };
  for (const std::string& line : cards.historyLines()) {
    AMapHeader found;
    found.beamMajor = after(line, "BMAJ=") * kArcsecPerDegree;
    found.beamMinor = after(line, "BMIN=") * kArcsecPerDegree;
    found.beamPa = after(line, "BPA=");
    if (!line.starts_with("AIPS") || !fitsBeam(found)) continue;
    header.beamMajor = found.beamMajor;
    header.beamMinor = found.beamMinor;
    header.beamPa = found.beamPa;
  }
}

void readBeam(const FitsCards& cards, AMapHeader& header) {
  if (!cards.number("BMAJ")) {
    if (!hasExactValues(cards)) readHistoryBeam(cards, header);
    return;
  }
  header.beamMajor = number(cards, "BMAJ") * kArcsecPerDegree;
  header.beamMinor = cards.number("BMIN").value_or(number(cards, "BMAJ")) * kArcsecPerDegree;
  header.beamPa = cards.number("BPA").value_or(0.0);
}

MapKind readKind(const FitsCards& cards) {
  const std::string type = cards.text("BTYPE").value_or("");
  for (const MapKind kind : {MapKind::kBeam, MapKind::kSpectralIndex, MapKind::kSpectralIndexError})
    if (type == fitsKind(kind)) return kind;
  return MapKind::kIntensity;
}

// What the standard keywords tell, as any program writes them.
AMapHeader standardHeader(const FitsCards& cards, const ImageShape& shape, const MapLayout& layout) {
  AMapHeader header;
  header.kind = readKind(cards);
  header.unit = unitOfFits(cards.text("BUNIT").value_or(""));
  header.sourceName = cards.text("OBJECT").value_or("");
  header.date = cards.text("DATE").value_or("");
  readPosition(cards, layout, header);
  if (const auto code = planeValue(cards, findAxis(cards, shape, "STOKES")); code && std::abs(*code) < 100)
    header.stokes = stokesOfFits(static_cast<int>(std::lround(*code)));
  const int axis = findAxis(cards, shape, "FREQ");
  if (const auto frequency = planeValue(cards, axis)) {
    header.frequency = *frequency * hertz(cards, axis);
    header.bandwidth = planeStep(cards, axis).value_or(kUnset) * hertz(cards, axis);
  } else {
    const double line = cards.number("RESTFRQ").value_or(number(cards, "RESTFREQ"));
    header.frequency = shiftedFrequency(cards, shape, line);
  }
  // A beam on pixels of unknown size would give flux densities that mean nothing.
  if (layout.scaled) readBeam(cards, header);
  return header;
}

AMapHeader exactHeader(const FitsCards& cards) {
  const auto text = [&](const char* key) { return fromFitsText(cards.text(key).value_or("")); };
  AMapHeader header;
  header.unit = text("LUNIT");
  header.stokes = text("LSTOKES");
  header.frame = frameOfName(text("LFRAME"));
  header.rightAscension = number(cards, "LRA");
  header.declination = number(cards, "LDEC");
  header.epoch = number(cards, "LEPOCH");
  header.frequency = number(cards, "LFREQ");
  header.bandwidth = number(cards, "LBWIDTH");
  header.beamMajor = number(cards, "LBMAJ");
  header.beamMinor = number(cards, "LBMIN");
  header.beamPa = number(cards, "LBPA");
  header.beamArea = number(cards, "LBAREA");
  return header;
}

bool samePosition(const FitsCards& cards, const AMapHeader& exact, const AMapHeader& found) {
  constexpr double kDegrees = 1e-9;
  const auto same = [](double a, double b) { return std::isnan(b) || std::abs(a - b) <= kDegrees; };
  return cards.text("RADESYS").value_or("") == fitsFrame(exact.frame, exact.epoch) &&
         (!cards.has("EQUINOX") || near(exact.epoch, found.epoch)) &&
         same(fitsLongitude(exact.rightAscension), fitsLongitude(found.rightAscension)) &&
         same(exact.declination, found.declination);
}

bool sameBeam(const AMapHeader& exact, const AMapHeader& found) {
  const auto written = fitsBeam(exact);
  const auto read = fitsBeam(found);
  if (!read) return true;
  constexpr double kDegrees = 1e-3;
  return written && near(written->major, read->major) && near(written->minor, read->minor) &&
         std::abs(written->pa - read->pa) <= kDegrees;
}

bool sameFrequency(const AMapHeader& exact, const AMapHeader& found) {
  const double written = std::isfinite(exact.frequency) ? exact.frequency : 0.0;
  return (std::isnan(found.frequency) || near(written, found.frequency)) &&
         (std::isnan(found.bandwidth) || near(fitsBandwidth(exact.bandwidth), found.bandwidth));
}

bool sameAxis(const PixelAxis& written, const PixelAxis& found) {
  constexpr double kPixels = 1e-3;
  return near(written.step, found.step) &&
         std::abs(written.reference - found.reference) <= kPixels + 1e-9 * std::abs(found.reference);
}

// The frequency and width of a foreign image, where only positive ones mean something.
void keepPositive(AMapHeader& header) {
  if (!(header.frequency > 0)) header.frequency = kUnset;
  header.bandwidth = std::abs(header.bandwidth);
}

// Replaces what the standard keywords tell by the exact values that still agree with them.
void mergeExact(const FitsCards& cards, const AMapHeader& exact, AMapHeader& header) {
  const std::string writtenUnit = toFitsText(fitsUnit(exact.unit));
  if (cards.text("BUNIT").value_or(writtenUnit) == writtenUnit) header.unit = exact.unit;
  if (header.stokes.empty() || header.stokes == stokesOfFits(fitsStokes(exact.stokes)))
    header.stokes = exact.stokes;
  if (samePosition(cards, exact, header)) {
    header.frame = exact.frame;
    header.rightAscension = exact.rightAscension;
    header.declination = exact.declination;
    header.epoch = exact.epoch;
  }
  if (sameFrequency(exact, header)) {
    header.frequency = exact.frequency;
    header.bandwidth = exact.bandwidth;
  } else {
    keepPositive(header);
  }
  if (sameBeam(exact, header)) {
    header.beamMajor = exact.beamMajor;
    header.beamMinor = exact.beamMinor;
    header.beamPa = exact.beamPa;
    header.beamArea = exact.beamArea;
  }
  header.sourceName = fromFitsText(header.sourceName);
  header.date = fromFitsText(header.date);
}

// First and last coordinate of an axis in matrix order.
void axisRange(PixelAxis axis, std::uint32_t count, double& min, double& max) {
  if (axis.step < 0) axis = axis.mirrored(count);
  min = (1.0 - axis.reference) * axis.step;
  max = (count - axis.reference) * axis.step;
}

TMinMax standardRange(const FitsCards& cards, const MapLayout& layout) {
  TMinMax range;
  axisRange(layout.x, layout.columns, range.xMin, range.xMax);
  axisRange(layout.y, layout.rows, range.yMin, range.yMax);
  const auto smallest = cards.number("DATAMIN");
  const auto largest = cards.number("DATAMAX");
  if (smallest && largest && *smallest <= *largest) {
    range.vMin = *smallest;
    range.vMax = *largest;
  }
  return range;
}

TMinMax exactRange(const FitsCards& cards) {
  TMinMax range;
  range.xMin = cards.number("LXMIN").value_or(TMinMax::kUnsetMin);
  range.xMax = cards.number("LXMAX").value_or(TMinMax::kUnsetMax);
  range.yMin = cards.number("LYMIN").value_or(TMinMax::kUnsetMin);
  range.yMax = cards.number("LYMAX").value_or(TMinMax::kUnsetMax);
  range.vMin = cards.number("LVMIN").value_or(TMinMax::kUnsetMin);
  range.vMax = cards.number("LVMAX").value_or(TMinMax::kUnsetMax);
  return range;
}

}  // namespace

bool hasExactValues(const FitsCards& cards) {
  return cards.has("LUNIT");
}

void readRecord(const FitsCards& cards, const ImageShape& shape, const MapLayout& layout, AMapHeader& header,
                TMinMax& range) {
  header = standardHeader(cards, shape, layout);
  header.pixelOrder = {layout.mirrorX, layout.mirrorY, layout.fastIsX};
  range = standardRange(cards, layout);
  if (!hasExactValues(cards)) {
    keepPositive(header);
    header.history = cards.historyLines();
    return;
  }
  mergeExact(cards, exactHeader(cards), header);
  header.history = fromHistoryLines(cards.historyLines());
  const TMinMax exact = exactRange(cards);
  range.vMin = exact.vMin;
  range.vMax = exact.vMax;
  const PixelAxis x = pixelAxis(exact.xMin, exact.xMax, layout.columns).mirrored(layout.columns);
  const PixelAxis y = pixelAxis(exact.yMin, exact.yMax, layout.rows);
  if (layout.fastIsX && sameAxis(x, layout.x) && sameAxis(y, layout.y)) {
    range = exact;
  } else {
    header.beamArea = kUnset;
  }
}

}  // namespace lumo
