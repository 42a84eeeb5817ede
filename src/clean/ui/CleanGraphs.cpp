// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ui/CleanGraphs.h"

#include <QHBoxLayout>
#include <memory>
#include <utility>

#include "clean/CleanCourse.h"
#include "view/ALineGraph.h"
#include "view/AMultiAxisDlgWnd.h"

namespace lumo {

namespace {

std::string axisName(const std::string& quantity, const std::string& unit) {
  return unit.empty() ? quantity : quantity + " [%s" + unit + "]";
}

std::unique_ptr<AMSD2DAxisMulti> makeFrame(AxisScale yScale, const std::string& nameY) {
  auto frame = std::make_unique<AMSD2DAxisMulti>(AxisScale::kLinear, yScale);
  frame->setNameOX("Iteration");
  frame->setNameOY(nameY);
  return frame;
}

ALineGraph& addLine(AMSD2DAxisMulti& frame, int number, const std::string& name) {
  return frame.addGraph(std::make_unique<ALineGraph>(frame, number, name));
}

/// What the curve is and where it has come to.
void showLine(ALineGraph& graph, const std::vector<double>& x, std::vector<double> y,
              const std::string& legend) {
  graph.setLegend(QString::fromStdString(y.empty() ? legend : namedValue(legend, y.back())));
  graph.setData(x, std::move(y));
}

constexpr int kHeightInLines = 17;  // preferred, so that it follows the font

}  // namespace

CleanGraphs::CleanGraphs(const std::string& mapUnit, QWidget* parent)
    : QWidget(parent),
      mapUnit_(mapUnit),
      fluxWindow_(new AMultiAxisDlgWnd(this)),
      residualWindow_(new AMultiAxisDlgWnd(this)) {
  // A component of 1 Jy is a peak of 1 Jy/beam.
  const std::string fluxUnit = mapUnit.substr(0, mapUnit.find('/'));
  auto flux = makeFrame(AxisScale::kLinear, axisName("Total flux", fluxUnit));
  auto residual = makeFrame(AxisScale::kLogarithmic, axisName("Residual", mapUnit));
  flux_ = &addLine(*flux, 1, "Total flux");
  residual_ = &addLine(*residual, 1, "Term 0");
  joint_ = &addLine(*residual, 2, "All terms");
  fluxWindow_->setObjectName("fluxGraph");
  fluxWindow_->setAccessibleName(tr("Graph of the total flux over the iterations"));
  fluxWindow_->SetAxis(std::move(flux));
  residualWindow_->setObjectName("residualGraph");
  residualWindow_->setAccessibleName(tr("Graph of the residual over the iterations"));
  residualWindow_->SetAxis(std::move(residual));

  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(fluxWindow_, 1);
  row->addWidget(residualWindow_, 1);
  showRecord({});
}

QSize CleanGraphs::sizeHint() const {
  const int height = kHeightInLines * fontMetrics().lineSpacing();
  return {3 * height, height};
}

void CleanGraphs::showRecord(const std::vector<CleanProgress>& lines) {
  CleanCourse course(lines);
  showLine(*flux_, course.iteration, std::move(course.totalFlux), fluxWindow_->frame()->nameOY());
  showLine(*residual_, course.iteration, std::move(course.residual),
           axisName("Residual of term 0 at the peak", mapUnit_));
  showLine(*joint_, course.iteration, std::move(course.jointResidual),
           axisName("Residual of all terms, from the score", mapUnit_));
  fluxWindow_->followCurves();
  residualWindow_->followCurves();
}

}  // namespace lumo
