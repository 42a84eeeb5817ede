// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunHistory.h"

#include <cstdint>
#include <cstdio>

#include "core/TextForm.h"
#include "core/Version.h"
#include "run/RunHistoryLines.h"

namespace lumo {

namespace {

class Lines {
 public:
  void add(const std::string& name, const std::string& value) { lines_.push_back(name + " = " + value); }
  void add(const std::string& name, const char* value) { add(name, std::string(value)); }
  void add(const std::string& name, double value) { add(name, valToStr(value)); }
  void add(const std::string& name, std::int32_t value) { add(name, toStr(value)); }
  void add(const std::string& name, bool value) { add(name, toStr(value ? 1 : 0)); }
  [[nodiscard]] std::vector<std::string> take() { return std::move(lines_); }

 private:
  std::vector<std::string> lines_;
};

std::string hexadecimal(std::uint32_t value) {
  char text[9];
  std::snprintf(text, sizeof text, "%08x", value);
  return text;
}

std::string selectedText(const ABitArray& mask) {
  if (mask.setCount() == 0) return "none";
  if (mask.setCount() == mask.count()) return "all";
  std::string text;
  for (std::int32_t first = 0; first < mask.count(); ++first) {
    if (mask(first) == 0) continue;
    std::int32_t last = first;
    while (mask(last + 1) != 0) ++last;
    if (!text.empty()) text += ',';
    text += toStr(first);
    if (last > first) text += '-' + toStr(last);
    first = last;
  }
  return text;
}

}  // namespace

std::vector<std::string> runHistory(const RunParameters& parameters, const ABMakeParameters& imaging,
                                    const VisibilityInputs& inputs,
                                    const std::vector<InputFileFacts>& facts) {
  Lines lines;
  lines.add("PROGRAM", programVersion());
  const auto add = [&lines](const char* name, const auto& value) { lines.add(name, value); };
  forEachRunLine(parameters, add);
  forEachOptionalLine(parameters, [&lines](const char* name, bool value) {
    if (value) lines.add(name, value);
  });
  forEachImagingLine(imaging, add);
  lines.add("NUVX", inputs.count());
  for (std::int32_t i = 0; i < inputs.count(); ++i) {
    const InputFileFacts& fact = facts[static_cast<std::size_t>(i)];
    const std::string key = "UVX" + toStr(i);
    lines.add(key, inputs.names[i]);
    lines.add(key + ".BYTES", toStr(static_cast<std::int64_t>(fact.bytes)));
    lines.add(key + ".CRC32", hexadecimal(fact.crc));
    lines.add(key + ".SELECTED", selectedText(inputs.selections[i]));
  }
  return lines.take();
}

}  // namespace lumo
