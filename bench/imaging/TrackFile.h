// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "imaging/ABMakeParameters.h"
#include "io/VisibilityInputs.h"

namespace lumo::bench {

/// Of the first IF of a TrackFile, Hz.
inline constexpr double kTrackFrequency = 1.4e9;

/// A visibility file of elliptical uv tracks of 45 baselines, which take turns, one stored product, all
/// usable; removed at the end. Throws when it cannot be written.
class TrackFile {
 public:
  TrackFile(std::uint32_t ifs, std::uint32_t channels, std::uint64_t groups);
  TrackFile(const TrackFile&) = delete;
  TrackFile& operator=(const TrackFile&) = delete;
  ~TrackFile();

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] VisibilityInputs inputs() const;

 private:
  std::string path_;
};

/// Natural weights, pill box, maps of 2 · halfSize pixels whose grid holds a TrackFile's data.
[[nodiscard]] ABMakeParameters trackParameters(std::int32_t halfSize);

}  // namespace lumo::bench
