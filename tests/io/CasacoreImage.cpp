// SPDX-License-Identifier: GPL-3.0-or-later
#include "CasacoreImage.h"

#include <casacore/casa/Arrays/IPosition.h>
#include <casacore/casa/Arrays/Vector.h>
#include <casacore/casa/Logging/LogFilter.h>
#include <casacore/casa/Logging/LogSink.h>
#include <casacore/coordinates/Coordinates/CoordinateSystem.h>
#include <casacore/coordinates/Coordinates/DirectionCoordinate.h>
#include <casacore/coordinates/Coordinates/SpectralCoordinate.h>
#include <casacore/images/Images/FITSImage.h>
#include <casacore/measures/Measures/MDirection.h>
#include <casacore/measures/Measures/MFrequency.h>
#include <casacore/measures/Measures/Stokes.h>

#include <stdexcept>

namespace lumo::test {
namespace {

using namespace casacore;

CasacoreImage::Pixel look(const FITSImage& image, const IPosition& at) {
  const CoordinateSystem& system = image.coordinates();
  Vector<Double> world;
  if (!system.toWorld(world, at)) throw std::runtime_error(system.errorMessage());
  CasacoreImage::Pixel pixel;
  pixel.rightAscension = Quantity(world[0], system.worldAxisUnits()[0]).getValue("deg");
  pixel.declination = Quantity(world[1], system.worldAxisUnits()[1]).getValue("deg");
  pixel.frequency = Quantity(world[2], system.worldAxisUnits()[2]).getValue("Hz");
  pixel.stokes = Stokes::name(Stokes::type(static_cast<Int>(world[3])));
  pixel.value = image(at);
  const IPosition one(at.size(), 1);
  pixel.isValid = image.getMaskSlice(at, one).data()[0];
  return pixel;
}

}  // namespace

bool hasCasacoreImages() {
  return true;
}

CasacoreImage readWithCasacore(const std::string& path, const std::vector<std::pair<int, int>>& pixels) {
  LogSink::globalSink().filter(LogFilter(LogMessage::WARN));
  const FITSImage image(path);
  const CoordinateSystem& system = image.coordinates();
  CasacoreImage read;
  for (const auto length : image.shape()) read.shape.push_back(static_cast<int>(length));
  for (const String& name : system.worldAxisNames()) read.axes.push_back(name);
  read.projection = system.directionCoordinate().projection().name();
  read.directionFrame = MDirection::showType(system.directionCoordinate().directionType());
  read.frequencyFrame = MFrequency::showType(system.spectralCoordinate().frequencySystem());
  read.restFrequency = system.spectralCoordinate().restFrequency();
  read.unit = image.units().getName();
  read.object = image.imageInfo().objectName();
  const GaussianBeam beam = image.imageInfo().restoringBeam();
  read.beamMajor = beam.getMajor("arcsec");
  read.beamMinor = beam.getMinor("arcsec");
  read.beamPa = beam.getPA("deg", false);
  for (const auto& [x, y] : pixels) read.pixels.push_back(look(image, IPosition(4, x, y, 0, 0)));
  return read;
}

}  // namespace lumo::test
