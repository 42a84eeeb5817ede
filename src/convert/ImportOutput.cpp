// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/ImportOutput.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

#include "core/Paths.h"
#include "core/TextForm.h"

namespace lumo {
namespace {

std::string safePart(const std::string& text) {
  std::string safe = text;
  for (char& c : safe) {
    const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                       c == '+' || c == '-' || c == '.' || c == '_';
    if (!plain) c = '_';
  }
  return safe;
}

std::string stemOf(const std::string& input) {
  std::string name = input;
  while (name.size() > 1 && name.back() == kDirSeparator) name.pop_back();
  name = fileName(name);
  const auto dot = name.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

bool contains(const std::vector<std::string>& paths, const std::string& path) {
  return std::find(paths.begin(), paths.end(), path) != paths.end();
}

}  // namespace

Status ImportOutput::begin(const std::string& path, UvxContent content) {
  path_ = path;
  statistics_ = UvxStatistics(content.shape, content.selections);
  return writer_.begin(path, std::move(content));
}

Status ImportOutput::add(const UvxRecord& record, std::span<const AUVXComplex> visibilities) {
  if (Status status = writer_.append(record, visibilities); !status.ok()) return status;
  statistics_.add(record, visibilities);
  return {};
}

Status ImportOutput::finish(ImportedFile& description) {
  UvxContent& content = writer_.content();
  std::vector<UvxBand> bands = statistics_.bands();
  std::erase_if(bands, [](const UvxBand& band) { return band.records == 0; });
  std::erase_if(content.selections, [&](const UvxSelection& selection) {
    return std::none_of(bands.begin(), bands.end(),
                        [&](const UvxBand& band) { return band.selection == selection.id; });
  });
  if (Status status = writer_.finish(); !status.ok()) return status;
  description.path = path_;
  description.source = content.sources.front().name;
  description.shape = content.shape;
  description.products = content.products;
  description.records = writer_.groups();
  description.flaggedRecords = statistics_.flaggedRecords();
  description.bands = std::move(bands);
  return {};
}

Status outputPath(const std::string& input, const std::string& part, const ImportOptions& options,
                  const std::vector<std::string>& written, std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const std::string folder = withSeparator(options.outFolder);
  if (!folder.empty()) fs::create_directories(folder, error);
  if (!folder.empty() && !fs::is_directory(folder, error))
    return {StatusCode::kWriteFailed, "the output folder cannot be made: " + error.message(), folder};
  std::string base = folder + stemOf(input);
  if (!part.empty()) base.append(1, '_').append(safePart(part));
  path = base + ".uvx";
  for (std::int64_t n = 2; contains(options.taken, path) || contains(written, path); ++n)
    path = base + "_" + toStr(n) + ".uvx";
  if (fs::exists(path, error) && fs::equivalent(path, input, error))
    return {StatusCode::kInvalidValue,
            "the output would overwrite the input itself; choose another output folder", path};
  return {};
}

}  // namespace lumo
