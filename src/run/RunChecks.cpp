// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunChecks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <set>
#include <utility>

#include "core/FileIdentity.h"
#include "core/Paths.h"
#include "core/PendingFile.h"
#include "core/TextForm.h"
#include "io/AUVXSources.h"
#include "io/ProductNames.h"

namespace lumo {

namespace {

constexpr std::int32_t kRemovedIndices = 20;

std::vector<std::string> newProductPaths(const RunParameters& p) {
  std::vector<std::string> paths;
  for (std::int32_t k = 0; k < p.order; ++k) {
    paths.push_back(dirtyMapName(p.folder, p.prefix, k));
    paths.push_back(cleanName(p.folder, p.prefix, k));
    paths.push_back(cleanResName(p.folder, p.prefix, k));
  }
  for (std::int32_t k = 0; k <= 2 * (p.order - 1); ++k) paths.push_back(beamName(p.folder, p.prefix, k));
  paths.push_back(residualName(p.folder, p.prefix));
  paths.push_back(indexName(p.folder, p.prefix));
  paths.push_back(freqRangeName(p.folder, p.prefix));
  if (p.indexError) paths.push_back(indexErrorName(p.folder, p.prefix));
  return paths;
}

std::vector<std::string> productPaths(const RunParameters& p) {
  std::vector<std::string> paths = oldProductPaths(p);
  for (std::string& path : newProductPaths(p)) paths.push_back(std::move(path));
  return paths;
}

// Compared as files, not as names: a link, another spelling of the folder or of the case is the same file.
Status checkNoInputIsProduct(const RunParameters& parameters, const VisibilityInputs& inputs) {
  std::set<FileIdentity> products;
  FileIdentity identity;
  for (const std::string& path : productPaths(parameters))
    if (identifyFile(path, identity)) products.insert(identity);
  for (const std::string& name : inputs.names)
    if (identifyFile(name, identity) && products.count(identity) != 0)
      return {
          StatusCode::kInvalidValue,
          "has the name of a product of this run, which would replace it; choose another prefix or folder",
          name};
  return {};
}

Status checkFolder(const RunParameters& parameters) {
  const std::string path = getfPath(parameters.folder + parameters.prefix);
  const std::string folder = path.empty() ? "." : path;
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
    return {StatusCode::kNotFound, "the work folder does not exist", folder};
  if (::access(folder.c_str(), W_OK | X_OK) != 0)
    return {StatusCode::kWriteFailed, "no file can be created in the work folder", folder};
  // Known after hours of CLEAN otherwise.
  for (const std::string& product : newProductPaths(parameters))
    if (Status status = checkNameLength(product); !status.ok()) return status;
  return {};
}

bool sameTable(const AUVXFqTbl& a, const AUVXFqTbl& b) {
  if (a.GetFreqSels() != b.GetFreqSels() || a.GetIFs() != b.GetIFs() || a.GetChannels() != b.GetChannels())
    return false;
  for (int selection = 0; selection < a.GetFreqSels(); ++selection) {
    if (a.GetFreqSelID(selection) != b.GetFreqSelID(selection)) return false;
    for (int ifIndex = 0; ifIndex < a.GetIFs(); ++ifIndex)
      for (const int channel : {0, 1})
        if (a.GetFreq(channel, ifIndex, selection) != b.GetFreq(channel, ifIndex, selection)) return false;
  }
  return true;
}

// Gridding trusts the table and the mix that were taken when the file was listed.
Status checkUnchanged(const VisibilityInputs& inputs, std::int32_t i) {
  AUVXFile file;
  if (file.Open(inputs.names[i], AFile::kRead) == 0) return file.status();
  const AUVXSources sources(file);
  const std::unique_ptr<const AArray<AStokesMix>> mixes(toListMix(AUVXStokes(file)));
  const bool same = sources.count() == 1 && sources[0].id == inputs.sources[i] &&
                    sameTable(AUVXFqTbl(file, inputs.sources[i]), inputs.tables[i]) &&
                    std::find(mixes->begin(), mixes->end(), inputs.mixes[i]) != mixes->end();
  if (same) return {};
  return {
      StatusCode::kBadFormat,
      "has other sources, frequencies or Stokes products than when it was listed; remove it and add it again",
      inputs.names[i]};
}

Status checkImaging(const VisibilityInputs& inputs, ABMakeParameters& imaging) {
  const auto usable = [](double extent) { return std::isfinite(extent) && extent > 0; };
  if (std::none_of(inputs.selections.begin(), inputs.selections.end(),
                   [](const ABitArray& mask) { return mask.setCount() > 0; }))
    return {StatusCode::kNoData, "no frequency selection of any file is selected"};
  if (!usable(imaging.uvScaleU) || !usable(imaging.uvScaleV))
    return {StatusCode::kNoData, "the selected data have no extent in u or in v: found " +
                                     valToStr(imaging.uvScaleU) + " and " + valToStr(imaging.uvScaleV) +
                                     " wavelengths"};
  AUVXFile first;
  if (first.Open(inputs.names[0], AFile::kRead) == 0) return first.status();
  return imaging.Setup(first, inputs.sources[0]) != 0 ? Status() : imaging.status();
}

}  // namespace

std::vector<std::string> oldProductPaths(const RunParameters& parameters) {
  std::vector<std::string> paths;
  for (std::int32_t i = 0; i < kRemovedIndices; ++i) {
    paths.push_back(beamName(parameters.folder, parameters.prefix, i));
    paths.push_back(dirtyMapName(parameters.folder, parameters.prefix, i));
    paths.push_back(cleanName(parameters.folder, parameters.prefix, i));
    paths.push_back(cleanResName(parameters.folder, parameters.prefix, i));
  }
  // Without the "^" of today's names: an index map of an earlier run stays until it is replaced.
  paths.push_back(parameters.folder + parameters.prefix + "sindex.exm");
  paths.push_back(parameters.folder + parameters.prefix + "residual0.exm");
  // An error map would stand beside an index map that it does not belong to.
  paths.push_back(indexErrorName(parameters.folder, parameters.prefix));
  return paths;
}

void removeOldProducts(const RunParameters& parameters) {
  for (const std::string& path : oldProductPaths(parameters)) ::unlink(path.c_str());
}

VisibilityInputs inStep(const VisibilityInputs& inputs) {
  VisibilityInputs result = inputs;
  result.selections = AObjArray<ABitArray>(inputs.count());
  for (std::int32_t i = 0; i < inputs.count(); ++i) {
    const int bits = inputs.tables[i].GetFreqSels();
    ABitArray mask(bits);
    for (int bit = 0; i < inputs.selections.count() && bit < bits; ++bit)
      mask(bit, inputs.selections[i](bit));
    result.selections[i] = mask;
  }
  return result;
}

Status checkInputs(const RunParameters& parameters, const VisibilityInputs& inputs,
                   ABMakeParameters& imaging) {
  if (inputs.count() == 0) return {};
  Status status = checkFolder(parameters);
  if (status.ok()) status = checkNoInputIsProduct(parameters, inputs);
  for (std::int32_t i = 0; status.ok() && i < inputs.count(); ++i) status = checkUnchanged(inputs, i);
  return status.ok() ? checkImaging(inputs, imaging) : status;
}

}  // namespace lumo
