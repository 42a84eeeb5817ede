// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/UvxStatistics.h"

#include <algorithm>
#include <cmath>

#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXGroup.h"
#include "io/AUVXVisibility.h"

namespace lumo {

UvxStatistics::UvxStatistics(const UvxShape& shape, std::span<const UvxSelection> selections)
    : UvxStatistics() {
  shape_ = shape;
  for (const UvxSelection& selection : selections) {
    const auto id = static_cast<std::int8_t>(selection.id);
    std::size_t& first = firstBand_[static_cast<std::uint8_t>(id)];
    if (id == selection.id && first == kNoBand) first = bands_.size();
    for (std::size_t i = 0; i < selection.bands.size(); ++i) {
      UvxBand band;
      band.selection = selection.id;
      band.ifNumber = static_cast<std::uint32_t>(i) + 1;
      band.frequency = selection.bands[i].frequency;
      band.width = selection.bands[i].increment;
      band.channels = shape.channels;
      bands_.push_back(band);
    }
  }
}

void UvxStatistics::add(const UvxRecord& record, std::span<const AUVXComplex> visibilities) {
  ++records_;
  flagged_ += record.flag != 0 ? 1 : 0;
  const std::size_t perIf = std::size_t{shape_.channels} * shape_.products;
  const double seconds = std::hypot(double{record.u}, double{record.v});
  const std::size_t at = firstBand_[static_cast<std::uint8_t>(record.freqSel)];
  if (at == kNoBand) return;
  for (std::size_t i = 0; i < shape_.ifs; ++i) {
    UvxBand& band = bands_[at + i];
    ++band.records;
    band.visibilities += perIf;
    if (record.flag != 0 || !std::isfinite(seconds)) continue;
    for (const AUVXComplex& value : visibilities.subspan(i * perIf, perIf)) {
      if (!value.isUsable()) continue;
      ++band.usable;
      band.weightSum += value.Weight();
    }
    const double last = band.frequency + (band.channels - 1.0) * band.width;
    const double shortest = seconds * std::min(band.frequency, last);
    const double longest = seconds * std::max(band.frequency, last);
    const bool first = band.uvMax == 0 && band.uvMin == 0;
    band.uvMin = first ? shortest : std::min(band.uvMin, shortest);
    band.uvMax = first ? longest : std::max(band.uvMax, longest);
  }
}

UvxStatistics countGroups(AUVXFile& file) {
  UvxStatistics statistics(file.shape(), AUVXFqTbl(file, 0).selections());
  AUVXVisibility visibility(file);
  const std::uint64_t groupsBetweenReleases = MappedFile::kResidentBytes / file.groupBytes() + 1;
  for (std::uint64_t g = 0; g < file.groupCount(); ++g) {
    if (g % groupsBetweenReleases == 0) {
      if (!file.intact().ok()) break;
      file.releaseBefore(g);
    }
    file.SeekUVGroup(g);
    visibility.load(file);
    statistics.add(UvxRecord::load(file.group()), visibility.values());
  }
  return statistics;
}

}  // namespace lumo
