// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/UvfitsAxes.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "core/TextForm.h"

namespace lumo {
namespace {

constexpr std::int64_t kMaxAxes = 30;
constexpr std::int64_t kMaxPixels = std::int64_t{1} << 31;

struct Axis {
  std::string number;  ///< as it ends the names of its cards
  std::string type;    ///< CTYPE up to the first '-', upper case
  std::string suffix;  ///< the projection behind it, "" when there is none
  std::uint32_t pixels = 1;
  std::uint64_t stride = 1;
};

Axis readAxis(const UvfitsFile& file, std::int64_t index) {
  Axis axis;
  axis.number = toStr(index);
  std::string type = file.text("CTYPE" + axis.number);
  std::transform(type.begin(), type.end(), type.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  const auto dash = type.find('-');
  axis.type = type.substr(0, dash);
  const auto suffix = type.find_first_not_of('-', dash);
  if (dash != std::string::npos && suffix != std::string::npos) axis.suffix = type.substr(suffix);
  return axis;
}

Status readStokes(const UvfitsFile& file, const Axis& axis, UvfitsAxes& axes) {
  double value = 0;
  double pixel = 0;
  double step = 0;
  Status status = file.number("CRVAL" + axis.number, 0.0, value);
  if (status.ok()) status = file.number("CRPIX" + axis.number, 1.0, pixel);
  if (status.ok()) status = file.number("CDELT" + axis.number, 1.0, step);
  if (!status.ok()) return status;
  const std::string where = "the STOKES axis (CRVAL" + axis.number + " " + valToStr(value) + ", CDELT" +
                            axis.number + " " + valToStr(step) + ", " + toStr(axis.pixels) + " pixels) ";
  if (axis.pixels > 4)
    return {StatusCode::kUnsupported, where + "holds more than four products; at most four were expected"};
  axes.products.clear();
  for (std::uint32_t i = 0; i < axis.pixels; ++i) {
    const double code = value + (i + 1 - pixel) * step;
    const bool known = std::abs(code) < 100 && std::abs(code - std::round(code)) < 1e-3 &&
                       isProductCode(static_cast<std::int32_t>(std::lround(code)));
    if (!known)
      return {StatusCode::kUnsupported, where + "leads to the product code " + valToStr(code) +
                                            "; expected 1..4 (I Q U V), -1..-4 (RR LL RL LR) or -5..-8 "
                                            "(XX YY XY YX)"};
    axes.products.push_back(static_cast<std::int32_t>(std::lround(code)));
  }
  const auto kind = [](std::int32_t code) { return code > 0 ? 0 : (code >= -4 ? 1 : 2); };
  for (std::size_t i = 1; i < axes.products.size(); ++i) {
    if (axes.products[i] == axes.products[0] || kind(axes.products[i]) != kind(axes.products[0]))
      return {StatusCode::kUnsupported,
              where + "is not a sequence of different products of one kind (Stokes, circular or linear)"};
  }
  axes.stokesStride = axis.stride;
  return {};
}

Status readFrequency(const UvfitsFile& file, const Axis& axis, UvfitsAxes& axes) {
  std::optional<double> value;
  std::optional<double> pixel;
  Status status = file.number("CRVAL" + axis.number, value);
  if (status.ok()) status = file.number("CRPIX" + axis.number, pixel);
  if (status.ok()) status = file.number("CDELT" + axis.number, 0.0, axes.increment);
  if (!status.ok()) return status;
  if (!value || !pixel)
    return {StatusCode::kBadFormat, std::string("the FREQ axis has no card ") + (value ? "CRPIX" : "CRVAL") +
                                        axis.number + "; expected its reference " +
                                        (value ? "pixel" : "frequency in Hz")};
  axes.frequency = *value;
  axes.referencePixel = *pixel;
  axes.channels = axis.pixels;
  axes.channelStride = axis.stride;
  return {};
}

Status readPosition(const UvfitsFile& file, const Axis& axis, std::optional<double>& degrees,
                    ImportReport& report) {
  if (axis.pixels != 1)
    return {StatusCode::kUnsupported, "NAXIS" + axis.number + " (" + axis.type + ") is " +
                                          toStr(axis.pixels) + "; expected one position, 1"};
  if (axis.suffix == "NCP")
    report.warnings.push_back("CTYPE" + axis.number +
                              " names the NCP projection; u, v and w are taken as what PTYPE says");
  return file.number("CRVAL" + axis.number, degrees);
}

Status takeAxis(const UvfitsFile& file, const Axis& axis, UvfitsAxes& axes, ImportReport& report) {
  if (axis.type == "COMPLEX") {
    if (axis.pixels != 2 && axis.pixels != 3)
      return {StatusCode::kUnsupported,
              "NAXIS" + axis.number + " (COMPLEX) is " + toStr(axis.pixels) +
                  "; expected 3 (real, imaginary, weight) or 2 (no weight). The compressed form is not "
                  "supported: write the file uncompressed"};
    axes.complexParts = axis.pixels;
    axes.complexStride = axis.stride;
    return {};
  }
  if (axis.type == "STOKES") return readStokes(file, axis, axes);
  if (axis.type == "FREQ") return readFrequency(file, axis, axes);
  if (axis.type == "RA") return readPosition(file, axis, axes.rightAscension, report);
  if (axis.type == "DEC") return readPosition(file, axis, axes.declination, report);
  if (axis.type == "IF") {
    axes.ifs = axis.pixels;
    axes.ifStride = axis.stride;
    return {};
  }
  if (axis.pixels == 1) return {};
  return {StatusCode::kUnsupported, "axis " + axis.number + " has " + toStr(axis.pixels) +
                                        " pixels and CTYPE" + axis.number + " '" + axis.type +
                                        "'; expected COMPLEX, STOKES, FREQ, IF, RA or DEC"};
}

}  // namespace

Status readUvfitsAxes(const UvfitsFile& file, UvfitsAxes& axes, ImportReport& report) {
  axes = {};
  std::int64_t count = 0;
  if (Status status = file.whole("NAXIS", 2, kMaxAxes, count); !status.ok()) return status;
  bool complexSeen = false;
  bool frequencySeen = false;
  std::vector<std::string> seen;
  for (std::int64_t i = 2; i <= count; ++i) {
    Axis axis = readAxis(file, i);
    std::int64_t pixels = 0;
    if (Status status = file.whole("NAXIS" + axis.number, 1, kMaxPixels, pixels); !status.ok()) return status;
    axis.pixels = static_cast<std::uint32_t>(pixels);
    axis.stride = axes.numbers;
    // A group cannot hold more numbers than the file has bytes; this keeps the product from overflowing.
    if (axes.numbers > file.map().size() / axis.pixels)
      return {StatusCode::kBadFormat,
              "the axes NAXIS2..NAXIS" + axis.number + " claim more numbers a group than the file has bytes"};
    axes.numbers *= axis.pixels;
    if (!axis.type.empty() && std::find(seen.begin(), seen.end(), axis.type) != seen.end())
      return {StatusCode::kBadFormat, "CTYPE" + axis.number + " is a second axis '" + axis.type + "'"};
    seen.push_back(axis.type);
    complexSeen = complexSeen || axis.type == "COMPLEX";
    frequencySeen = frequencySeen || axis.type == "FREQ";
    if (Status status = takeAxis(file, axis, axes, report); !status.ok()) return status;
  }
  if (!complexSeen || !frequencySeen || axes.products.empty())
    return {StatusCode::kBadFormat, std::string("has no axis with CTYPE '") +
                                        (!complexSeen     ? "COMPLEX"
                                         : !frequencySeen ? "FREQ"
                                                          : "STOKES") +
                                        "'; a visibility file needs COMPLEX, STOKES and FREQ"};
  return {};
}

}  // namespace lumo
