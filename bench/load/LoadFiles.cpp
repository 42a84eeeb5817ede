// SPDX-License-Identifier: GPL-3.0-or-later
// Makes visibility files for tools/load.sh: very many, very long, with very many frequencies. The sky is a
// point of 1 Jy.
//
//   lumo_load_files many FOLDER FILES
//     files of one IF at one frequency each
//   lumo_load_files bands FILE SELECTIONS IFS GROUPS
//     groups take turns with the frequency selections
//   lumo_load_files sparse FILE BYTES
//     groups of zeros, which take no room on the disk, and 20 000 others
//   lumo_load_files channels FILE CHANNELS GROUPS
//     a UVFITS file with one IF
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "../../tests/convert/UvfitsBuilder.h"
#include "core/Crc32.h"
#include "core/LittleEndian.h"
#include "io/UvxLayout.h"
#include "io/UvxWriter.h"

namespace lumo::bench {
namespace {

constexpr double kFrequency = 5e9;  // of the first IF, Hz
constexpr double kBand = 1e9;       // that all IFs share, Hz
constexpr int kBaselines = 45;
constexpr std::uint64_t kFilledGroups = 20000;

void require(const Status& status) {
  if (!status.ok()) throw std::runtime_error(status.text());
}

/// A point on the elliptical track of one of the baselines, which take turns; it gets round in `groups`
/// groups.
UvxRecord track(std::uint64_t g, std::uint64_t groups) {
  const auto baseline = static_cast<double>(g % kBaselines);
  const double length = 1e-3 * (1 + baseline) / kBaselines;
  const double hour = 6.28 * static_cast<double>(g) / static_cast<double>(groups) + 0.7 * baseline;
  UvxRecord record;
  record.u = static_cast<float>(length * std::cos(hour));
  record.v = static_cast<float>(0.6 * length * std::sin(hour));
  return record;
}

/// Frequencies in equal steps: selections one after the other, IFs within. The IDs of source and selections
/// begin at 0, so that a group of zeros is one of them.
UvxContent content(std::uint32_t selections, std::uint32_t ifs, std::uint32_t channels) {
  UvxContent made;
  made.shape = {ifs, channels, 1};
  made.unit = "JY";
  made.sources = {{0, "LOAD", UvxFrame::kIcrs, 10, 40, 2000.0}};
  made.products = {1};
  const double step = kBand / (double{1} * selections * ifs);
  for (std::uint32_t s = 0; s < selections; ++s) {
    UvxSelection selection{static_cast<std::int8_t>(s), {}};
    for (std::uint32_t i = 0; i < ifs; ++i)
      selection.bands.push_back({kFrequency + step * (double{1} * s * ifs + i), step / channels});
    made.selections.push_back(std::move(selection));
  }
  return made;
}

void write(const std::string& path, const UvxContent& content, std::uint64_t groups) {
  const std::vector<AUVXComplex> values(content.shape.visibilities(), AUVXComplex(1.0, 0.0, 1.0));
  UvxWriter writer;
  require(writer.begin(path, content));
  for (std::uint64_t g = 0; g < groups; ++g) {
    UvxRecord record = track(g, groups);
    record.freqSel = static_cast<std::int8_t>(content.selections[g % content.selections.size()].id);
    require(writer.append(record, values));
  }
  require(writer.finish());
}

void writeMany(const std::string& folder, std::uint64_t files) {
  std::filesystem::create_directories(folder);
  UvxContent one = content(1, 1, 1);
  for (std::uint64_t i = 0; i < files; ++i) {
    one.selections[0].bands[0].frequency =
        kFrequency + kBand * static_cast<double>(i) / static_cast<double>(files);
    char name[32];
    std::snprintf(name, sizeof name, "/load-%05d.uvx", static_cast<int>(i));
    write(folder + name, one, 90);
  }
}

/// Moves the groups of a short file apart: between them come holes, and with them groups of zeros.
void writeSparse(const std::string& path, std::uint64_t bytes) {
  const std::string small = path + ".short";
  write(small, content(1, 8, 16), kFilledGroups);
  std::ifstream stream(small, std::ios::binary);
  std::vector<char> whole(std::filesystem::file_size(small));
  stream.read(whole.data(), static_cast<std::streamsize>(whole.size()));
  if (!stream) throw std::runtime_error("cannot read " + small);
  std::filesystem::remove(small);

  auto* const header = reinterpret_cast<std::uint8_t*>(whole.data());
  const std::uint64_t groupBytes = loadLittle<std::uint32_t>(header + uvx_header::kGroupBytes);
  const std::uint64_t groups = std::max(bytes / groupBytes, kFilledGroups);
  const std::uint64_t moved = (groups - kFilledGroups) * groupBytes;
  const auto directory = loadLittle<std::uint64_t>(header + uvx_header::kDirectoryOffset);
  for (std::uint32_t i = 0; i < loadLittle<std::uint32_t>(header + uvx_header::kTableCount); ++i) {
    std::uint8_t* const offset = header + directory + i * uvx_entry::kBytes + uvx_entry::kOffset;
    storeLittle<std::uint64_t>(offset, loadLittle<std::uint64_t>(offset) + moved);
  }
  storeLittle<std::uint64_t>(header + uvx_header::kGroupCount, groups);
  storeLittle<std::uint64_t>(header + uvx_header::kDirectoryOffset, directory + moved);
  storeLittle<std::uint32_t>(header + uvx_header::kCrc, crc32Of(header, uvx_header::kCrc));

  const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0644);
  const auto put = [&](std::uint64_t from, std::uint64_t size, std::uint64_t to) {
    if (::pwrite(file, whole.data() + from, size, static_cast<off_t>(to)) != static_cast<ssize_t>(size))
      throw std::runtime_error("cannot write " + path);
  };
  const std::uint64_t filledEnd = uvx_header::kBytes + kFilledGroups * groupBytes;
  if (file < 0 || ::ftruncate(file, static_cast<off_t>(whole.size() + moved)) != 0)
    throw std::runtime_error("cannot make " + path);
  put(0, uvx_header::kBytes, 0);
  for (std::uint64_t g = 0; g < kFilledGroups; ++g)
    put(uvx_header::kBytes + g * groupBytes, groupBytes,
        uvx_header::kBytes + groups * g / kFilledGroups * groupBytes);
  put(filledEnd, whole.size() - filledEnd, filledEnd + moved);
  ::close(file);
}

void writeChannels(const std::string& path, std::int64_t channels, std::uint64_t groups) {
  test::UvfitsBuilder builder;
  builder.axis("FREQ").pixels = channels;
  builder.axis("FREQ").value = kFrequency;
  builder.axis("FREQ").step = kBand / static_cast<double>(channels);
  for (std::uint64_t g = 0; g < groups; ++g) {
    const UvxRecord record = track(g, groups);
    builder.add(record.u, record.v, 258, 1, 0, 1);
  }
  std::ofstream stream(path, std::ios::binary);
  stream << builder.bytes();
  if (!stream.flush()) throw std::runtime_error("cannot write " + path);
}

void make(const std::vector<std::string>& words) {
  const auto whole = [&words](std::size_t i) { return std::stoull(words.at(i)); };
  const std::string& kind = words.at(0);
  if (kind == "many")
    writeMany(words.at(1), whole(2));
  else if (kind == "bands")
    write(words.at(1), content(static_cast<std::uint32_t>(whole(2)), static_cast<std::uint32_t>(whole(3)), 1),
          whole(4));
  else if (kind == "sparse")
    writeSparse(words.at(1), whole(2));
  else if (kind == "channels")
    writeChannels(words.at(1), static_cast<std::int64_t>(whole(2)), whole(3));
  else
    throw std::runtime_error("unknown kind of file " + kind);
}

}  // namespace
}  // namespace lumo::bench

int main(int argc, char** argv) {
  try {
    lumo::bench::make({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "lumo_load_files: %s\n", error.what());
    return 1;
  }
  return 0;
}
