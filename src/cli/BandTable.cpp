// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/BandTable.h"

#include <cstdio>

#include "io/UvxSummary.h"

namespace lumo {

void printBands(const std::vector<UvxBand>& bands) {
  std::fputs(bandTableText(bands).c_str(), stdout);
}

Json bandsJson(const std::vector<UvxBand>& bands) {
  Json list = Json::array();
  for (const UvxBand& band : bands)
    list.push_back({{"selection", band.selection},
                    {"if", band.ifNumber},
                    {"frequency_hz", finiteOrNull(band.frequency)},
                    {"channel_width_hz", finiteOrNull(band.width)},
                    {"channels", band.channels},
                    {"records", band.records},
                    {"visibilities", band.visibilities},
                    {"usable", band.usable},
                    {"rejected_share", band.rejectedShare()},
                    {"weight_sum", finiteOrNull(band.weightSum)},
                    {"uv_min", finiteOrNull(band.uvMin)},
                    {"uv_max", finiteOrNull(band.uvMax)}});
  return list;
}

}  // namespace lumo
