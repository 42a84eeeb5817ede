// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ui/UvPlanePicture.h"

#include <QLayout>
#include <QLocale>
#include <QObject>
#include <utility>

#include "imaging/ui/AUVPGraph.h"
#include "imaging/ui/AUVPLaneWnd.h"

namespace lumo {

std::unique_ptr<A2_3DAxis> makeUvPlaneAxis(const UvPlaneData& data, std::function<void()> changed) {
  auto axis = std::make_unique<A2_3DAxis>(-1, 1);
  axis->addGraph(std::make_unique<AUVPGraph>(std::move(changed))).SetData(data);
  axis->setNameOX("U");
  axis->setNameOY("V");
  axis->setNameOZ("");
  return axis;
}

QString uvProgressText(const UvPicture& picture) {
  if (picture.complete && picture.grid != nullptr)
    return QLocale(QLocale::English).toString(qulonglong{picture.grid->crosses()}) +
           QObject::tr(" crosses in this picture");
  if (!picture.status.ok()) return QString::fromStdString(picture.status.text());
  return QObject::tr("Reading, %1 %").arg(static_cast<int>(100.0 * picture.share));
}

Status drawUvPlane(const UvPlaneData& data, const std::string& path) {
  constexpr QSize kSize(800, 800);
  AUVPLaneWnd window;
  window.SetAxis(makeUvPlaneAxis(data));
  window.resize(kSize);
  window.layout()->activate();
  Status status = window.exportPicture(path);
  if (!status.ok()) return status;
  const auto& graph = dynamic_cast<const AUVPGraph&>(*window.axis()->graphs().front());
  return graph.keptStatus();
}

}  // namespace lumo
