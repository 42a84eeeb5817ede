// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/ImportOutput.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

#include "core/FileIdentity.h"
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

/// The content of a file with the averages of `content`'s channels.
void averageContent(const ChannelAverage& average, UvxContent& content) {
  const std::uint32_t channels = content.shape.channels;
  for (UvxSelection& selection : content.selections) {
    std::vector<UvxSelection::Band> bands;
    for (const UvxSelection::Band& band : selection.bands) {
      std::vector<double> frequencies(channels);
      for (std::uint32_t c = 0; c < channels; ++c) frequencies[c] = band.frequency + c * band.increment;
      const auto averages = average.bands(frequencies, std::vector<double>(channels, band.increment));
      bands.insert(bands.end(), averages.begin(), averages.end());
    }
    selection.bands = std::move(bands);
  }
  content.shape.ifs *= average.ifs();
  content.shape.channels = 1;
}

}  // namespace

Status ImportOutput::begin(const std::string& path, UvxContent content, std::uint32_t average) {
  path_ = path;
  added_ = content.shape;
  average_.reset();
  if (average > 0) {
    average_.emplace(added_.channels, added_.products, average);
    averageContent(*average_, content);
    averaged_.resize(content.shape.visibilities());
  }
  statistics_ = UvxStatistics(content.shape, content.selections);
  return writer_.begin(path, std::move(content));
}

Status ImportOutput::add(const UvxRecord& record, std::span<const AUVXComplex> visibilities) {
  if (average_) {
    const std::size_t from = std::size_t{added_.channels} * added_.products;
    const std::size_t to = std::size_t{average_->ifs()} * added_.products;
    for (std::size_t i = 0; i < added_.ifs; ++i)
      average_->apply(visibilities.subspan(i * from, from), std::span(averaged_).subspan(i * to, to));
    visibilities = averaged_;
  }
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
  if (isSameFile(path, input))
    return {StatusCode::kInvalidValue,
            "the output would overwrite the input itself; choose another output folder", path};
  for (const std::string& other : options.inputs)
    if (isSameFile(path, other))
      return {StatusCode::kInvalidValue,
              "the output would overwrite the input " + other + "; choose another output folder", path};
  return {};
}

}  // namespace lumo
