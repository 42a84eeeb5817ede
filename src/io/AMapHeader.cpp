// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AMapHeader.h"

#include <limits>

#include "io/AMapFile.h"

namespace lumo {

namespace {

constexpr double kUnset = std::numeric_limits<double>::quiet_NaN();

}  // namespace

AMapHeader::AMapHeader()
    : rightAscension(kUnset),
      declination(kUnset),
      epoch(kUnset),
      frequency(kUnset),
      bandwidth(kUnset),
      beamMajor(kUnset),
      beamMinor(kUnset),
      beamPa(kUnset),
      beamArea(kUnset) {}

int AMapHeader::Load(AMapFile& file) {
  return file.giveHeader(*this);
}

int AMapHeader::Store(AMapFile& file) const {
  return file.takeHeader(*this);
}

}  // namespace lumo
