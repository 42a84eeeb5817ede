// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/MsImporter.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "convert/ImportOutput.h"
#include "convert/MsFile.h"
#include "convert/MsRows.h"
#include "convert/MsSetups.h"
#include "convert/UvfitsFile.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Version.h"

namespace lumo {
namespace {

constexpr std::uint64_t kBlock = 4096;    // rows whose heads are read at a time
constexpr std::uint64_t kPollRows = 256;  // between two looks at the cancel flag
constexpr std::size_t kMaxOutputs = 256;  // files open at a time

/// One import from the open set to the finished outputs.
class MsImport {
 public:
  MsImport(const std::string& input, const ImportOptions& options, const RunIndicators& indicators,
           ImportReport& report)
      : input_(input), options_(options), indicators_(indicators), report_(report) {}

  [[nodiscard]] Status run();

 private:
  using OutputKey = std::pair<std::int32_t, std::size_t>;  ///< field, shape

  [[nodiscard]] Status checkFolder() const;
  [[nodiscard]] Status survey();
  [[nodiscard]] Status checkKey(std::uint64_t row, const MsRowKey& key) const;
  [[nodiscard]] Status chooseFields();
  [[nodiscard]] Status chooseWindows();
  [[nodiscard]] Status openOutputs();
  [[nodiscard]] Status open(const OutputKey& key);
  [[nodiscard]] std::string namePart(const OutputKey& key) const;
  [[nodiscard]] Status copyRows();
  [[nodiscard]] Status copyRow(std::uint64_t row, const MsRowKey& key, const MsRowPlace& place);
  [[nodiscard]] Status finish();
  [[nodiscard]] bool wanted(const MsField& field) const;
  [[nodiscard]] std::string fieldName(std::int32_t field) const;
  [[nodiscard]] std::string fieldNames() const;
  void describe();

  const std::string& input_;
  const ImportOptions& options_;
  const RunIndicators& indicators_;
  ImportReport& report_;

  MsFile file_;
  std::map<std::pair<std::int32_t, std::int32_t>, std::uint64_t>
      counts_;                                      ///< rows by field, data description
  std::map<std::int32_t, AUVXSourceItem> sources_;  ///< of the fields to import
  std::optional<MsSetups> setups_;
  std::map<OutputKey, ImportOutput> outputs_;
  std::vector<std::string> paths_;
  std::optional<MsRows> rows_;
  Status refused_;  ///< the first field or window that was left out
};

Status MsImport::run() {
  report_ = {};
  report_.input = input_;
  Status status = checkFolder();
  if (status.ok()) status = file_.open(input_, options_.column);
  if (status.ok()) status = survey();
  if (status.ok()) status = chooseFields();
  if (status.ok()) status = chooseWindows();
  if (status.ok()) status = openOutputs();
  if (status.ok()) status = copyRows();
  if (status.ok()) status = finish();
  return status.about(input_);
}

/// Nothing may appear within the set.
Status MsImport::checkFolder() const {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path set = fs::weakly_canonical(fs::path(input_) / "table.dat", error).parent_path();
  const fs::path inside = fs::path(options_.outFolder.empty() ? "." : options_.outFolder) / "x";
  for (fs::path folder = fs::weakly_canonical(fs::absolute(inside), error).parent_path(); !folder.empty();
       folder = folder.parent_path()) {
    if (folder == set)
      return {StatusCode::kInvalidValue,
              "the output folder lies within the Measurement Set, which must stay as it is; choose another",
              options_.outFolder};
    if (folder == folder.parent_path()) break;
  }
  return {};
}

/// Counts the rows of every field and data description, before anything is written.
Status MsImport::survey() {
  std::vector<MsRowKey> keys;
  for (std::uint64_t first = 0; first < file_.rows(); first += kBlock) {
    if (indicators_.cancelled()) return {StatusCode::kCancelled, "the import was stopped"};
    keys.resize(std::min(kBlock, file_.rows() - first));
    if (Status status = file_.readKeys(first, keys); !status.ok()) return status;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      if (keys[i].antenna1 == keys[i].antenna2) {
        ++report_.autocorrelations;
        continue;
      }
      if (Status status = checkKey(first + i, keys[i]); !status.ok()) return status;
      ++counts_[{keys[i].field, keys[i].description}];
    }
  }
  report_.groups = file_.rows();
  if (counts_.empty()) return {StatusCode::kNoData, "holds no visibilities between different antennas"};
  return {};
}

Status MsImport::checkKey(std::uint64_t row, const MsRowKey& key) const {
  const auto check = [&](const char* column, std::int32_t value, std::size_t size) -> Status {
    if (value >= 0 && static_cast<std::size_t>(value) < size) return {};
    return {StatusCode::kBadFormat, "row " + toStr(static_cast<std::int64_t>(row)) + " has " + column + " " +
                                        toStr(value) + "; expected 0 to " +
                                        toStr(static_cast<std::int64_t>(size) - 1)};
  };
  const MsTables& tables = file_.tables();
  Status status = check("FIELD_ID", key.field, tables.fields.size());
  return status.ok() ? check("DATA_DESC_ID", key.description, tables.descriptions.size()) : status;
}

bool MsImport::wanted(const MsField& field) const {
  // A UVX file holds 16 bytes of a name, and that is what reports show.
  return options_.source.empty() || field.name == options_.source ||
         field.name.substr(0, 16) == options_.source;
}

std::string MsImport::fieldName(std::int32_t field) const {
  return "field " + toStr(field) + " '" + file_.tables().fields[static_cast<std::size_t>(field)].name + "'";
}

std::string MsImport::fieldNames() const {
  constexpr int kMaxNames = 20;
  std::string names;
  int listed = 0;
  std::int32_t last = -1;
  for (const auto& [key, rows] : counts_) {
    if (key.first == last) continue;
    last = key.first;
    if (++listed > kMaxNames) return names + ", ...";
    names += (names.empty() ? "" : ", ") + file_.tables().fields[static_cast<std::size_t>(last)].name;
  }
  return names;
}

Status MsImport::chooseFields() {
  std::map<std::int32_t, std::uint64_t> rows;
  for (const auto& [key, count] : counts_) rows[key.first] += count;
  bool found = false;
  for (const auto& [field, count] : rows) {
    if (!wanted(file_.tables().fields[static_cast<std::size_t>(field)])) continue;
    found = true;
    AUVXSourceItem source;
    const Status status = msFieldSource(file_.tables(), field, source, report_);
    if (status.ok()) {
      sources_.emplace(field, std::move(source));
      continue;
    }
    const std::string sentence = fieldName(field) + " (" + toStr(static_cast<std::int64_t>(count)) +
                                 " rows) was left out: " + status.message();
    report_.warnings.push_back(sentence);
    if (refused_.ok()) refused_ = Status(status.code(), sentence);
  }
  if (!found)
    return {StatusCode::kNoData,
            "holds no visibilities of a field '" + options_.source + "'; it holds " + fieldNames()};
  return sources_.empty() ? refused_ : Status();
}

Status MsImport::chooseWindows() {
  const MsTables& tables = file_.tables();
  std::vector<std::uint64_t> rows(tables.descriptions.size());
  for (const auto& [key, count] : counts_)
    if (sources_.count(key.first) != 0) rows[static_cast<std::size_t>(key.second)] += count;
  std::vector<bool> used(rows.size());
  std::transform(rows.begin(), rows.end(), used.begin(), [](std::uint64_t count) { return count != 0; });
  setups_.emplace(tables, used, options_.average, report_);
  bool any = false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Status& refusal = setups_->setups()[i].refusal;
    any = any || refusal.ok();
    if (rows[i] == 0 || refusal.ok()) continue;
    const std::string sentence = msWindowName(tables, tables.descriptions[i].window) + " (" +
                                 toStr(static_cast<std::int64_t>(rows[i])) +
                                 " rows) was left out: " + refusal.message();
    report_.warnings.push_back(sentence);
    if (refused_.ok()) refused_ = Status(refusal.code(), sentence);
  }
  return any ? Status() : refused_;
}

Status MsImport::openOutputs() {
  rows_.emplace(file_.tables(), file_.column());
  for (const auto& [key, count] : counts_) {
    const auto& setup = setups_->setups()[static_cast<std::size_t>(key.second)];
    if (sources_.count(key.first) == 0 || !setup.refusal.ok()) continue;
    if (Status status = open({key.first, setup.shape}); !status.ok()) return status;
  }
  return {};
}

std::string MsImport::namePart(const OutputKey& key) const {
  const bool fields = counts_.begin()->first.first != counts_.rbegin()->first.first;
  std::string part = fields ? sources_.at(key.first).name : std::string();
  if (setups_->shapes().size() < 2) return part;
  return part + (part.empty() ? "" : "_") + setups_->shapes()[key.second].name;
}

Status MsImport::open(const OutputKey& key) {
  if (outputs_.count(key) != 0) return {};
  if (outputs_.size() == kMaxOutputs)
    return {StatusCode::kUnsupported,
            "would make more than " + toStr(kMaxOutputs) +
                " files (fields x shapes); import its fields one at a time by name"};
  const MsTables& tables = file_.tables();
  const MsSetups::Shape& shape = setups_->shapes()[key.second];
  UvxContent content;
  content.shape = shape.shape;
  content.products = shape.products;
  content.selections = shape.selections;
  content.sources = {sources_.at(key.first)};
  for (const MsAntenna& antenna : tables.antennas)
    content.antennas.push_back({static_cast<std::int32_t>(content.antennas.size()) + 1,
                                cleanText(antenna.name, 16), antenna.x, antenna.y, antenna.z});
  const bool calibrated = file_.column() == "CORRECTED_DATA" || file_.unit() == "Jy" || file_.unit() == "JY";
  if (calibrated) content.unit = "JY";
  content.history = {programVersion(),
                     "imported from Measurement Set " + fileName(input_) + ", " + fieldName(key.first) +
                         ", column " + file_.column(),
                     "telescope " + tables.telescope + ", observer " + tables.observer};
  content.history.insert(content.history.end(), tables.history.begin(), tables.history.end());
  std::string path;
  if (Status status = outputPath(input_, namePart(key), options_, paths_, path); !status.ok()) return status;
  paths_.push_back(path);
  return outputs_[key].begin(path, std::move(content));
}

Status MsImport::copyRows() {
  std::vector<MsRowKey> keys;
  std::vector<MsRowPlace> places;
  AProgress progress(indicators_.readingBar, static_cast<double>(file_.rows()));
  for (std::uint64_t first = 0; first < file_.rows(); first += kBlock) {
    keys.resize(std::min(kBlock, file_.rows() - first));
    places.resize(keys.size());
    Status status = file_.readKeys(first, keys);
    if (status.ok()) status = file_.readPlaces(first, places);
    for (std::size_t i = 0; status.ok() && i < keys.size(); ++i) {
      if (i % kPollRows == 0) {
        if (indicators_.cancelled()) return {StatusCode::kCancelled, "the import was stopped"};
        progress.SetPos(static_cast<double>(first + i));
      }
      status = copyRow(first + i, keys[i], places[i]);
    }
    if (!status.ok()) return status;
  }
  progress.SetPos(static_cast<double>(file_.rows()));
  return {};
}

Status MsImport::copyRow(std::uint64_t row, const MsRowKey& key, const MsRowPlace& place) {
  if (key.antenna1 == key.antenna2) return {};
  if (Status status = checkKey(row, key); !status.ok()) return status;
  const MsSetup& setup = setups_->setups()[static_cast<std::size_t>(key.description)];
  if (!setup.refusal.ok()) return {};
  const auto output = outputs_.find({key.field, setup.shape});
  if (output == outputs_.end()) return {};
  bool present = false;
  Status status = file_.readData(row, setup.channels, static_cast<std::uint32_t>(setup.correlations.size()),
                                 rows_->data(), present);
  if (!status.ok()) return status;
  if (!present) {
    rows_->countEmpty();
    return {};
  }
  const UvxRecord record = rows_->record(key, place, setup.selection);
  return output->second.add(record, rows_->visibilities(setup));
}

void MsImport::describe() {
  std::string others;
  for (const std::string& column : file_.columns())
    if (column != file_.column()) others += (others.empty() ? "" : ", ") + column;
  report_.notes.insert(report_.notes.begin(),
                       "the visibilities are those of column " + file_.column() +
                           (others.empty() ? std::string() : " (the set also has " + others + ")"));
  if (report_.autocorrelations != 0)
    report_.notes.push_back(toStr(static_cast<std::int64_t>(report_.autocorrelations)) +
                            " autocorrelations were left out");
  if (const std::string& scale = file_.timeScale(); !scale.empty() && scale != "UTC")
    report_.warnings.push_back("the times are " + scale +
                               ", not UTC; they are taken as they stand (imaging does not need them)");
  rows_->describe(report_);
}

Status MsImport::finish() {
  std::erase_if(outputs_, [](const auto& output) { return output.second.records() == 0; });
  if (outputs_.empty()) return {StatusCode::kNoData, "no row has a visibility in column " + file_.column()};
  describe();
  for (auto& [key, output] : outputs_) {
    for (const std::string& line : report_.warnings) output.addHistory(line);
    for (const std::string& line : report_.notes) output.addHistory(line);
    ImportedFile description;
    if (Status status = output.finish(description); !status.ok()) return status;
    report_.files.push_back(std::move(description));
  }
  return {};
}

}  // namespace

Status importMeasurementSet(const std::string& input, const ImportOptions& options,
                            const RunIndicators& indicators, ImportReport& report) {
  try {
    return MsImport(input, options, indicators, report).run();
  } catch (const std::bad_alloc&) {
    return {StatusCode::kOutOfMemory, "there is not enough memory to import it", input};
  } catch (const std::exception& error) {
    return {StatusCode::kReadFailed, std::string("cannot be imported: ") + error.what(), input};
  }
}

}  // namespace lumo
