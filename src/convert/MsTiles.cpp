// SPDX-License-Identifier: GPL-3.0-or-later
#include <casacore/casa/Arrays/Array.h>
#include <casacore/casa/Containers/Record.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "convert/MsCasacore.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;

/// Bytes that the tiles of one hypercube take.
double cubeBytes(const casacore::Record& cube) {
  const casacore::Array<casacore::Int> size(cube.asArrayInt("CubeShape"));
  const casacore::Array<casacore::Int> tile(cube.asArrayInt("TileShape"));
  double tiles = 1;
  auto t = tile.begin();
  for (auto s = size.begin(); s != size.end() && t != tile.end(); ++s, ++t)
    tiles *= *t > 0 ? std::ceil(static_cast<double>(*s) / *t) : 1.0;
  return tiles * cube.asInt("BucketSize");
}

/// Bytes of the files that start with `name`; none when there is no such file, as in other containers of
/// files.
bool fileBytes(const std::string& folder, const std::string& name, double& bytes) {
  bool found = false;
  bytes = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().rfind(name, 0) != 0) continue;
    found = true;
    bytes += static_cast<double>(entry.file_size());
  }
  return found;
}

Status checkManager(const casacore::Record& manager, const std::string& folder,
                    const std::set<std::string>& columns) {
  const casacore::Array<casacore::String> held(manager.asArrayString("COLUMNS"));
  const auto read = std::find_if(held.begin(), held.end(),
                                 [&](const std::string& name) { return columns.count(name) != 0; });
  if (read == held.end() || !manager.isDefined("SPEC")) return {};
  const casacore::Record& spec = manager.subRecord("SPEC");
  if (!spec.isDefined("HYPERCUBES") || !spec.isDefined("SEQNR")) return {};
  const casacore::Record& cubes = spec.subRecord("HYPERCUBES");
  double needed = 0;
  for (casacore::uInt i = 0; i < cubes.nfields(); ++i) needed += cubeBytes(cubes.subRecord(i));
  const std::string files = "table.f" + toStr(static_cast<std::int64_t>(spec.asuInt("SEQNR"))) + "_TSM";
  double there = 0;
  if (!fileBytes(folder, files, there) || there >= needed) return {};
  return {StatusCode::kBadFormat, "column " + std::string(*read) + " needs " + nValToStr(needed, 15) +
                                      " bytes in the files " + files + "*, which have " +
                                      nValToStr(there, 15) + ": the set was cut short"};
}

}  // namespace

Status checkMsTiles(const casacore::Table& main, const std::set<std::string>& columns) {
  const casacore::Block<casacore::String> parts = main.getPartNames(true);
  for (const casacore::String& part : parts) {
    const casacore::Record managers = openMsTable(part).dataManagerInfo();
    for (casacore::uInt i = 0; i < managers.nfields(); ++i)
      if (Status status = checkManager(managers.subRecord(i), part, columns); !status.ok()) return status;
  }
  return {};
}

}  // namespace lumo
