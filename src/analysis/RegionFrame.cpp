// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/RegionFrame.h"

#include <utility>

namespace lumo {

namespace {

PixelAxis axisOfFile(double min, double max, std::uint32_t count, bool backwards) {
  const PixelAxis axis = pixelAxis(min, max, count);
  return backwards ? axis.mirrored(count) : axis;
}

}  // namespace

RegionFrame::RegionFrame(const AMapHeader& header, const TMinMax& range, std::uint32_t rows,
                         std::uint32_t columns)
    : x_(axisOfFile(range.xMin, range.xMax, columns, header.pixelOrder.westward)),
      y_(axisOfFile(range.yMin, range.yMax, rows, header.pixelOrder.southward)),
      linesAlongX_(header.pixelOrder.linesAlongX),
      centre_{header.rightAscension, header.declination},
      skyName_(fitsFrame(header.frame, header.epoch)) {}

bool RegionFrame::squarePixels() const {
  constexpr double kTolerance = 1e-6;
  return std::abs(stepX() - stepY()) <= kTolerance * stepY();
}

AreaPoint RegionFrame::ofPixel(AreaPoint pixel) const {
  if (!linesAlongX_) std::swap(pixel.x, pixel.y);
  return {(pixel.x - x_.reference) * x_.step, (pixel.y - y_.reference) * y_.step};
}

AreaPoint RegionFrame::ofPixelStep(AreaPoint step) const {
  if (!linesAlongX_) std::swap(step.x, step.y);
  return {step.x * x_.step, step.y * y_.step};
}

AreaPoint RegionFrame::pixelOf(AreaPoint point) const {
  AreaPoint pixel{point.x / x_.step + x_.reference, point.y / y_.step + y_.reference};
  if (!linesAlongX_) std::swap(pixel.x, pixel.y);
  return pixel;
}

double RegionFrame::rotationOf(double angle) const {
  // Areas look the same after half a turn, so only the handedness of the file's axes counts.
  const bool mirrored = (x_.step < 0) != (y_.step < 0);
  const double turned = angle == 0.0 || !mirrored ? angle : -angle;
  return linesAlongX_ ? turned : 90.0 - turned;
}

bool RegionFrame::hasSky() const {
  return std::isfinite(centre_.raDeg) && std::isfinite(centre_.decDeg);
}

std::optional<AreaPoint> RegionFrame::ofSky(AreaPoint direction) const {
  const auto offset = offsetOfSky(centre_, {direction.x, direction.y});
  if (!offset) return std::nullopt;
  return AreaPoint{offset->xArcsec, offset->yArcsec};
}

std::optional<AreaPoint> RegionFrame::skyOf(AreaPoint point) const {
  const auto sky = skyAtOffset(centre_, point.x, point.y);
  if (!sky) return std::nullopt;
  return AreaPoint{sky->raDeg, sky->decDeg};
}

}  // namespace lumo
