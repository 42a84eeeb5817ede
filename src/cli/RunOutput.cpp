// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RunOutput.h"

#include <cstdio>

#include "cli/TypeNames.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

Json settingsJson(const RunSettings& settings) {
  const RunParameters& p = settings.parameters;
  const ABMakeParameters& m = settings.imaging;
  return {{"folder", p.folder},
          {"prefix", p.prefix},
          {"reference_mhz", p.referenceMhz > 0 ? finiteOrNull(p.referenceMhz) : Json(nullptr)},
          {"order", p.order},
          {"iterations", p.iterations},
          {"gain", p.gain},
          {"nonnegative", p.nonNegative},
          {"variable_gain", p.variableGain},
          {"threshold", p.indexThreshold},
          {"index_min", p.indexMin},
          {"index_max", p.indexMax},
          {"fast_clean", p.fastClean},
          {"index_error", p.indexError},
          {"half_size", {m.halfSizeX, m.halfSizeY}},
          {"uv_limit", {m.uvLimitU, m.uvLimitV}},
          {"uv_scale", {finiteOrNull(m.uvScaleU), finiteOrNull(m.uvScaleV)}},
          {"shift_arcsec", {m.shiftX, m.shiftY}},
          {"weighting", nameOf(kWeightingNames, m.weightingMode)},
          {"uniform_box", {m.uniformBoxU, m.uniformBoxV}},
          {"kernel", nameOf(kKernelNames, m.kernelType)},
          {"kernel_width", {m.kernelWidthU, m.kernelWidthV}},
          {"taper", nameOf(kTaperNames, m.taperType)},
          {"taper_width", {m.taperWidthU, m.taperWidthV}},
          {"taper_param", {m.taperParam3, m.taperParam4}},
          {"vis_weights", m.useVisWeights != 0}};
}

Json bytesOrNull(std::uint64_t bytes) {
  return bytes == MemoryRoom::kUnknown ? Json(nullptr) : Json(bytes);
}

Json memoryJson(const RunMemory& memory) {
  return {{"peak_bytes", memory.peak},
          {"before_bytes", memory.before},
          {"imaging_bytes", memory.imaging},
          {"grids_bytes", memory.grids},
          {"clean_bytes", memory.clean},
          {"certain_bytes", memory.least},
          {"limit_bytes", bytesOrNull(memory.room.most)},
          {"limit", memory.room.mostIs},
          {"free_bytes", bytesOrNull(memory.room.free)}};
}

/// Seconds by name; that of a part is behind those of what it is a part of but the whole's: "run/image/grid".
void addSeconds(const PhaseTime& phase, const std::string& before, Json& seconds) {
  for (const PhaseTime& part : phase.parts) {
    seconds[before + part.name] = part.seconds;
    addSeconds(part, before + part.name + "/", seconds);
  }
}

Json secondsJson(const PhaseTime& whole) {
  Json seconds{{whole.name, whole.seconds}};
  addSeconds(whole, "", seconds);
  return seconds;
}

/// `whole` is what shares are taken of, seconds.
Json phaseJson(const PhaseTime& phase, double whole) {
  Json object{
      {"name", phase.name}, {"seconds", phase.seconds}, {"share", finiteOrNull(phase.seconds / whole)}};
  if (phase.parts.empty()) return object;
  Json parts = Json::array();
  for (const PhaseTime& part : phase.parts) parts.push_back(phaseJson(part, whole));
  object["parts"] = parts;
  return object;
}

void printPhase(const PhaseTime& phase, double whole, int depth) {
  constexpr int kWidth = 16;
  std::printf("  %*s%-*s %8.3f s %5.1f %%\n", 2 * depth, "", kWidth - 2 * depth, phase.name.c_str(),
              phase.seconds, 100 * phase.seconds / whole);
  for (const PhaseTime& part : phase.parts) printPhase(part, whole, depth + 1);
}

Json preFlightJson(const PreFlight& found, std::int32_t order) {
  Json files = Json::array();
  for (const PreFlightFile& file : found.files)
    files.push_back({{"file", file.name},
                     {"source", printable(file.source.name)},
                     {"min_hz", finiteOrNull(file.minHz)},
                     {"max_hz", finiteOrNull(file.maxHz)},
                     {"records", file.records},
                     {"visibilities", file.visibilities},
                     {"usable", file.usable},
                     {"rejected_share", file.rejectedShare()},
                     {"weight_sum", finiteOrNull(file.weightSum)},
                     {"uv_min", finiteOrNull(file.uvMin)},
                     {"uv_max", finiteOrNull(file.uvMax)}});
  return {{"files", files},
          {"points", found.points},
          {"outside_share", found.outsideShare()},
          {"cell_arcsec", {finiteOrNull(found.cellX), finiteOrNull(found.cellY)}},
          {"cell_keeping_all_arcsec", {finiteOrNull(found.cellXAll), finiteOrNull(found.cellYAll)}},
          {"distinct_frequencies", found.distinctFrequencies},
          {"terms_condition", finiteOrNull(found.condition)},
          {"memory", memoryJson(found.memory)},
          {"warnings", preFlightWarnings(found, order)}};
}

}  // namespace

void printPreFlight(const PreFlight& preFlight, std::int32_t order) {
  for (const std::string& line : preFlightLines(preFlight)) std::fprintf(stderr, "%s\n", line.c_str());
  for (const std::string& warning : preFlightWarnings(preFlight, order)) complain("warning: " + warning);
}

void printRun(const RunReport& report, const PhaseTime& process) {
  std::size_t written = 0;
  for (const RunProduct& product : report.products) {
    written += product.written ? 1 : 0;
    std::printf("%s %s%s%s\n", product.written ? "wrote" : "NOT WRITTEN", product.path.c_str(),
                product.why.empty() ? "" : ": ", product.why.c_str());
  }
  if (report.status.code() == StatusCode::kCancelled) {
    if (written == 0)
      std::printf(
          "cancelled: no product was written; maps of an earlier run were removed before, if imaging "
          "began\n");
    else
      std::printf("cancelled: the %zu products above were kept, whole; the rest was not made\n", written);
    return;
  }
  if (report.products.empty()) return;
  if (report.cleaned)
    std::printf("%s after %d iterations, total flux %s\n", report.stopped ? "CLEAN stopped" : "CLEAN done",
                report.iterations, nValToStr(report.totalFlux, 6).c_str());
  else
    std::printf("no CLEAN\n");
  printPhase(process, process.seconds, 0);
}

Json runJson(const RunReport& report, const RunSettings& settings, const PhaseTime& process) {
  Json products = Json::array();
  for (const RunProduct& product : report.products)
    products.push_back(
        {{"name", product.name}, {"path", product.path}, {"written", product.written}, {"why", product.why}});
  const bool surveyed = report.survey.number > 0;
  Json object{{"products", products},
              {"settings", settingsJson(settings)},
              {"survey",
               {{"min_hz", surveyed ? finiteOrNull(report.survey.minHz) : Json(nullptr)},
                {"max_hz", surveyed ? finiteOrNull(report.survey.maxHz) : Json(nullptr)},
                {"number", report.survey.number}}},
              {"preflight", report.preFlight.files.empty()
                                ? Json(nullptr)
                                : preFlightJson(report.preFlight, settings.parameters.order)},
              {"iterations", report.iterations},
              {"stopped", report.stopped},
              {"total_flux", finiteOrNull(report.totalFlux)},
              {"phases", secondsJson(process)},
              {"timing", phaseJson(process, process.seconds)}};
  if (!report.status.ok()) object["error"] = failureJson(report.status);
  return object;
}

}  // namespace lumo
