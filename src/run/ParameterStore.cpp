// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/ParameterStore.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/Leftovers.h"
#include "core/LittleEndian.h"
#include "core/Paths.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

std::string fileKey(std::int32_t index) {
  return "UVX" + toStr(index);
}

// The masks of a binary file, as far as they can be read.
AObjArray<ABitArray> loadMasks(AFile& file, Status& status) {
  AObjArray<ABitArray> masks;
  std::uint8_t head[4];
  if (file.Read(head, sizeof head) == 0) {
    status = file.status();
    return masks;
  }
  const auto count = loadLittle<std::int32_t>(head);
  if (count < 0 || count > ParameterStore::kMaxFiles ||
      static_cast<std::uint64_t>(count) * sizeof head > file.remaining()) {
    status = {StatusCode::kBadFormat, "claims " + toStr(count) + " masks, which it cannot hold", file.name()};
    return masks;
  }
  masks.SetSize(count);
  for (ABitArray& mask : masks) {
    if (mask.Load(file) != 0) continue;
    status = {StatusCode::kBadFormat, "ends before its last mask", file.name()};
    break;
  }
  return masks;
}

}  // namespace

ParameterStore::ParameterStore(const std::string& folder)
    : profile_(folder + kProfileName), binaryPath_(folder + kBinaryName) {}

void ParameterStore::note(const Status& status) {
  if (status_.ok()) status_ = status;
}

void ParameterStore::LoadParameters(RunParameters& parameters, UvxFileList& files) {
  status_ = Status();
  const bool allAdded = loadFiles(files);
  loadValues(parameters);
  if (allAdded) loadBinary(files);
}

bool ParameterStore::loadFiles(UvxFileList& files) {
  const std::int32_t listed = profile_.GetProfileInt(kSection, "NUVX", 0);
  note(profile_.status());
  std::vector<std::string> names;
  bool nameMissing = false;
  for (std::int32_t i = 0; i < std::min(listed, kMaxFiles); ++i) {
    std::string name = profile_.GetProfileString(kSection, fileKey(i), "");
    // A missing name is added as an empty one, which fails; once is enough, however many are missing.
    if (name.empty() && std::exchange(nameMissing, true)) continue;
    names.push_back(std::move(name));
  }
  const std::vector<Status> failures = files.AddFiles(names);
  if (!failures.empty()) note(failures.front());
  return failures.empty() && listed <= kMaxFiles;
}

void ParameterStore::loadValues(RunParameters& parameters) {
  const auto whole = [this](const char* key, std::int32_t fallback) {
    return profile_.GetProfileInt(kSection, key, fallback);
  };
  const auto text = [this](const char* key, const char* fallback) {
    return profile_.GetProfileString(kSection, key, fallback);
  };
  parameters.iterations = whole("ITER", 1000);
  parameters.indexThreshold = textToDouble(text("POROG", "0.01"));
  parameters.indexMin = textToDouble(text("MINRANGE", "-3"));
  parameters.indexMax = textToDouble(text("MAXRANGE", "3"));
  parameters.order = whole("ORDER", 2);
  parameters.gain = textToDouble(text("GAIN", "0.1"));
  parameters.referenceMhz = textToDouble(text("FQCENTER", "0"));
  parameters.prefix = text("PREFIX", "MFS");
  parameters.nonNegative = whole("NONREG", 0) != 0;
  parameters.variableGain = whole("VARGAIN", 0) != 0;
  parameters.folder = text("FOLDER", "0");
}

void ParameterStore::loadBinary(UvxFileList& files) {
  AFile file;
  if (file.Open(binaryPath_, AFile::kRead) == 0) {
    if (file.status().code() != StatusCode::kNotFound) note(file.status());
    return;
  }
  Status status;
  files.replaceSelections(loadMasks(file, status));
  note(status);
  // After the survey, which writes the block's uv fields: the file's values are the ones that stay.
  if (files.imaging().Load(file) == 0)
    note({StatusCode::kBadFormat, "holds no imaging parameters after its masks", binaryPath_});
}

int ParameterStore::SaveParameters(RunParameters& parameters, const UvxFileList& files) {
  status_ = Status();
  // One writing of the profile for all of it: so it is whole at any moment, and it may list thousands of
  // files.
  profile_.hold();
  saveFiles(files);
  saveValues(parameters);
  if (profile_.flush() == 0) {
    note(profile_.status());
    parameters.order = 0;
  }
  saveBinary(files);
  return status_.ok() ? 1 : 0;
}

void ParameterStore::saveFiles(const UvxFileList& files) {
  const VisibilityInputs& inputs = files.inputs();
  if (profile_.WriteProfileInt(kSection, "NUVX", inputs.count()) == 0) note(profile_.status());
  for (std::int32_t i = 0; i < inputs.count(); ++i)
    if (profile_.WriteProfileString(kSection, fileKey(i), inputs.names[i]) == 0) note(profile_.status());
}

void ParameterStore::saveValues(RunParameters& parameters) {
  const auto noted = [this](int result) {
    if (result == 0) note(profile_.status());
    return result;
  };
  const auto whole = [&](const char* key, std::int32_t value) {
    return noted(profile_.WriteProfileInt(kSection, key, value));
  };
  const auto text = [&](const char* key, const std::string& value) {
    return noted(profile_.WriteProfileString(kSection, key, value));
  };
  whole("ITER", parameters.iterations);
  text("POROG", valToStr(parameters.indexThreshold));
  text("MINRANGE", valToStr(parameters.indexMin));
  text("MAXRANGE", valToStr(parameters.indexMax));
  parameters.order = whole("ORDER", parameters.order);
  text("GAIN", valToStr(parameters.gain));
  text("FQCENTER", valToStr(parameters.referenceMhz));
  text("PREFIX", parameters.prefix);
  whole("NONREG", parameters.nonNegative ? 1 : 0);
  whole("VARGAIN", parameters.variableGain ? 1 : 0);
  text("FOLDER", parameters.folder);
}

void ParameterStore::saveBinary(const UvxFileList& files) {
  const AObjArray<ABitArray>& masks = files.inputs().selections;
  AFile file;
  removeLeftovers(getfPath(binaryPath_));
  if (file.Open(binaryPath_, AFile::kCreate) == 0) return note(file.status());
  std::uint8_t head[4];
  storeLittle<std::int32_t>(head, masks.count());
  bool stored = file.Write(head, sizeof head) != 0;
  for (const ABitArray& mask : masks) stored = stored && mask.Store(file) != 0;
  stored = stored && files.imaging().Store(file) != 0;
  if (!stored || file.Close() == 0) note(file.status());
}

}  // namespace lumo
