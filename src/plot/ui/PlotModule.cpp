// SPDX-License-Identifier: GPL-3.0-or-later
// The drawing module of the headless program: the windows' own drawing code behind one C function.
#include "plot/PlotModule.h"

#include <QApplication>
#include <QLocale>
#include <clocale>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "analysis/RegionFile.h"
#include "analysis/ui/MapPicture.h"
#include "analysis/ui/SpectrumPicture.h"
#include "imaging/ui/UvPlanePicture.h"
#include "io/MapProduct.h"
#include "run/UvPlaneSelection.h"
#include "run/UvxFileList.h"

namespace lumo {

namespace {

// Qt wants one application object and arguments that outlive it. A batch machine has no display, and a
// picture must not depend on one that is there.
void startApplication() {
  static int argumentCount = 1;
  static char name[] = "lumo-cli";
  static char* arguments[] = {name, nullptr};
  if (QCoreApplication::instance() != nullptr) return;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // What the window library misses on a machine without a desktop is no news to the user of a command.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  static const QApplication application(argumentCount, arguments);
  std::setlocale(LC_NUMERIC, "C");
  QLocale::setDefault(QLocale::c());
}

Status plotMap(const LumoPlotRequest& request) {
  LoadedMap map;
  if (Status status = readMap(request.files[0], map); !status.ok()) return status;
  std::vector<AreaShape> shapes;
  const std::string regions = request.regions;
  if (!regions.empty()) {
    const RegionFrame frame(map.header, map.range, map.matrix->rows(), map.matrix->columns());
    if (Status status = readRegions(regions, frame, shapes); !status.ok()) return status;
  }
  return drawMap(map, AreaList(std::move(shapes)), request.out);
}

Status plotSpectrum(const LumoPlotRequest& request) {
  SpectrumGraph graph;
  graph.xTitle = request.xTitle;
  graph.yTitle = request.yTitle;
  graph.xScaleMode = request.xScaleMode;
  graph.yScaleMode = request.yScaleMode;
  graph.invertColors = request.invertColors;
  for (size_t k = 0; k < request.curveCount; ++k) {
    const LumoPlotCurve& given = request.curves[k];
    SpectrumCurve curve;
    curve.setData({given.freqs, given.freqs + given.count}, {given.fluxes, given.fluxes + given.count},
                  {given.errors, given.errors + given.count});
    curve.refFreq = given.refFreq;
    curve.refIntensity = given.refIntensity;
    curve.specIndex = given.specIndex;
    graph.curves.push_back(std::move(curve));
  }
  return drawSpectrum(std::move(graph), request.out);
}

Status plotCoverage(const LumoPlotRequest& request) {
  UvxFileList list;
  const std::vector<std::string> paths(request.files, request.files + request.fileCount);
  if (const std::vector<Status> failures = list.AddFiles(paths); !failures.empty()) return failures.front();
  return drawUvPlane(uvPlaneSelection(list), request.out);
}

Status plot(const LumoPlotRequest& request) {
  if (request.version != kLumoPlotVersion)
    return {StatusCode::kUnsupported, "the drawing module belongs to another version of lumo-cli"};
  startApplication();
  switch (request.kind) {
    case kLumoPlotMap:
      return plotMap(request);
    case kLumoPlotSpectrum:
      return plotSpectrum(request);
    case kLumoPlotCoverage:
      return plotCoverage(request);
    default:
      return {StatusCode::kUnsupported, "the drawing module does not know this kind of picture"};
  }
}

}  // namespace

}  // namespace lumo

extern "C" __attribute__((visibility("default"))) int lumoPlot(const LumoPlotRequest* request,
                                                               LumoPlotAnswer* answer) {
  lumo::Status status;
  try {
    status = lumo::plot(*request);
  } catch (const std::exception& error) {
    status = {lumo::StatusCode::kOutOfMemory, error.what()};
  }
  std::snprintf(answer->message, sizeof answer->message, "%s", status.message().c_str());
  std::snprintf(answer->file, sizeof answer->file, "%s", status.file().c_str());
  return status.ok() ? 0 : 1;
}
