// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "convert/AntennaArray.h"
#include "convert/SkyModel.h"
#include "core/Progress.h"
#include "core/Status.h"

namespace lumo {

/// What to observe. Every band becomes one file.
struct SimulatorSettings {
  static constexpr std::size_t kMaxBands = 256;
  static constexpr std::uint32_t kMaxChannels = 16384;  ///< IFs × channels
  static constexpr double kMaxSamples = 1e6;            ///< integrations in a band

  std::vector<double> bandsMhz;          ///< frequency of channel 0 of IF 0 of each band
  std::uint32_t ifs = 1;                 ///< IFs in a band, one after the other without a gap
  std::uint32_t channels = 1;            ///< channels in an IF
  double channelWidthKhz = 1000;         ///< from channel to channel
  double hours = 8;                      ///< length of the track, UTC, centred on the transit
  double intervalSeconds = 60;           ///< from integration to integration
  std::optional<double> declinationDeg;  ///< in place of the sky model's
  double noiseJy = 0;                    ///< standard deviation of the real and of the imaginary part
  std::uint64_t seed = 1;                ///< of the noise
  double elevationLimitDeg = 15;         ///< an antenna observes while the source is at least this high
  std::string folder;                    ///< where the files go; made when missing
  std::vector<std::string> inputs;       ///< files that are never written over

  /// Refuses values that cannot be observed with; the message starts with the name of the setting as on the
  /// command line ("bands", "ifs", "channels", "channel-width", "hours", "interval", "declination", "noise",
  /// "elevation-limit", "out").
  [[nodiscard]] Status validate() const;
};

/// One file that was written.
struct SimulatedFile {
  std::string path;
  std::uint64_t groups = 0;
  double uMax = 0;  ///< largest |u| in wavelengths over all groups and channels
  double vMax = 0;  ///< largest |v|
};

struct SimulationReport {
  std::vector<SimulatedFile> files;  ///< in the order of the bands
};

/// Writes what an array would measure of a model sky: one UVX file a band, named NAME_MHZ.uvx after the sky
/// model
/// ("sim" if it has no name) and the band.
///
/// The integrations lie `interval` apart, symmetrically about the transit (hour angle 0 at the array's mean
/// longitude), which is at MJD 60000.0; the Earth turns at the sidereal rate. Per integration every pair of
/// antennas that both see the source gives one group with the baseline antenna 1 - antenna 2. Products RR and
/// LL hold the same Stokes I with independent noise, weight 1 / noise² (1 without noise). Model visibilities
/// are computed in double from u and v *as stored* in single precision, so a file without noise fits its own
/// coordinates to the rounding of the values. The noise of a band depends on the seed and the band's
/// frequency only.
///
/// Same settings, same bytes. Memory does not grow with the length of the track. Statuses: kInvalidValue for
/// settings, kNoData when the source is never up, kCancelled, kWriteFailed. Files of bands that were finished
/// before stay and are in the report. `indicators`: readingBar shows the band's integrations, fileBar the
/// bands.
[[nodiscard]] Status simulate(const SimulatorSettings& settings, const SkyModel& sky,
                              const AntennaArray& array, const RunIndicators& indicators,
                              SimulationReport& report);

}  // namespace lumo
