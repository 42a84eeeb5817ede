// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunRecall.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "core/ABitArray.h"
#include "core/TextForm.h"
#include "run/RunHistoryLines.h"

namespace lumo {

namespace {

/// The lines of a history by name, with the first thing that was wrong with them.
class Record {
 public:
  explicit Record(const std::vector<std::string>& history) {
    for (const std::string& line : history) {
      const std::size_t sign = line.find(" = ");
      // A value that was empty lost the blank behind its sign.
      const bool empty = sign == std::string::npos && line.ends_with(" =");
      if (sign == std::string::npos && !empty) continue;
      const std::string name = line.substr(0, empty ? line.size() - 2 : sign);
      ++counts_[name];
      values_[name] = empty ? "" : line.substr(sign + 3);
    }
  }

  void take(const std::string& name, std::string& value) {
    const auto found = values_.find(name);
    if (found == values_.end()) return fail("the history of the map has no line " + name);
    if (counts_[name] > 1) return fail("the history of the map has more than one line " + name);
    // Names of files would end there for the system.
    if (found->second.find('\0') != std::string::npos) return failValue(name, found->second, "a text");
    value = found->second;
  }
  void take(const std::string& name, double& value) {
    std::string text;
    take(name, text);
    if (status_.ok() && !parseDouble(text, value)) failValue(name, text, "a number");
  }
  void take(const std::string& name, std::int64_t& value, std::int64_t lowest, std::int64_t highest) {
    std::string text;
    take(name, text);
    if (!status_.ok()) return;
    if (!parseInt(text, value) || value < lowest || value > highest)
      failValue(name, text, "an integer between " + toStr(lowest) + " and " + toStr(highest));
  }
  void take(const std::string& name, std::int32_t& value) {
    std::int64_t wide = 0;
    take(name, wide, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
    value = static_cast<std::int32_t>(wide);
  }
  void take(const std::string& name, bool& value) {
    std::int64_t wide = 0;
    take(name, wide, 0, 1);
    value = wide != 0;
  }
  [[nodiscard]] bool has(const std::string& name) const { return values_.contains(name); }
  void takeCrc(const std::string& name, std::uint32_t& value) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    take(name, text);
    if (!status_.ok()) return;
    if (text.size() != 8 || text.find_first_not_of(kDigits) != std::string::npos)
      return failValue(name, text, "eight hexadecimal digits");
    value = 0;
    for (const char digit : text) value = value * 16 + static_cast<std::uint32_t>(kDigits.find(digit));
  }

  [[nodiscard]] const Status& status() const { return status_; }

 private:
  void fail(std::string message) {
    if (status_.ok()) status_ = {StatusCode::kBadFormat, std::move(message)};
  }
  void failValue(const std::string& name, const std::string& found, const std::string& expected) {
    fail("the history of the map says " + name + " = " + printable(found) + " where " + expected +
         " was expected");
  }

  std::map<std::string, std::string> values_;
  std::map<std::string, int> counts_;
  Status status_;
};

/// Sets the bits of "0-3,7" in a mask of `rows` bits; false when the text says anything else.
bool parseRows(const std::string& text, std::int32_t rows, ABitArray& mask) {
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::string part = text.substr(start, comma - start);
    const std::size_t dash = part.find('-');
    std::int64_t first = 0, last = 0;
    if (!parseInt(part.substr(0, dash), first)) return false;
    if (!parseInt(dash == std::string::npos ? part : part.substr(dash + 1), last)) return false;
    if (first < 0 || last < first || last >= rows) return false;
    for (auto row = static_cast<std::int32_t>(first); row <= last; ++row) mask(row, 1);
    start = comma + 1;
  }
  return true;
}

}  // namespace

Status recallRun(const std::vector<std::string>& history, RecalledRun& run) {
  Record record(history);
  const auto take = [&record](const char* name, auto& value) { record.take(name, value); };
  forEachRunLine(run.parameters, take);
  forEachOptionalLine(run.parameters, [&record](const char* name, bool& value) {
    value = false;
    if (record.has(name)) record.take(name, value);
  });
  forEachImagingLine(run.imaging, take);
  std::int64_t count = 0;
  record.take("NUVX", count, 1, static_cast<std::int64_t>(history.size()));
  run.inputs.clear();
  for (std::int64_t i = 0; record.status().ok() && i < count; ++i) {
    const std::string key = "UVX" + toStr(i);
    RecalledInput input;
    std::int64_t bytes = 0;
    record.take(key, input.name);
    record.take(key + ".BYTES", bytes, 0, std::numeric_limits<std::int64_t>::max());
    record.takeCrc(key + ".CRC32", input.facts.crc);
    record.take(key + ".SELECTED", input.selected);
    input.facts.bytes = static_cast<std::uint64_t>(bytes);
    run.inputs.push_back(std::move(input));
  }
  return record.status();
}

Status recallSelections(const RecalledRun& run, UvxFileList& files) {
  AObjArray<ABitArray> masks(static_cast<std::int32_t>(run.inputs.size()));
  for (std::int32_t i = 0; i < masks.count(); ++i) {
    const RecalledInput& input = run.inputs[static_cast<std::size_t>(i)];
    const std::int32_t rows = files.inputs().tables[i].GetFreqSels();
    ABitArray mask(rows);
    if (input.selected == "all") {
      mask = 1;
    } else if (input.selected != "none" && !parseRows(input.selected, rows, mask)) {
      return {StatusCode::kBadFormat,
              "the run used rows " + printable(input.selected) + " of its frequency table, which has " +
                  toStr(rows),
              files.inputs().names[i]};
    }
    masks[i] = mask;
  }
  files.replaceSelections(std::move(masks));
  return {};
}

Status compareInputs(const RecalledRun& run, const std::vector<std::string>& names,
                     const std::vector<InputFileFacts>& facts) {
  std::string changed;
  for (std::size_t i = 0; i < run.inputs.size(); ++i) {
    const InputFileFacts& then = run.inputs[i].facts;
    if (facts[i].bytes == then.bytes && facts[i].crc == then.crc) continue;
    if (!changed.empty()) changed += "; ";
    changed += names[i];
    changed += facts[i].bytes == then.bytes
                   ? " (same size, other content)"
                   : " (" + toStr(static_cast<std::int64_t>(facts[i].bytes)) + " bytes, then " +
                         toStr(static_cast<std::int64_t>(then.bytes)) + ")";
  }
  if (changed.empty()) return {};
  return {StatusCode::kBadFormat, "not the inputs of the run that is to be repeated: " + changed};
}

}  // namespace lumo
