// SPDX-License-Identifier: GPL-3.0-or-later
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QEventLoop>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPicture>
#include <cmath>
#include <numbers>

#include "analysis/ResultsPresenter.h"
#include "analysis/ui/ATrackerArrayInAxis.h"
#include "analysis/ui/AreaOverlay.h"
#include "analysis/ui/MapPicture.h"
#include "gui/AreaDialogFixture.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

/// A double source with a bridge on noise of neighbouring pixels that belong together, as a restored map has.
AMatrix<float> radioGalaxy(std::uint32_t rows, std::uint32_t columns) {
  AMatrix<float> map(rows, columns);
  std::uint32_t state = 12345;
  const auto noise = [&state] {
    state = state * 1664525U + 1013904223U;
    return static_cast<double>(state >> 8U) / 16777216.0 - 0.5;
  };
  struct Wave {
    double kx, ky, phase;
  };
  std::vector<Wave> waves(60);
  for (Wave& wave : waves) wave = {noise(), noise(), 6.28 * noise()};
  struct Blob {
    double x, y, sx, sy, turn, peak;
  };
  const Blob blobs[] = {{-34, 14, 9, 6, 0.5, 0.9},   {30, -12, 10, 7, 0.4, 0.7},
                        {0, 0, 2.6, 2.6, 0, 0.5},    {-16, 7, 14, 4, -0.4, 0.16},
                        {15, -7, 14, 4, -0.4, 0.14}, {52, 40, 2.6, 2.6, 0, 0.12}};
  for (std::uint32_t row = 0; row < rows; ++row) {
    for (std::uint32_t column = 0; column < columns; ++column) {
      const double x = column - columns / 2.0;
      const double y = row - rows / 2.0;
      double value = 0.0;
      for (const Wave& wave : waves) value += 0.0016 * std::cos(wave.kx * x + wave.ky * y + wave.phase);
      for (const Blob& blob : blobs) {
        const double u = ((x - blob.x) * std::cos(blob.turn) + (y - blob.y) * std::sin(blob.turn)) / blob.sx;
        const double v = ((y - blob.y) * std::cos(blob.turn) - (x - blob.x) * std::sin(blob.turn)) / blob.sy;
        value += blob.peak * std::exp(-0.5 * (u * u + v * v));
      }
      map(row, column) = static_cast<float>(value);
    }
  }
  return map;
}

class AreaDialogTest : public test::AreaDialogFixture {
 protected:
  /// The text of the message that `action` brings up.
  static QString messageOf(const std::function<void()>& action) {
    QString text;
    test::GuiScript script;
    script.step([&text] {
      auto* const box = test::modalWindow<QMessageBox>();
      if (box == nullptr) return false;
      text = box->text();
      box->accept();
      return true;
    });
    action();
    return text;
  }
  /// Waits for the line about the first area, which follows the mouse with a little delay.
  void waitForAreaLine() const {
    test::GuiScript script;
    script.step([this] { return dialog_->areaText().startsWith("Area 1: "); });
    QEventLoop loop;
    script.then([&loop] { loop.quit(); });
    loop.exec();
  }
};

TEST_F(AreaDialogTest, TitleTextsAndPresetsAreThoseOfTheTemplate) {
  AreaSettings settings;
  settings.pointCount = 33;
  settings.invertColors = 1;
  settings.xScaleMode = kLinearScale;
  open(settings);
  EXPECT_EQ(dialog_->windowTitle(), "Dialog");
  QStringList labels;
  for (const QLabel* const label : dialog_->findChildren<QLabel*>()) labels << label->text();
  for (const char* const text : {"Number of points: ", "X scale: ", "Y scale: "})
    EXPECT_TRUE(labels.contains(text)) << text;
  EXPECT_EQ(child<QLineEdit>("pointCount").text(), "33");
  for (const char* const name : {"xScale", "yScale"}) {
    const auto& scale = child<QComboBox>(name);
    ASSERT_EQ(scale.count(), 2);
    EXPECT_EQ(scale.itemText(0), "Logarifmic");
    EXPECT_EQ(scale.itemText(1), "Normal");
  }
  EXPECT_EQ(child<QComboBox>("xScale").currentIndex(), 1);
  EXPECT_EQ(child<QComboBox>("yScale").currentIndex(), 0);
  EXPECT_EQ(child<QCheckBox>("invertColors").text(), "Invert colors");
  EXPECT_TRUE(child<QCheckBox>("invertColors").isChecked());
  EXPECT_TRUE(button("OK").isDefault());
  EXPECT_TRUE(button("Cancel").isEnabled());
}

TEST_F(AreaDialogTest, TheMapIsShownOnAnAxisOfRightAscentAndDeclination) {
  open();
  const A2_3DAxis& axis = *plot().axis();
  EXPECT_EQ(axis.nameOX(), "Right ascent [%sas]");
  EXPECT_EQ(axis.nameOY(), "Declination [%sas]");
  EXPECT_EQ(axis.nameOZ(), "[%sJy/Beam]");
  EXPECT_EQ(axis.xDirection(), -1);
  EXPECT_EQ(axis.colours()->map().range(), range_);
}

TEST_F(AreaDialogTest, OkTakesTheControlsOver) {
  open();
  child<QLineEdit>("pointCount").setText(" 12 ");
  child<QComboBox>("xScale").setCurrentIndex(1);
  child<QComboBox>("yScale").setCurrentIndex(1);
  child<QCheckBox>("invertColors").setChecked(true);
  (void)confirmed();
  const AreaSettings settings = dialog_->settings();
  EXPECT_EQ(settings.pointCount, 12);
  EXPECT_EQ(settings.xScaleMode, kLinearScale);
  EXPECT_EQ(settings.yScaleMode, kLinearScale);
  EXPECT_EQ(settings.invertColors, 1);
}

TEST_F(AreaDialogTest, NumberOfPointsOutsideItsRangeIsRefused) {
  open();
  const std::string tooMany = std::to_string(ResultsPresenter::kMostPoints + 1);
  for (const std::string& text : {std::string("0"), std::string("-3"), tooMany, std::string("8.5"),
                                  std::string("many"), std::string()}) {
    child<QLineEdit>("pointCount").setText(QString::fromStdString(text));
    EXPECT_EQ(messageOf([this] { button("OK").click(); }), "Enter an integer between 1 and 100000.") << text;
    EXPECT_TRUE(dialog_->isVisible());
    EXPECT_EQ(dialog_->settings().pointCount, 8);
  }
  child<QLineEdit>("pointCount").setText(QString::number(ResultsPresenter::kMostPoints));
  (void)confirmed();
  EXPECT_EQ(dialog_->settings().pointCount, ResultsPresenter::kMostPoints);
}

TEST_F(AreaDialogTest, CancelLeavesTheSettings) {
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({10.0, 10.0}, 6.0));
  open(settings);
  choose("rectangle");
  drag({-10.0, -10.0}, {-20.0, -20.0});
  EXPECT_EQ(shapes().size(), 2U);
  child<QLineEdit>("pointCount").setText("99");
  button("Cancel").click();
  EXPECT_EQ(dialog_->result(), QDialog::Rejected);
  EXPECT_EQ(dialog_->settings().areas.shapes(), settings.areas.shapes());
  EXPECT_EQ(dialog_->settings().pointCount, 8);
}

TEST_F(AreaDialogTest, TheLineBelowTheMapTellsAboutTheSelectedArea) {
  open();
  EXPECT_EQ(dialog_->areaText(), "No area is marked: the whole map counts as one.");
  choose("rectangle");
  // Half a cell beyond the centres of 8 x 4 pixels of 1 Jy/Beam.
  drag({2.25, 1.25}, {-1.75, -0.75});
  waitForAreaLine();
  const double beam = std::numbers::pi * 2.0 * 1.5 / (4.0 * std::log(2.0)) / 0.25;
  const QString flux = QString::number(32.0 / beam, 'g', 4);
  EXPECT_EQ(dialog_->areaText(),
            "Area 1: 32 pixels, sum 32 Jy/Beam, flux density " + flux + " Jy, maximum 1 Jy/Beam");
}

TEST_F(AreaDialogTest, RegionsAreSavedAndLoadedAndCanBeUndone) {
  const test::TempFolder folder;
  const QString path = QString::fromStdString(folder.file("areas.reg"));
  AreaSettings settings;
  settings.areas.add(AreaShape::ellipse({5.0, -4.0}, 8.0, 3.0, 30.0));
  open(settings);
  const auto chooseFile = [&path] {
    auto* const dialog = test::modalWindow<QFileDialog>();
    if (dialog == nullptr) return false;
    dialog->selectFile(path);
    dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
    QMetaObject::invokeMethod(dialog, "accept");
    return true;
  };
  {
    test::GuiScript script;
    script.step(chooseFile);
    child<QPushButton>("saveRegions").menu()->actions().at(1)->trigger();
  }
  EXPECT_NE(test::readFile(folder.file("areas.reg")).find("\nimage\nellipse("), std::string::npos);
  {
    test::GuiScript script;
    script.step(chooseFile);
    child<QPushButton>("loadRegions").click();
  }
  ASSERT_EQ(shapes().size(), 2U);
  EXPECT_NEAR(shapes()[1].centre.x, 5.0, test::kPlaceRounding);
  EXPECT_NEAR(shapes()[1].centre.y, -4.0, test::kPlaceRounding);
  EXPECT_NEAR(shapes()[1].rotation, 30.0, test::kPlaceRounding);
  test::key(plot(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(shapes(), settings.areas.shapes());
}

TEST_F(AreaDialogTest, ADamagedRegionFileIsToldWithItsLineAndLeavesTheAreas) {
  const test::TempFolder folder;
  const QString path = QString::fromStdString(folder.file("broken.reg"));
  test::writeFile(folder.file("broken.reg"), "image\ncircle(1,1)\n");
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({0.0, 0.0}, 3.0));
  open(settings);
  QString message;
  test::GuiScript script;
  script
      .step([&path] {
        auto* const dialog = test::modalWindow<QFileDialog>();
        if (dialog == nullptr) return false;
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
        return true;
      })
      .step([&message] {
        auto* const box = test::modalWindow<QMessageBox>();
        if (box == nullptr) return false;
        message = box->text();
        box->accept();
        return true;
      });
  child<QPushButton>("loadRegions").click();
  EXPECT_TRUE(message.contains("broken.reg")) << message.toStdString();
  EXPECT_TRUE(message.contains("line 2: a circle of 2 values")) << message.toStdString();
  EXPECT_EQ(shapes(), settings.areas.shapes());
}

TEST_F(AreaDialogTest, WithoutAPositionOnTheSkyOnlyPixelsCanBeSaved) {
  header_.rightAscension = std::nan("");
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({0.0, 0.0}, 3.0));
  open(settings);
  const QList<QAction*> actions = child<QPushButton>("saveRegions").menu()->actions();
  EXPECT_FALSE(actions.at(0)->isEnabled());
  EXPECT_TRUE(actions.at(1)->isEnabled());
}

TEST_F(AreaDialogTest, RegionFilesWaitUntilTheMapIsKnown) {
  AAreaSelectDlg dialog;
  auto* const trackers = new ATrackerArrayInAxis(AreaList({AreaShape::circle({0.0, 0.0}, 3.0)}), &dialog);
  dialog.SetParameters(makeMapAxis(map_, header_, range_), trackers, 1);
  const auto isEnabled = [&dialog](const char* name) {
    return dialog.findChild<QPushButton*>(name)->isEnabled();
  };
  trackers->setTool(AreaTool::kCircle);  // says that something has changed
  EXPECT_FALSE(isEnabled("loadRegions"));
  EXPECT_FALSE(isEnabled("saveRegions"));
  dialog.setMapInfo(header_, range_);
  EXPECT_TRUE(isEnabled("loadRegions"));
  EXPECT_TRUE(isEnabled("saveRegions"));
}

TEST_F(AreaDialogTest, OutlinesFarOutsideThePanelAreClippedToIt) {
  AreaList areas({AreaShape::circle({0.0, 0.0}, 1e6), AreaShape::ellipse({1e7, 2e7}, 3e4, 1e4, 30.0),
                  AreaShape::polygon({{-1e7, 0.0}, {0.0, 1e-3}, {1e7, 0.0}})});
  AreaEditor editor(areas);
  PanelView view;
  view.setFull({-50.0, 50.0, -40.0, 40.0});
  view.setPanelSize(500.0, 400.0);
  view.zoomAbout({250.0, 200.0}, 1e3);
  for (std::size_t k = 0; k < areas.shapes().size(); ++k) {
    editor.select(k);
    QPicture picture;
    QPainter painter(&picture);
    AreaOverlay(editor, {-50.0, 50.0, -40.0, 40.0}).draw({painter, view});
    painter.end();
    // Lines, handles and labels have some ten pixels beyond the panel.
    EXPECT_TRUE(QRect(-40, -40, 580, 480).contains(picture.boundingRect()))
        << k << ": " << picture.boundingRect().width() << " x " << picture.boundingRect().height();
    EXPECT_GT(picture.boundingRect().width(), 400) << k;  // the side of the polygon
  }
}

TEST_F(AreaDialogTest, TheWindowCanBeMadeSmallAndLarge) {
  open();
  EXPECT_LE(dialog_->minimumSizeHint().width(), 900);
  EXPECT_LE(dialog_->minimumSizeHint().height(), 560);
  const int height = plot().height();
  dialog_->resize(dialog_->width() + 200, dialog_->height() + 150);
  ASSERT_FALSE(dialog_->grab().isNull());
  EXPECT_EQ(plot().height(), height + 150);
}

TEST_F(AreaDialogTest, EveryControlIsReachedWithTheTabKey) {
  open();
  QStringList reached;
  QWidget* widget = &plot();
  do {
    reached << widget->objectName();
    widget = widget->nextInFocusChain();
  } while (widget != &plot() && reached.size() < 500);
  for (const char* const name : {"tool.select", "tool.polygon", "area.undo", "loadRegions", "saveRegions",
                                 "pointCount", "xScale", "yScale", "invertColors"})
    EXPECT_TRUE(reached.contains(name)) << name;
}

TEST_F(AreaDialogTest, PictureOfTheGuide) {
  map_ = radioGalaxy(160, 200);
  range_.vMin = -0.01;
  range_.vMax = 0.85;
  AreaSettings settings;
  settings.areas.add(AreaShape::ellipse({-17.0, 7.0}, 11.0, 7.5, 28.0));
  settings.areas.add(AreaShape::polygon({{6, -11}, {18, -13}, {25, -6}, {20, 3}, {10, 3}, {4, -3}}));
  settings.areas.add(AreaShape::circle({0.0, 0.0}, 3.4));
  settings.areas.add(AreaShape::rectangle({30.0, -30.0}, 26.0, 12.0, 0.0));
  open(settings);
  choose("select");
  click(-14.0, 10.0);
  waitForAreaLine();
  EXPECT_EQ(editor().selected(), 0U);
  test::savePicture(*dialog_, "areas");
}

}  // namespace
}  // namespace lumo
