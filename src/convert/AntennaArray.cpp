// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/AntennaArray.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "core/AFile.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

// Places on the Earth's surface lie between these distances from its centre, metres.
constexpr double kMinRadius = 6.33e6;
constexpr double kMaxRadius = 6.40e6;
constexpr std::size_t kMaxNameBytes = 16;

struct Station {
  const char* name;
  EarthVector position;
};

constexpr std::array<Station, 10> kVlba{{{"SC", {2607849, -5488070, 1932740}},
                                         {"HN", {1446375, -4447940, 4322306}},
                                         {"NL", {-130872, -4762317, 4226851}},
                                         {"FD", {-1324009, -5332182, 3231962}},
                                         {"LA", {-1449752, -4975299, 3709124}},
                                         {"PT", {-1640954, -5014816, 3575412}},
                                         {"KP", {-1995679, -5037318, 3357328}},
                                         {"OV", {-2409150, -4478573, 3838617}},
                                         {"BR", {-2112065, -3705357, 4726814}},
                                         {"MK", {-5464075, -2495249, 2148297}}}};

struct Arm {
  char letter;
  double azimuth;  // degrees, north through east
  double length;   // metres
};

constexpr std::array<Arm, 3> kVlaArms{{{'W', 236.0, 21000}, {'E', 115.0, 21000}, {'N', 355.0, 18900}}};
constexpr int kVlaAntennasPerArm = 9;
constexpr double kVlaPower = 1.716;
constexpr double kVlaLatitude = 34.0788 * kRadianPerDegree;
constexpr double kVlaLongitude = -107.6177 * kRadianPerDegree;
constexpr double kVlaHeight = 2115;

// The next word of a line, which is shortened by it.
std::string_view takeWord(std::string_view& line) {
  constexpr std::string_view kBlanks = " \t\r\v\f";
  const auto start = line.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return line = {};
  line.remove_prefix(start);
  const auto word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

}  // namespace

AntennaArray AntennaArray::vlba() {
  AntennaArray array;
  array.name_ = "VLBA";
  for (const Station& station : kVlba) array.add(station.name, station.position);
  return array;
}

AntennaArray AntennaArray::vla() {
  AntennaArray array;
  array.name_ = "VLA";
  const EarthVector centre = fromGeodetic(kVlaLatitude, kVlaLongitude, kVlaHeight);
  for (const Arm& arm : kVlaArms) {
    for (std::int64_t number = 1; number <= kVlaAntennasPerArm; ++number) {
      const double distance =
          arm.length * std::pow(static_cast<double>(number) / kVlaAntennasPerArm, kVlaPower);
      const double east = distance * std::sin(arm.azimuth * kRadianPerDegree);
      const double north = distance * std::cos(arm.azimuth * kRadianPerDegree);
      std::string name(1, arm.letter);
      name += toStr(8 * number);
      array.add(std::move(name), {centre.x - std::sin(kVlaLongitude) * east -
                                      std::sin(kVlaLatitude) * std::cos(kVlaLongitude) * north,
                                  centre.y + std::cos(kVlaLongitude) * east -
                                      std::sin(kVlaLatitude) * std::sin(kVlaLongitude) * north,
                                  centre.z + std::cos(kVlaLatitude) * north});
    }
  }
  return array;
}

Status AntennaArray::select(const std::string& nameOrFile) {
  if (nameOrFile == "vlba") {
    *this = vlba();
    return {};
  }
  if (nameOrFile == "vla") {
    *this = vla();
    return {};
  }
  return load(nameOrFile);
}

Status AntennaArray::load(const std::string& path) {
  AFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  if (file.remaining() > kMaxFileBytes)
    return {StatusCode::kBadFormat, "is larger than an antenna list may be (1 MiB)", path};
  std::string text(static_cast<std::size_t>(file.remaining()), '\0');
  if (file.Read(text.data(), text.size()) == 0) return file.status();
  if (Status status = parse(text); !status.ok()) return status.about(path);
  name_ = fileName(path);
  return {};
}

Status AntennaArray::parse(std::string_view text) {
  AntennaArray read;
  int line = 0;
  while (!text.empty()) {
    ++line;
    const auto end = std::min(text.find('\n'), text.size());
    const std::string_view content = text.substr(0, end);
    const Status status = read.addLine(content.substr(0, content.find('#')));
    if (!status.ok()) return {status.code(), "line " + toStr(line) + ": " + status.message()};
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (read.antennas_.size() < 2)
    return {StatusCode::kBadFormat,
            "an array needs at least two antennas, found " + toStr(std::int64_t(read.antennas_.size()))};
  *this = std::move(read);
  return {};
}

Status AntennaArray::addLine(std::string_view line) {
  const std::string name(takeWord(line));
  if (name.empty()) return {};
  if (antennas_.size() == kMaxAntennas) return {StatusCode::kBadFormat, "more than 255 antennas"};
  if (name.size() > kMaxNameBytes)
    return {StatusCode::kBadFormat, "the name \"" + name.substr(0, 40) + "\" is longer than 16 bytes"};
  for (const UvxAntenna& antenna : antennas_)
    if (antenna.name == name) return {StatusCode::kBadFormat, "a second antenna named \"" + name + "\""};
  std::array<double, 3> xyz{};
  for (double& value : xyz)
    if (!parseDouble(takeWord(line), value))
      return {StatusCode::kBadFormat, "three coordinates (x y z in metres) are expected after the name"};
  if (!takeWord(line).empty()) return {StatusCode::kBadFormat, "something follows the coordinates"};
  const double radius = std::sqrt(xyz[0] * xyz[0] + xyz[1] * xyz[1] + xyz[2] * xyz[2]);
  if (!(radius >= kMinRadius && radius <= kMaxRadius))
    return {StatusCode::kInvalidValue, "the antenna lies " + generalText(radius / 1000) +
                                           " km from the Earth's centre; geocentric metres of a place on its "
                                           "surface are expected"};
  add(name, {xyz[0], xyz[1], xyz[2]});
  return {};
}

void AntennaArray::add(std::string name, const EarthVector& position) {
  UvxAntenna antenna;
  antenna.id = static_cast<std::int32_t>(antennas_.size()) + 1;
  antenna.name = std::move(name);
  antenna.x = position.x;
  antenna.y = position.y;
  antenna.z = position.z;
  antennas_.push_back(std::move(antenna));
}

EarthVector AntennaArray::position(std::size_t index) const {
  const UvxAntenna& antenna = antennas_[index];
  return {antenna.x, antenna.y, antenna.z};
}

double AntennaArray::longitude() const {
  double x = 0, y = 0;
  for (const UvxAntenna& antenna : antennas_) {
    x += antenna.x;
    y += antenna.y;
  }
  return std::atan2(y, x);
}

}  // namespace lumo
