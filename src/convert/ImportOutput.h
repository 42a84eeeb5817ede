// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "convert/ChannelAverage.h"
#include "convert/ImportReport.h"
#include "core/Status.h"
#include "io/AUVXComplex.h"
#include "io/UvxStatistics.h"
#include "io/UvxTables.h"
#include "io/UvxWriter.h"

namespace lumo {

/// One UVX file that an importer writes, and the figures its report needs.
///
/// begin(), add() record by record, finish(). Only finish() makes the file appear.
class ImportOutput {
 public:
  /// `content` must list every selection a record may name; finish() keeps those that came. With `average`
  /// (ImportOptions::average) above 0 the file gets averages of the channels that content and add() have.
  [[nodiscard]] Status begin(const std::string& path, UvxContent content, std::uint32_t average = 0);
  /// Writes a record with its visibilities [IF][channel][product].
  [[nodiscard]] Status add(const UvxRecord& record, std::span<const AUVXComplex> visibilities);
  /// Adds a line to the file's history.
  void addHistory(const std::string& line) { writer_.content().history.push_back(line); }
  /// Completes the file and describes it.
  [[nodiscard]] Status finish(ImportedFile& description);

  [[nodiscard]] std::uint64_t records() const { return writer_.groups(); }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  UvxWriter writer_;
  std::string path_;
  UvxStatistics statistics_;
  UvxShape added_;  ///< what add() gets
  std::optional<ChannelAverage> average_;
  std::vector<AUVXComplex> averaged_;
};

/// Path of an output: folder, the input's name without its extension, "_" and `part` when that is not empty
/// (made safe for a file name), ".uvx"; numbered _2, _3 and so on when an earlier output of `options.taken`
/// or `written` has the name. Fails when the file of that name is the input or one of `options.inputs`.
/// Creates the folder.
[[nodiscard]] Status outputPath(const std::string& input, const std::string& part,
                                const ImportOptions& options, const std::vector<std::string>& written,
                                std::string& path);

}  // namespace lumo
