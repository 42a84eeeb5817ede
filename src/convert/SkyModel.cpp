// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/SkyModel.h"

#include <cmath>
#include <utility>

#include "convert/JsonObject.h"
#include "core/AFile.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

// Beyond one degree a flat sky is no model of anything; steeper spectra than this overflow single precision.
constexpr double kMaxOffsetArcsec = 3600;
constexpr double kMaxExponent = 20;
constexpr double kMaxFluxJy = 1e12;
constexpr double kMaxReferenceMhz = 1e7;

double radians(double arcsec) {
  return arcsec * kRadianPerArcsec;
}

// The name becomes a source name and the start of a file name on any system.
bool isUsableName(const std::string& name) {
  if (name.size() > SkyModel::kMaxNameBytes || name.starts_with('.') || name.starts_with(' ')) return false;
  for (const char c : name)
    if (c < ' ' || c > '~' || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos) return false;
  return !name.ends_with(' ');
}

SkyComponent readComponent(JsonObject& object) {
  SkyComponent component;
  component.name = object.text("name", JsonObject::kOptional);
  const std::string type = object.text("type");
  if (!type.empty() && type != "point" && type != "gaussian")
    object.fail("type", "is \"" + type + "\"; expected \"point\" or \"gaussian\"");
  component.east = radians(object.angleArcsec("east", -kMaxOffsetArcsec, kMaxOffsetArcsec));
  component.north = radians(object.angleArcsec("north", -kMaxOffsetArcsec, kMaxOffsetArcsec));
  component.fluxJy = object.number("flux_jy", -kMaxFluxJy, kMaxFluxJy);
  component.index = object.number("index", -kMaxExponent, kMaxExponent);
  component.curvature = object.number("curvature", -kMaxExponent, kMaxExponent, JsonObject::kOptional);
  if (type == "gaussian") {
    component.shape = SkyComponent::Shape::kGaussian;
    component.major = radians(object.angleArcsec("major", 0, kMaxOffsetArcsec));
    component.minor = radians(object.angleArcsec("minor", 0, kMaxOffsetArcsec));
    component.pa = object.number("pa_deg", -360, 360) * kRadianPerDegree;
    if (component.minor > component.major) object.fail("minor", "is larger than the major axis");
  }
  return component;
}

}  // namespace

double SkyComponent::flux(double frequency, double reference) const {
  const double ratio = frequency / reference;
  return fluxJy * std::pow(ratio, index + curvature * std::log(ratio));
}

double SkyComponent::indexAt(double frequency, double reference) const {
  return index + 2 * curvature * std::log(frequency / reference);
}

std::complex<double> SkyComponent::response(double u, double v) const {
  const double phase = kTwoPi * (u * east + v * north);
  double amplitude = 1;
  if (shape == Shape::kGaussian) {
    const double alongMajor = major * (u * std::sin(pa) + v * std::cos(pa));
    const double alongMinor = minor * (u * std::cos(pa) - v * std::sin(pa));
    amplitude =
        std::exp(-kPi * kPi / (4 * std::log(2.0)) * (alongMajor * alongMajor + alongMinor * alongMinor));
  }
  return {amplitude * std::cos(phase), amplitude * std::sin(phase)};
}

std::complex<double> SkyModel::visibility(double u, double v, double frequency) const {
  std::complex<double> sum = 0;
  for (const SkyComponent& component : components_)
    sum += component.flux(frequency, referenceFrequency_) * component.response(u, v);
  return sum;
}

Status SkyModel::load(const std::string& path) {
  AFile file;
  if (file.Open(path, AFile::kRead) == 0) return file.status();
  if (file.remaining() > kMaxFileBytes)
    return {StatusCode::kBadFormat, "is larger than a sky model may be (1 MiB)", path};
  std::string text(static_cast<std::size_t>(file.remaining()), '\0');
  if (file.Read(text.data(), text.size()) == 0) return file.status();
  return parse(text).about(path);
}

Status SkyModel::parse(std::string_view text) {
  if (text.size() > kMaxFileBytes)
    return {StatusCode::kBadFormat, "is larger than a sky model may be (1 MiB)"};
  JsonObject object;
  if (Status status = JsonObject::parse(text, object); !status.ok()) return status;
  SkyModel read;
  read.name_ = object.text("name", JsonObject::kOptional);
  if (!isUsableName(read.name_))
    object.fail("name", "must be at most 16 printable ASCII characters that a file name may hold");
  read.rightAscension_ = object.number("ra_deg", 0, 360);
  if (read.rightAscension_ == 360) object.fail("ra_deg", "is 360; expected a value below 360");
  read.declination_ = object.number("dec_deg", -90, 90);
  read.referenceFrequency_ = object.number("reference_mhz", 0, kMaxReferenceMhz) * kMegahertz;
  if (object.status().ok() && !(read.referenceFrequency_ > 0))
    object.fail("reference_mhz", "must be above 0");
  std::vector<JsonObject> items = object.list("components", kMaxComponents);
  if (Status status = object.finish(); !status.ok()) return status;
  for (JsonObject& item : items) {
    read.components_.push_back(readComponent(item));
    if (Status status = item.finish(); !status.ok()) return status;
  }
  *this = std::move(read);
  return {};
}

}  // namespace lumo
