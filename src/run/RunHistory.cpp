// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/RunHistory.h"

#include <cstdint>
#include <cstdio>

#include "core/TextForm.h"
#include "core/Version.h"

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

void addParameters(Lines& lines, const RunParameters& p) {
  lines.add("ITER", p.iterations);
  lines.add("POROG", p.indexThreshold);
  lines.add("MINRANGE", p.indexMin);
  lines.add("MAXRANGE", p.indexMax);
  lines.add("ORDER", p.order);
  lines.add("GAIN", p.gain);
  lines.add("FQCENTER", p.referenceMhz);
  lines.add("PREFIX", p.prefix);
  lines.add("NONREG", p.nonNegative);
  lines.add("VARGAIN", p.variableGain);
  lines.add("FOLDER", p.folder);
}

void addImaging(Lines& lines, const ABMakeParameters& p) {
  lines.add("uvLimitU", p.uvLimitU);
  lines.add("uvLimitV", p.uvLimitV);
  lines.add("uvScaleU", p.uvScaleU);
  lines.add("uvScaleV", p.uvScaleV);
  lines.add("shiftX", p.shiftX);
  lines.add("shiftY", p.shiftY);
  lines.add("halfSizeX", p.halfSizeX);
  lines.add("halfSizeY", p.halfSizeY);
  lines.add("weightingMode", p.weightingMode);
  lines.add("uniformBoxU", p.uniformBoxU);
  lines.add("uniformBoxV", p.uniformBoxV);
  lines.add("kernelWidthU", p.kernelWidthU);
  lines.add("kernelWidthV", p.kernelWidthV);
  lines.add("kernelType", p.kernelType);
  lines.add("taperWidthU", p.taperWidthU);
  lines.add("taperWidthV", p.taperWidthV);
  lines.add("taperParam3", p.taperParam3);
  lines.add("taperParam4", p.taperParam4);
  lines.add("taperType", p.taperType);
  lines.add("useVisWeights", p.useVisWeights);
}

}  // namespace

std::vector<std::string> runHistory(const RunParameters& parameters, const ABMakeParameters& imaging,
                                    const VisibilityInputs& inputs,
                                    const std::vector<InputFileFacts>& facts) {
  Lines lines;
  lines.add("PROGRAM", programVersion());
  addParameters(lines, parameters);
  addImaging(lines, imaging);
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
