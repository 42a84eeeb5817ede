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

Json preFlightJson(const PreFlight& found, std::int32_t order) {
  Json files = Json::array();
  for (const PreFlightFile& file : found.files)
    files.push_back({{"file", file.name},
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
          {"warnings", preFlightWarnings(found, order)}};
}

}  // namespace

void printPreFlight(const PreFlight& preFlight, std::int32_t order) {
  for (const std::string& line : preFlightLines(preFlight)) std::fprintf(stderr, "%s\n", line.c_str());
  for (const std::string& warning : preFlightWarnings(preFlight, order)) complain("warning: " + warning);
}

void printRun(const RunReport& report) {
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
  if (report.iterations == 0 && report.products.empty()) return;
  std::printf("%s after %d iterations, total flux %s\n", report.stopped ? "CLEAN stopped" : "CLEAN done",
              report.iterations, nValToStr(report.totalFlux, 6).c_str());
  for (const auto& [name, seconds] : report.phases) std::printf("  %-10s %8.3f s\n", name.c_str(), seconds);
}

Json runJson(const RunReport& report, const RunSettings& settings) {
  Json products = Json::array();
  for (const RunProduct& product : report.products)
    products.push_back(
        {{"name", product.name}, {"path", product.path}, {"written", product.written}, {"why", product.why}});
  Json phases = Json::object();
  for (const auto& [name, seconds] : report.phases) phases[name] = seconds;
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
              {"phases", phases}};
  if (!report.status.ok()) object["error"] = failureJson(report.status);
  return object;
}

}  // namespace lumo
