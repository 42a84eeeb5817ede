// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/Simulator.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <complex>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "convert/NoiseSource.h"
#include "core/FileIdentity.h"
#include "core/Leftovers.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Units.h"
#include "core/Version.h"
#include "io/UvxWriter.h"

namespace lumo {

namespace {

constexpr double kTransitMjd = 60000.0;
constexpr double kEarthRate = 7.292115e-5;  // radians a second of UTC
constexpr double kSecondsPerDay = 86400;
constexpr double kSecondsPerHour = 3600;
constexpr double kMaxBandMhz = 1e7;
constexpr double kMaxFluxJy = 1e30;  // what single precision holds with room for a sum
constexpr std::int32_t kSourceId = 1;
constexpr std::int8_t kSelectionId = 1;
constexpr std::int32_t kRightRight = -1;
constexpr std::int32_t kLeftLeft = -2;

Status bad(const std::string& setting, const std::string& expected, double found) {
  return {StatusCode::kInvalidValue, setting + ": " + expected + " is expected, found " + valToStr(found)};
}

// Plain digits whatever the size, for a file name.
std::string megahertzText(double megahertz) {
  char buffer[64];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, megahertz, std::chars_format::fixed).ptr;
  return {buffer, end};
}

std::int64_t sampleCount(const SimulatorSettings& settings) {
  return std::max<std::int64_t>(
      1, std::llround(std::floor(settings.hours * kSecondsPerHour / settings.intervalSeconds + 1e-9)));
}

double declinationDeg(const SimulatorSettings& settings, const SkyModel& sky) {
  return settings.declinationDeg.value_or(sky.declination());
}

std::string sourceName(const SkyModel& sky) {
  return sky.name().empty() ? "sim" : sky.name();
}

std::vector<std::string> historyLines(const SimulatorSettings& settings, const SkyModel& sky,
                                      const AntennaArray& array, double bandMhz) {
  std::vector<std::string> lines;
  lines.push_back(std::string(programVersion()) + " simulated this observation");
  lines.push_back("array " + array.name() + ", " + toStr(std::int64_t(array.antennas().size())) +
                  " antennas, elevation limit " + valToStr(settings.elevationLimitDeg) + " deg");
  lines.push_back("band " + valToStr(bandMhz) + " MHz, IFs " + toStr(settings.ifs) + ", channels " +
                  toStr(settings.channels) + ", channel width " + valToStr(settings.channelWidthKhz) +
                  " kHz");
  lines.push_back("hours " + valToStr(settings.hours) + ", interval " + valToStr(settings.intervalSeconds) +
                  " s, transit MJD " + valToStr(kTransitMjd) + ", declination " +
                  valToStr(declinationDeg(settings, sky)) + " deg");
  lines.push_back("noise " + valToStr(settings.noiseJy) + " Jy, seed " + std::to_string(settings.seed));
  lines.push_back("sky " + sourceName(sky) + ", reference " +
                  valToStr(sky.referenceFrequency() * kMegahertzPerHertz) + " MHz");
  for (const SkyComponent& component : sky.components()) {
    const bool gaussian = component.shape == SkyComponent::Shape::kGaussian;
    std::string line = std::string(gaussian ? "gaussian " : "point ") + component.name + ": east " +
                       valToStr(component.east * kArcsecPerRadian) + " arcsec, north " +
                       valToStr(component.north * kArcsecPerRadian) + " arcsec, flux " +
                       valToStr(component.fluxJy) + " Jy, index " + valToStr(component.index) +
                       ", curvature " + valToStr(component.curvature);
    if (gaussian)
      line += ", major " + valToStr(component.major * kArcsecPerRadian) + " arcsec, minor " +
              valToStr(component.minor * kArcsecPerRadian) + " arcsec, pa " +
              valToStr(component.pa * kDegreePerRadian) + " deg";
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    lines.push_back(std::move(line));
  }
  return lines;
}

// One band's file in the making: tables, spectra of the components, noise.
class BandSimulation {
 public:
  BandSimulation(const SimulatorSettings& settings, const SkyModel& sky, const AntennaArray& array,
                 double bandMhz)
      : settings_(settings),
        sky_(sky),
        array_(array),
        bandMhz_(bandMhz),
        noise_(splitMix(settings.seed) ^ std::bit_cast<std::uint64_t>(bandMhz)) {}

  Status run(const RunIndicators& indicators, SimulatedFile& file);

 private:
  UvxContent makeContent() const;
  Status makeSpectra();
  Status observe(double seconds);
  void fillVisibilities(const UvxRecord& record);

  const SimulatorSettings& settings_;
  const SkyModel& sky_;
  const AntennaArray& array_;
  double bandMhz_;
  NoiseSource noise_;
  UvxWriter writer_;
  std::vector<double> frequencies_;  // [ifs * channels], Hz
  std::vector<double> fluxes_;       // [ifs * channels][components], Jy
  std::vector<AUVXComplex> values_;
  std::vector<bool> up_;
  double uMax_ = 0, vMax_ = 0;  // seconds
};

UvxContent BandSimulation::makeContent() const {
  UvxContent content;
  content.shape = {settings_.ifs, settings_.channels, 2};
  content.unit = "JY";
  AUVXSourceItem source;
  source.id = kSourceId;
  source.name = sourceName(sky_);
  source.frame = UvxFrame::kFk5;
  source.rightAscension = sky_.rightAscension();
  source.declination = declinationDeg(settings_, sky_);
  content.sources.push_back(std::move(source));
  UvxSelection selection;
  selection.id = kSelectionId;
  const double width = settings_.channelWidthKhz * 1e3;
  for (std::uint32_t i = 0; i < settings_.ifs; ++i)
    selection.bands.push_back({bandMhz_ * kMegahertz + double(i) * settings_.channels * width, width});
  content.selections.push_back(std::move(selection));
  content.products = {kRightRight, kLeftLeft};
  content.antennas = array_.antennas();
  content.history = historyLines(settings_, sky_, array_, bandMhz_);
  return content;
}

// The spectra cost powers and logarithms, so they are taken once a band and not once a group.
Status BandSimulation::makeSpectra() {
  for (const UvxSelection::Band& band : writer_.content().selections.front().bands)
    for (std::uint32_t channel = 0; channel < settings_.channels; ++channel)
      frequencies_.push_back(band.frequency + channel * band.increment);
  for (const double frequency : frequencies_) {
    for (const SkyComponent& component : sky_.components()) {
      const double flux = component.flux(frequency, sky_.referenceFrequency());
      if (!(std::abs(flux) <= kMaxFluxJy))
        return {StatusCode::kInvalidValue, "component \"" + component.name + "\" has a flux density of " +
                                               generalText(flux) + " Jy at " +
                                               generalText(frequency * kMegahertzPerHertz) +
                                               " MHz, beyond single precision"};
      fluxes_.push_back(flux);
    }
  }
  values_.resize(frequencies_.size() * 2);
  return {};
}

Status BandSimulation::run(const RunIndicators& indicators, SimulatedFile& file) {
  file.path = withSeparator(settings_.folder) + sourceName(sky_) + "_" + megahertzText(bandMhz_) + ".uvx";
  for (const std::string& input : settings_.inputs)
    if (isSameFile(file.path, input))
      return {StatusCode::kInvalidValue,
              "the simulation would overwrite its input " + input + "; choose another folder", file.path};
  if (Status status = writer_.begin(file.path, makeContent()); !status.ok()) return status;
  if (Status status = makeSpectra(); !status.ok()) return status;
  const std::int64_t samples = sampleCount(settings_);
  AProgress progress(indicators.readingBar, static_cast<double>(samples));
  for (std::int64_t i = 0; i < samples; ++i) {
    if (indicators.cancelled()) return {StatusCode::kCancelled, "the simulation was cancelled"};
    const double seconds = (double(i) - double(samples - 1) / 2) * settings_.intervalSeconds;
    if (Status status = observe(seconds); !status.ok()) return status;
    progress.SetPos(static_cast<double>(i + 1));
  }
  if (writer_.groups() == 0)
    return {StatusCode::kNoData, "a source at declination " + valToStr(declinationDeg(settings_, sky_)) +
                                     " degrees is never " + valToStr(settings_.elevationLimitDeg) +
                                     " degrees high for two antennas of " + array_.name() +
                                     " within the track"};
  file.groups = writer_.groups();
  const double highest = frequencies_.back();
  file.uMax = uMax_ * highest;
  file.vMax = vMax_ * highest;
  return writer_.finish();
}

// Adds the groups of one integration, `seconds` of UTC after the transit.
Status BandSimulation::observe(double seconds) {
  const SourceDirection direction(kEarthRate * seconds - array_.longitude(),
                                  declinationDeg(settings_, sky_) * kRadianPerDegree);
  const double limit = std::sin(settings_.elevationLimitDeg * kRadianPerDegree);
  const std::size_t antennas = array_.antennas().size();
  up_.assign(antennas, false);
  for (std::size_t i = 0; i < antennas; ++i) up_[i] = direction.sinElevation(array_.position(i)) >= limit;
  UvxRecord record;
  record.freqSel = kSelectionId;
  record.source = kSourceId;
  record.time = kTransitMjd + seconds / kSecondsPerDay;
  for (std::size_t first = 0; first < antennas; ++first) {
    for (std::size_t second = first + 1; second < antennas; ++second) {
      if (!up_[first] || !up_[second]) continue;
      const Uvw uvw = direction.uvw(array_.position(first) - array_.position(second));
      record.baseline = static_cast<std::uint16_t>(256 * (first + 1) + second + 1);
      record.u = static_cast<float>(uvw.u / kSpeedOfLight);
      record.v = static_cast<float>(uvw.v / kSpeedOfLight);
      record.w = static_cast<float>(uvw.w / kSpeedOfLight);
      uMax_ = std::max(uMax_, std::abs(double(record.u)));
      vMax_ = std::max(vMax_, std::abs(double(record.v)));
      fillVisibilities(record);
      if (Status status = writer_.append(record, values_); !status.ok()) return status;
    }
  }
  return {};
}

void BandSimulation::fillVisibilities(const UvxRecord& record) {
  const double sigma = settings_.noiseJy;
  const double weight = sigma > 0 ? 1 / (sigma * sigma) : 1;
  const double* flux = fluxes_.data();
  AUVXComplex* value = values_.data();
  for (const double frequency : frequencies_) {
    std::complex<double> model = 0;
    for (const SkyComponent& component : sky_.components())
      model += *flux++ * component.response(record.u * frequency, record.v * frequency);
    for (int product = 0; product < 2; ++product) {
      const std::complex<double> sum = sigma > 0 ? model + sigma * noise_.next() : model;
      *value++ = {sum.real(), sum.imag(), weight};
    }
  }
}

}  // namespace

Status SimulatorSettings::validate() const {
  if (bandsMhz.empty() || bandsMhz.size() > kMaxBands)
    return bad("bands", "1 to 256 frequencies", double(bandsMhz.size()));
  for (auto band = bandsMhz.begin(); band != bandsMhz.end(); ++band) {
    if (!(*band > 0 && *band <= kMaxBandMhz)) return bad("bands", "a frequency above 0 to 1e7 MHz", *band);
    if (std::find(bandsMhz.begin(), band, *band) != band)
      return bad("bands", "every frequency only once", *band);
  }
  if (ifs < 1 || ifs > kMaxChannels) return bad("ifs", "1 to 16384", ifs);
  if (channels < 1 || channels > kMaxChannels / ifs)
    return bad("channels", "1 to 16384 in all IFs together", double(ifs) * channels);
  if (!(channelWidthKhz > 0 && channelWidthKhz <= 1e9))
    return bad("channel-width", "a width above 0 to 1e9 kHz", channelWidthKhz);
  if (!(hours > 0 && hours <= 24)) return bad("hours", "a length above 0 to 24 hours", hours);
  if (!(intervalSeconds > 0 && hours * kSecondsPerHour / intervalSeconds <= kMaxSamples))
    return bad("interval", "an interval above 0 s that gives at most a million integrations",
               intervalSeconds);
  if (declinationDeg && !(*declinationDeg >= -90 && *declinationDeg <= 90))
    return bad("declination", "-90 to 90 degrees", *declinationDeg);
  if (!(noiseJy == 0 || (noiseJy >= 1e-12 && noiseJy <= 1e12)))
    return bad("noise", "0 or 1e-12 to 1e12 Jy", noiseJy);
  if (!(elevationLimitDeg >= -90 && elevationLimitDeg < 90))
    return bad("elevation-limit", "-90 to below 90 degrees", elevationLimitDeg);
  if (folder.empty()) return {StatusCode::kInvalidValue, "out: a folder is expected, found none"};
  return {};
}

Status simulate(const SimulatorSettings& settings, const SkyModel& sky, const AntennaArray& array,
                const RunIndicators& indicators, SimulationReport& report) {
  report.files.clear();
  if (Status status = settings.validate(); !status.ok()) return status;
  if (sky.components().empty()) return {StatusCode::kInvalidValue, "sky: the model has no components"};
  if (array.antennas().size() < 2) return {StatusCode::kInvalidValue, "array: needs at least two antennas"};
  try {
    std::error_code error;
    std::filesystem::create_directories(settings.folder, error);
    if (error) return {StatusCode::kWriteFailed, "cannot be created: " + error.message(), settings.folder};
    removeLeftovers(settings.folder);
    AProgress progress(indicators.fileBar, static_cast<double>(settings.bandsMhz.size()));
    for (const double band : settings.bandsMhz) {
      indicators.setText("Simulating " + valToStr(band) + " MHz");
      SimulatedFile file;
      BandSimulation simulation(settings, sky, array, band);
      if (Status status = simulation.run(indicators, file); !status.ok()) return status;
      report.files.push_back(std::move(file));
      progress.SetPos(static_cast<double>(report.files.size()));
    }
  } catch (const std::bad_alloc&) {
    return {StatusCode::kOutOfMemory, "there is not enough memory for the simulation"};
  } catch (const std::filesystem::filesystem_error& failure) {
    return {StatusCode::kWriteFailed, failure.what(), settings.folder};
  }
  return {};
}

}  // namespace lumo
