// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QToolTip>
#include <cmath>
#include <limits>
#include <utility>

#include "analysis/SpectraText.h"
#include "analysis/ui/AFQSGraph.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "support/TempFolder.h"
#include "view/LegendLine.h"

namespace lumo {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr QSize kSize(900, 640);
const QColor kYellow(0xff, 0xff, 0x00);

SpectrumCurve curveOf(std::vector<double> freqs, std::vector<double> fluxes, std::vector<double> errors) {
  SpectrumCurve curve;
  curve.setData(std::move(freqs), std::move(fluxes), std::move(errors));
  curve.refFreq = 1.5e9;
  curve.refIntensity = 0.25;
  curve.specIndex = -0.75;
  return curve;
}

SpectrumGraph graphOf(std::vector<SpectrumCurve> curves, int xScaleMode = kLogarithmicScale,
                      int yScaleMode = kLogarithmicScale) {
  SpectrumGraph graph;
  graph.xScaleMode = xScaleMode;
  graph.yScaleMode = yScaleMode;
  graph.xTitle = scaledTitle("Frequency [%sHz]", xScaleMode);
  graph.yTitle = scaledTitle("Flux Density [%sJy]", yScaleMode);
  graph.curves = std::move(curves);
  return graph;
}

/// A steep spectrum of eight points about `flux` at 1.5 GHz.
SpectrumCurve steep(double flux, double index, double error) {
  std::vector<double> freqs;
  std::vector<double> fluxes;
  for (int i = 0; i < 8; ++i) {
    freqs.push_back(1.1e9 + 1.5e8 * i);
    fluxes.push_back(flux * std::pow(freqs.back() / 1.5e9, index));
  }
  SpectrumCurve curve = curveOf(freqs, fluxes, std::vector<double>(8, error));
  curve.refIntensity = flux;
  curve.specIndex = index;
  return curve;
}

class SpectrumGraphTest : public testing::Test {
 protected:
  AResizeMultiAxisDlg& open(SpectrumGraph graph) {
    dialog_ = std::make_unique<AResizeMultiAxisDlg>(std::move(graph));
    dialog_->resize(kSize);
    (void)picture();
    return *dialog_;
  }
  QImage picture() {
    dialog_->show();
    QApplication::processEvents();
    return dialog_->graphWindow().grab().toImage().convertToFormat(QImage::Format_RGB32);
  }
  /// Where a value lies in the picture.
  QPointF at(double freq, double flux) {
    (void)picture();  // lays the plot out anew where something has changed
    const AMultiAxisDlgWnd& window = dialog_->graphWindow();
    const AMSD2DAxisMulti& frame = *window.frame();
    return QPointF(window.panelRect().topLeft()) +
           QPointF(frame.RPXtoGPX(freq, window.view()), frame.RPYtoGPY(flux, window.view()));
  }
  QColor colourAt(const QPointF& place) { return picture().pixelColor(place.toPoint()); }
  double h() { return dialog_->graphWindow().frame()->fontHeight(); }
  /// Whether a pixel of this colour, or nearly, is within two pixels.
  bool isNear(const QPointF& place, const QColor& colour) {
    const QImage image = picture();
    for (int dy = -2; dy <= 2; ++dy) {
      for (int dx = -2; dx <= 2; ++dx) {
        const QColor one = image.pixelColor(place.toPoint() + QPoint(dx, dy));
        const int away = std::abs(one.red() - colour.red()) + std::abs(one.green() - colour.green()) +
                         std::abs(one.blue() - colour.blue());
        if (away < 60) return true;
      }
    }
    return false;
  }
  QPushButton* button(const QString& text) {
    for (QPushButton* const button : dialog_->findChildren<QPushButton*>())
      if (button->text().remove('&') == text) return button;
    throw std::runtime_error("no button " + text.toStdString());
  }
  template <typename Control>
  Control& get(const char* name) {
    auto* const control = dialog_->findChild<Control*>(name);
    if (control == nullptr) throw std::runtime_error(std::string("no control ") + name);
    return *control;
  }
  QColor slot(AMSD2DAxisMulti::Slot slot) { return dialog_->graphWindow().frame()->colour(slot); }
  /// Presses the button and answers its file dialog with a name.
  void saveAs(const QString& buttonText, const std::string& path) {
    test::GuiScript script;
    script.step([] { return test::modalWindow<QFileDialog>() != nullptr; }).then([&path] {
      auto* const files = test::modalWindow<QFileDialog>();
      files->findChild<QLineEdit*>()->setText(QString::fromStdString(path));
      static_cast<QDialog*>(files)->accept();
    });
    button(buttonText)->click();
  }

  std::unique_ptr<AResizeMultiAxisDlg> dialog_;
};

TEST_F(SpectrumGraphTest, TwoAreasGiveTwoCurvesEachWithItsOwnLegendLine) {
  open(graphOf({steep(0.25, -0.75, 0.01), steep(2.0, 0.5, 0.01)}));
  ASSERT_EQ(dialog_->curves().size(), 2U);
  ASSERT_EQ(dialog_->curves()[0]->legend().size(), 1U);
  EXPECT_EQ(dialog_->curves()[0]->legend()[0],
            "Reference freq: 1500[MHz], Reference intensity: 0.25, Spectral index: -0.75 ");
  EXPECT_EQ(dialog_->curves()[1]->legend()[0],
            "Reference freq: 1500[MHz], Reference intensity: 2, Spectral index: 0.5 ");
}

TEST_F(SpectrumGraphTest, ItOpensWideEnoughForLegendsOfAllDigits) {
  const AResizeMultiAxisDlg dialog(graphOf({steep(0.49038282028092529, -0.75123456789012345, 0.01)}));
  AMultiAxisDlgWnd& window = dialog.graphWindow();
  const QString legend = dialog.curves()[0]->legend()[0];
  EXPECT_GT(legend.size(), 80);
  dialog.layout()->activate();
  EXPECT_GE(window.width(), legendLineWidth(window.font(), window.frame()->fontHeight(), legend));
}

TEST_F(SpectrumGraphTest, LegendsStandBelowEachOtherInTheColoursOfTheirCurves) {
  open(graphOf({steep(0.25, -0.75, 0.01), steep(2.0, 0.5, 0.01)}));
  const QImage image = picture();
  const AMSD2DAxisMulti& frame = *dialog_->graphWindow().frame();
  std::array<int, 2> top{-1, -1};
  for (int y = 0; y < dialog_->graphWindow().panelRect().top(); ++y)
    for (int x = 0; x < image.width(); ++x)
      for (int number : {1, 2})
        if (image.pixelColor(x, y) == frame.curveColour(number) && top[number - 1] < 0) top[number - 1] = y;
  ASSERT_GE(top[0], 0);
  ASSERT_GE(top[1], 0);
  EXPECT_NEAR(top[1] - top[0], frame.legendPitch(), 1.5);  // whole pixels
}

TEST_F(SpectrumGraphTest, ATipAboveThePlotTellsTheWholeLegendOfANarrowWindow) {
  open(graphOf({steep(0.25, -0.75, 0.01), steep(2.0, 0.5, 0.01)})).resize(420, 420);
  (void)picture();
  AMultiAxisDlgWnd& window = dialog_->graphWindow();
  const auto pointTo = [&](const QPoint& place) {
    QToolTip::hideText();
    QHelpEvent event(QEvent::ToolTip, window.mapTo(dialog_.get(), place), window.mapToGlobal(place));
    QApplication::sendEvent(dialog_.get(), &event);
    return QToolTip::text().toStdString();
  };
  EXPECT_EQ(pointTo({window.width() / 2, 4}),
            "Reference freq: 1500[MHz], Reference intensity: 0.25, Spectral index: -0.75\n"
            "Reference freq: 1500[MHz], Reference intensity: 2, Spectral index: 0.5");
}

TEST_F(SpectrumGraphTest, EveryPointIsACircleFilledWithYellow) {
  open(graphOf({steep(0.25, -0.75, 0.01)}));
  const SpectrumCurve& curve = dialog_->curves()[0]->curve();
  for (std::size_t i = 0; i < curve.count(); ++i)
    EXPECT_EQ(colourAt(at(curve.freqs()[i], curve.fluxes()[i])), kYellow) << i;
}

TEST_F(SpectrumGraphTest, CirclesHaveARadiusOfAQuarterOfTheFont) {
  // A single point far from everything, so that there is no line to either side.
  open(graphOf({curveOf({1.5e9}, {0.5}, {0.0})}));
  const QImage image = picture();
  int yellow = 0;
  const QRect panel = dialog_->graphWindow().panelRect();
  for (int y = panel.top(); y <= panel.bottom(); ++y)
    for (int x = panel.left(); x <= panel.right(); ++x) yellow += image.pixelColor(x, y) == kYellow ? 1 : 0;
  // The outline of one pixel takes half a pixel of the radius; smoothed edges take a little more.
  const double area = std::acos(-1.0) * std::pow(h() / 4.0 - 0.5, 2);
  EXPECT_NEAR(yellow, area, 0.7 * area);
  EXPECT_GT(yellow, 3);
}

TEST_F(SpectrumGraphTest, LineRunsBetweenThePointsInTheCurvesColour) {
  open(graphOf({steep(0.25, -0.75, 0.001)}));
  const double freq = 1.175e9;  // half way between two points
  const QPointF middle = at(freq, 0.25 * std::pow(freq / 1.5e9, -0.75));
  EXPECT_EQ(colourAt(middle), slot(AMSD2DAxisMulti::Slot::kCurve));
}

TEST_F(SpectrumGraphTest, ErrorBarsEndInTicks) {
  open(graphOf({curveOf({1e9, 2e9}, {1.0, 1.0}, {0.5, 0.5})}, kLinearScale, kLinearScale));
  const QColor bar = slot(AMSD2DAxisMulti::Slot::kErrorBar);
  for (const double flux : {1.5, 0.5}) {
    EXPECT_TRUE(isNear(at(1e9, flux), bar));
    EXPECT_TRUE(isNear(at(1e9, flux) + QPointF(h() / 4.0 - 1.0, 0.0), bar));
    EXPECT_FALSE(isNear(at(1e9, flux) + QPointF(h() / 4.0 + 5.0, 0.0), bar));
  }
  EXPECT_TRUE(isNear(at(1e9, 1.25), bar));
}

TEST_F(SpectrumGraphTest, PointWhoseErrorReachesZeroIsACircleWithoutABar) {
  open(graphOf({curveOf({1e9, 2e9, 3e9}, {1.0, 1.0, 1.0}, {0.5, 1.0, 2.0})}, kLinearScale, kLinearScale));
  const QColor bar = slot(AMSD2DAxisMulti::Slot::kErrorBar);
  EXPECT_TRUE(isNear(at(1e9, 1.25), bar));
  for (const double freq : {2e9, 3e9}) {
    EXPECT_EQ(colourAt(at(freq, 1.0)), kYellow);
    EXPECT_FALSE(isNear(at(freq, 1.25), bar));
    EXPECT_FALSE(isNear(at(freq, 0.75), bar));
  }
}

TEST_F(SpectrumGraphTest, ScalesAreSwitchedWhileTheGraphIsShown) {
  open(graphOf({steep(0.25, -0.75, 0.01)}));
  const QPointF before = at(1.3e9, 0.25);
  get<QCheckBox>("logarithmicX").click();
  EXPECT_EQ(dialog_->graph().xScaleMode, kLinearScale);
  EXPECT_EQ(dialog_->graph().xTitle, "Frequency [%sHz]");
  EXPECT_EQ(dialog_->graph().yTitle, "Flux Density [%sJy] (log scale)");
  EXPECT_EQ(dialog_->graphWindow().frame()->nameOX(), "Frequency [%sHz]");
  (void)picture();
  EXPECT_NE(at(1.3e9, 0.25).x(), before.x());
  // 1.1 to 2.15 GHz and 5 % at either end.
  EXPECT_NEAR(dialog_->graphWindow().view().visible().xMin, 1.1e9 - 0.05 * 1.05e9, 1.0);
  EXPECT_EQ(colourAt(at(1.4e9, 0.25 * std::pow(1.4 / 1.5, -0.75))), kYellow);
  get<QCheckBox>("logarithmicY").click();
  get<QCheckBox>("logarithmicX").click();
  EXPECT_EQ(dialog_->graph().xTitle, "Frequency [%sHz] (log scale)");
  EXPECT_EQ(dialog_->graph().yTitle, "Flux Density [%sJy]");
}

TEST_F(SpectrumGraphTest, InversionSwapsTheBackground) {
  SpectrumGraph graph = graphOf({steep(0.25, -0.75, 0.01)});
  graph.invertColors = 1;
  open(graph);
  EXPECT_TRUE(get<QCheckBox>("inverted").isChecked());
  EXPECT_EQ(picture().pixelColor(3, 3), QColor(Qt::black));
  get<QCheckBox>("inverted").click();
  EXPECT_EQ(picture().pixelColor(3, 3), QColor(Qt::white));
  EXPECT_EQ(dialog_->graph().invertColors, 0);
}

TEST_F(SpectrumGraphTest, ZoomButtonsComeCloserAndShowEverything) {
  open(graphOf({steep(0.25, -0.75, 0.01)}));
  const PlotRect everything = dialog_->graphWindow().view().visible();
  button("Zoom in")->click();
  EXPECT_LT(dialog_->graphWindow().view().visible().width(), everything.width());
  button("Show everything")->click();
  EXPECT_EQ(dialog_->graphWindow().view().visible(), everything);
}

TEST_F(SpectrumGraphTest, ReadOutNamesThePointUnderTheCursor) {
  open(graphOf({steep(0.25, -0.75, 0.01), curveOf({1.5e9}, {0.002}, {0.0005})}));
  AMultiAxisDlgWnd& window = dialog_->graphWindow();
  const QPointF place = at(1.5e9, 0.002) - window.panelRect().topLeft();
  EXPECT_EQ(dialog_->curves()[1]->readOutAt({place.x() + 3.0, place.y() - 3.0}, window.view()),
            "Curve 2, point 1:   Frequency [MHz]: 1500   Flux Density [mJy]: 2   Error [µJy]: 500");
  EXPECT_EQ(dialog_->curves()[1]->readOutAt({place.x() + 60.0, place.y()}, window.view()), "");
}

TEST_F(SpectrumGraphTest, ValuesWithoutAPlaceOnALogarithmicAxisAreLeftOutAndTheRestIsDrawn) {
  const double inf = std::numeric_limits<double>::infinity();
  open(graphOf({curveOf({1e9, 2e9, 3e9, 4e9, 5e9}, {kNan, -1.0, 0.0, inf, 0.5}, {kNan, 0.1, 0.0, inf, 0.1}),
                steep(0.25, -0.75, 0.01), curveOf({kNan}, {1.0}, {0.1}), curveOf({}, {}, {})}));
  EXPECT_EQ(colourAt(at(5e9, 0.5)), kYellow);
  EXPECT_EQ(colourAt(at(1.1e9, 0.25 * std::pow(1.1 / 1.5, -0.75))), kYellow);
  get<QCheckBox>("logarithmicY").click();
  EXPECT_EQ(colourAt(at(2e9, -1.0)), kYellow);
  EXPECT_EQ(colourAt(at(3e9, 0.0)), kYellow);
}

TEST_F(SpectrumGraphTest, GraphWithoutAnyDrawableValueIsShown) {
  open(graphOf({curveOf({1e9, 2e9}, {kNan, -1.0}, {kNan, kNan})}));
  EXPECT_FALSE(picture().isNull());
  open(graphOf({}));
  EXPECT_FALSE(picture().isNull());
}

TEST_F(SpectrumGraphTest, SinglePointIsShownOnEitherScale) {
  open(graphOf({curveOf({1.5e9}, {0.5}, {0.1})}));
  EXPECT_EQ(colourAt(at(1.5e9, 0.5)), kYellow);
  get<QCheckBox>("logarithmicX").click();
  get<QCheckBox>("logarithmicY").click();
  EXPECT_EQ(colourAt(at(1.5e9, 0.5)), kYellow);
  EXPECT_FALSE(get<QComboBox>("fit").isEnabled());
}

TEST_F(SpectrumGraphTest, AFitIsDrawnOnlyWhenAskedForAndNamedInTheLegend) {
  // An exact parabola in log-log: ln S = ln 0.5 + 2 u^2 about 2 GHz.
  std::vector<double> freqs{1e9, 1.5e9, 2e9, 3e9, 4e9};
  std::vector<double> fluxes;
  for (const double freq : freqs) fluxes.push_back(0.5 * std::exp(2.0 * std::pow(std::log(freq / 2e9), 2)));
  open(graphOf({curveOf(freqs, fluxes, std::vector<double>(5, 0.0))}));
  auto& choice = get<QComboBox>("fit");
  EXPECT_TRUE(choice.isEnabled());
  EXPECT_EQ(choice.currentText(), "Spline");
  EXPECT_EQ(dialog_->curves()[0]->legend().size(), 1U);
  const QImage plain = picture();
  choice.setCurrentIndex(2);
  ASSERT_EQ(dialog_->curves()[0]->legend().size(), 2U);
  EXPECT_TRUE(dialog_->curves()[0]->legend()[1].contains("curvature 2 at 2000 MHz"))
      << dialog_->curves()[0]->legend()[1].toStdString();
  choice.setCurrentIndex(1);
  EXPECT_TRUE(dialog_->curves()[0]->legend()[1].startsWith("Power law: index "));
  // The law of a spectrum that is symmetric in log-log is flat; at its middle, far above the points.
  double mean = 0.0;
  for (const double flux : fluxes) mean += std::log(flux) / 5.0;
  (void)picture();
  const QColor overlay = dialog_->graphWindow().frame()->overlayColour(1);
  bool isSeen = false;
  for (double freq = 1.9e9; freq < 2.1e9; freq += 1e7)  // a broken line has gaps
    isSeen = isSeen || isNear(at(freq, std::exp(mean)), overlay);
  EXPECT_TRUE(isSeen);
  choice.setCurrentIndex(0);
  EXPECT_EQ(picture(), plain);
}

TEST_F(SpectrumGraphTest, PicturesAreSavedThroughTheFileDialog) {
  open(graphOf({steep(0.25, -0.75, 0.01)}));
  const test::TempFolder folder;
  saveAs("Save picture...", folder.file("graph.svg"));
  EXPECT_NE(test::readFile(folder.file("graph.svg")).find("<svg"), std::string::npos);
}

TEST_F(SpectrumGraphTest, NumbersAreSavedAsColumns) {
  open(graphOf({steep(0.25, -0.75, 0.01), steep(2.0, 0.5, 0.01)}));
  const test::TempFolder folder;
  saveAs("Save as text...", folder.file("graph"));
  EXPECT_EQ(test::readFile(folder.file("graph.txt")), spectrumColumns(dialog_->graph()));
  EXPECT_FALSE(dialog_->saveColumns(folder.file("no/such/folder.txt")).ok());
}

TEST_F(SpectrumGraphTest, CloseEndsTheDialog) {
  open(graphOf({steep(0.25, -0.75, 0.01)})).hide();
  test::GuiScript script;
  script.step([this] { return dialog_->isVisible(); }).then([this] { button("Close")->click(); });
  EXPECT_EQ(dialog_->exec(), QDialog::Accepted);
}

TEST_F(SpectrumGraphTest, TakesAPictureForTheGuide) {
  const auto law = [](double flux, double index, double error) {
    std::vector<double> freqs;
    std::vector<double> fluxes;
    for (int i = 0; i < 12; ++i) {
      freqs.push_back(1.2e9 + 3.2e8 * i);
      fluxes.push_back(flux * std::pow(freqs.back() / 3e9, index));
    }
    SpectrumCurve curve = curveOf(freqs, fluxes, std::vector<double>(12, error));
    curve.refFreq = 3e9;
    curve.refIntensity = flux;
    curve.specIndex = index;
    return curve;
  };
  open(graphOf({law(2.31, -0.82, 0.03), law(0.437, -0.11, 0.03), law(0.064, 0.96, 0.03)}));
  test::savePicture(*dialog_, "graph");
  EXPECT_EQ(dialog_->curves().size(), 3U);
}

}  // namespace
}  // namespace lumo
