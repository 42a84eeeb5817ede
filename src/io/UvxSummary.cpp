// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/UvxSummary.h"

#include <cstdint>

#include "core/TextForm.h"
#include "core/Units.h"
#include "io/AUVXHeader.h"
#include "io/AUVXSources.h"

namespace lumo {

std::string bandTableText(const std::vector<UvxBand>& bands) {
  std::string text = formatted("  %5s %4s %14s %12s %10s %9s %14s %24s\n", "fq.ID", "IF", "MHz", "channels",
                               "records", "rejected", "weight sum", "uv range [kwavelengths]");
  for (const UvxBand& band : bands) {
    text += formatted("  %5d %4u %14.6f %12s %10llu %8.2f%% %14.6g %11.5g .. %-9.5g\n", band.selection,
                      band.ifNumber, band.frequency * kMegahertzPerHertz,
                      formatted("%u x %.6gk", band.channels, band.width * 1e-3).c_str(),
                      static_cast<unsigned long long>(band.records), 100 * band.rejectedShare(),
                      band.weightSum, band.uvMin * 1e-3, band.uvMax * 1e-3);
  }
  return text;
}

std::string uvxSummary(const std::string& path, const AUVXFile& file, const UvxStatistics& statistics) {
  const AUVXHeader header(file);
  std::string text =
      path + formatted(
                 ": UVX version 1, %llu groups (%llu flagged), %u IFs x %u channels x %u products, "
                 "unit '%s'\n",
                 static_cast<unsigned long long>(file.groupCount()),
                 static_cast<unsigned long long>(statistics.flaggedRecords()), file.shape().ifs,
                 file.shape().channels, file.shape().products, printable(header.unit).c_str());
  const AUVXSources sources(file);
  for (std::int32_t i = 0; i < sources.count(); ++i)
    text += formatted("  source %d %s at RA %.9g Dec %.9g deg, epoch %g\n", sources[i].id,
                      printable(sources[i].name).c_str(), sources[i].rightAscension, sources[i].declination,
                      sources[i].epoch);
  text += formatted("  u %.6g .. %.6g, v %.6g .. %.6g seconds\n", header.uMin, header.uMax, header.vMin,
                    header.vMax) +
          "  tables";
  for (const AUVXFile::TableEntry& table : file.tables())
    text += formatted(" %s (%u rows)", printable(table.name).c_str(), table.rows);
  return text + "; header and table checksums are right\n" + bandTableText(statistics.bands());
}

}  // namespace lumo
