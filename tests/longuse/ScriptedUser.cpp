// SPDX-License-Identifier: GPL-3.0-or-later
#include "longuse/ScriptedUser.h"

#include <gmock/gmock.h>

#include <QAbstractItemModel>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QPixmapCache>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QToolButton>
#include <chrono>
#include <cstdio>
#include <functional>
#include <utility>

#include "analysis/ui/AMapSelDlg.h"
#include "analysis/ui/AMeanSigmaTblDlg.h"
#include "analysis/ui/AResizeMultiAxisDlg.h"
#include "analysis/ui/ASelAreaDlg.h"
#include "app/CAboutDlg.h"
#include "app/CLogDlg.h"
#include "clean/ui/LumoCleanDlg.h"
#include "clean/ui/LumoClnShowDlg.h"
#include "gui/GuiScript.h"
#include "imaging/ui/AMakeParDlg.h"
#include "imaging/ui/AUVPLaneWnd.h"
#include "imaging/ui/LumoUVPlaneDlg.h"
#include "io/ProductNames.h"
#include "run/ui/AFqIDTable.h"
#include "run/ui/UvxInfoDlg.h"
#include "view/APrintOut.h"
#include "view/Mouse.h"

namespace lumo::test {

namespace {

constexpr int kVisitsBetweenRestarts = 5;
/// Longer than any step takes on a busy machine under a sanitizer, or while the process is stopped for a
/// while.
constexpr std::chrono::minutes kPatience(30);

void clickButton(QWidget& window, const char* label) {
  for (QPushButton* const button : window.findChildren<QPushButton*>())
    if (button->text().remove('&') == label) return button->click();
  ADD_FAILURE() << "no button " << label;
}

/// A script that waits for windows longer than the usual one.
class UserScript : public GuiScript {
 public:
  UserScript() : GuiScript({}, kPatience) {}

  /// Waits for a modal window of this kind and does something in it.
  template <typename Window>
  UserScript& in(std::function<void(Window&)> act) {
    step([act = std::move(act)] {
      auto* const window = modalWindow<Window>();
      if (window == nullptr || !window->isVisible()) return false;
      act(*window);
      return true;
    });
    return *this;
  }
  /// Answers a dialog for file names.
  UserScript& saveAs(const std::string& path) {
    return in<QFileDialog>([path](QFileDialog& dialog) {
      dialog.selectFile(QString::fromStdString(path));
      static_cast<QDialog&>(dialog).accept();
    });
  }
  UserScript& printTo(const std::string& path) {
    return in<QPrintDialog>([path](QPrintDialog& dialog) {
      dialog.printer()->setOutputFormat(QPrinter::PdfFormat);
      dialog.printer()->setOutputFileName(QString::fromStdString(path));
      dialog.done(QDialog::Accepted);
    });
  }
};

/// Over a plot: the wheel in and out, a drag, and everything again.
void lookAround(QWidget& plot, const QRect& panel) {
  const QPointF middle = QRectF(panel).center();
  for (int notch = 0; notch < 5; ++notch) {
    wheel(plot, middle, 120);
    (void)plot.grab();
  }
  press(plot, middle);
  move(plot, middle + QPointF(15.0, -9.0), true);
  release(plot, middle + QPointF(15.0, -9.0));
  (void)plot.grab();
  wheel(plot, middle, -240);
  doubleClick(plot, middle);
  (void)plot.grab();
}

void drag(QWidget& plot, const QPointF& from, const QPointF& to) {
  press(plot, from);
  move(plot, from + (to - from) * 0.5, true);
  move(plot, to, true);
  release(plot, to);
}

/// A circle in the middle and a rectangle beside it, which is taken back, made again and deleted.
void drawAreas(ASelAreaDlg& dialog) {
  LumoAxisWnd& map = dialog.mapWindow();
  dialog.findChild<QToolButton*>("tool.circle")->click();
  (void)dialog.grab();
  const QRectF panel(map.panelRect());
  const QPointF middle = panel.center();
  drag(map, middle, middle + QPointF(0.25 * panel.height(), 0.0));
  dialog.findChild<QToolButton*>("tool.rectangle")->click();
  drag(map, panel.topLeft() + QPointF(8.0, 8.0), panel.topLeft() + QPointF(0.2 * panel.width(), 40.0));
  for (const char* const command : {"area.undo", "area.redo", "area.delete"})
    dialog.findChild<QToolButton*>(command)->click();
  lookAround(map, map.panelRect());
}

void expectFile(const std::string& path) {
  EXPECT_GT(readFile(path).size(), 0u) << path;
  std::remove(path.c_str());
}

}  // namespace

void ScriptedUser::begin() {
  open();
  files_ = simulateBands({4800, 5000, 5200});
  prompts_.folder = QString::fromStdString(work_.path());
  dialog_->findChild<QAction*>("showLog")->trigger();
}

void ScriptedUser::visit(int number) {
  if (number % kVisitsBetweenRestarts == 0) {
    close();
    open();
    dialog_->findChild<QAction*>("showLog")->trigger();
  }
  addFiles();
  lookAtFiles();
  lookAtUvPlane();
  cancelWhileImaging();
  runAndLook();
  runToTheEnd();
  drawSpectra();
  tabulateSpectra();
  selectMaps();
  readAbout();
  deleteFiles();
  expectNoComplaint();
}

void ScriptedUser::settle() {
  for (int turn = 0; turn < 3; ++turn) {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  // Pictures of controls, up to 10 MB of them; a user who pauses for a minute has them dropped as well.
  QPixmapCache::clear();
}

void ScriptedUser::addFiles() {
  add(files_);
  EXPECT_EQ(get<QListWidget>("files").count(), 3);
  // Files that are added propose their own folder.
  press("browse");
  press("center");
  EXPECT_EQ(text("reference"), "5000");
}

void ScriptedUser::lookAtFiles() {
  clickRow(get<QListWidget>("files"), 1);
  UserScript script;
  script.in<UvxInfoDlg>([](UvxInfoDlg& info) { info.reject(); });
  press("info");
  clickRow(get<AFqIDTable>("idTable"), 1);
  EXPECT_EQ(text("number"), "2");
  press("reRead");
  clickRow(get<AFqIDTable>("idTable"), 1);
  EXPECT_EQ(text("number"), "3");
}

void ScriptedUser::chooseImaging(int pixels) {
  UserScript script;
  script.in<AMakeParDlg>([pixels](AMakeParDlg& sheet) {
    for (const char* const name : {"halfSizeX", "halfSizeY"})
      sheet.findChild<QComboBox*>(name)->setCurrentText(QString::number(pixels));
    sheet.accept();
  });
  press("makePar");
}

void ScriptedUser::lookAtUvPlane() {
  const std::string pdf = work_.file("uv.pdf");
  const std::string png = work_.file("uv.png");
  UserScript script;
  script.in<LumoUVPlaneDlg>([&png](LumoUVPlaneDlg& plane) {
    lookAround(plane.plot(), plane.plot().panelRect());
    EXPECT_TRUE(plane.plot().exportPicture(png).ok());
    plane.plot().copyToClipboard();
    plane.findChild<QPushButton*>("print")->click();
  });
  script.printTo(pdf);
  script.in<LumoUVPlaneDlg>([](LumoUVPlaneDlg& plane) { plane.close(); });
  press("uvPlane");
  expectFile(pdf);
  expectFile(png);
}

void ScriptedUser::cancelWhileImaging() {
  chooseImaging(512);
  UserScript script;
  script.step([this] {
    if (!text("status").starts_with("Fast Fourier")) return false;
    press("run");
    return true;
  });
  press("run");
  EXPECT_EQ(dialog_->lastReport().status.code(), StatusCode::kCancelled);
}

void ScriptedUser::runAndLook() {
  chooseImaging(64);
  type("iterations", "1000000");
  std::int32_t seen = 0;
  UserScript script;
  script.in<LumoCleanDlg>([](LumoCleanDlg& clean) { clean.findChild<QPushButton*>("convergence")->click(); });
  for (int look = 0; look < 2; ++look) {
    script.step([this, look, &seen] {
      auto* const clean = modalWindow<LumoCleanDlg>();
      const int done = dialog_->windowTitle().split(' ')[0].toInt();
      if (clean == nullptr || done < seen + 200) return false;
      seen = done;
      if (look == 1) clean->findChild<QPushButton*>("convergence")->click();
      clean->findChild<QPushButton*>("showResult")->click();
      return true;
    });
    script.in<LumoClnShowDlg>([look](LumoClnShowDlg& view) {
      (void)view.grab();
      lookAround(view.restoredWindow(), view.restoredWindow().panelRect());
      lookAround(view.residualWindow(), view.residualWindow().panelRect());
      view.findChild<QCheckBox*>("convergence")->click();
      (void)view.grab();
      clickButton(view, look == 0 ? "Continue" : "Stop");
    });
  }
  press("run");
  EXPECT_TRUE(dialog_->lastReport().stopped);
  EXPECT_TRUE(dialog_->lastReport().status.ok()) << dialog_->lastReport().status.text();
}

void ScriptedUser::runToTheEnd() {
  type("iterations", "50");
  press("run");
  EXPECT_TRUE(dialog_->lastReport().status.ok()) << dialog_->lastReport().status.text();
  EXPECT_EQ(text("status"), "Success");
}

void ScriptedUser::drawSpectra() {
  const std::string svg = work_.file("graph.svg");
  const std::string columns = work_.file("graph.txt");
  const std::string pdf = work_.file("graph.pdf");
  UserScript script;
  script.in<ASelAreaDlg>([](ASelAreaDlg& dialog) {
    drawAreas(dialog);
    clickButton(dialog, "OK");
  });
  script.in<AResizeMultiAxisDlg>([&svg](AResizeMultiAxisDlg& graph) {
    lookAround(graph.graphWindow(), graph.graphWindow().panelRect());
    for (const char* const box : {"logarithmicX", "inverted", "inverted", "logarithmicX"})
      graph.findChild<QCheckBox*>(box)->click();
    graph.findChild<QComboBox*>("fit")->setCurrentIndex(1);
    (void)graph.grab();
    EXPECT_TRUE(graph.graphWindow().exportPicture(svg).ok());
    clickButton(graph, "Save as text...");
  });
  script.saveAs(columns);
  script.in<AResizeMultiAxisDlg>([&pdf](AResizeMultiAxisDlg& graph) {
    EXPECT_TRUE(APrintOut("Spectrum graph", graph.graphWindow()).printToPdf(pdf).ok());
    graph.close();
  });
  press("graph");
  for (const std::string& path : {svg, columns, pdf}) expectFile(path);
}

void ScriptedUser::tabulateSpectra() {
  const std::string csv = work_.file("table.csv");
  UserScript script;
  script.in<ASelAreaDlg>([](ASelAreaDlg& dialog) { clickButton(dialog, "OK"); });
  script.in<AMeanSigmaTblDlg>([&csv](AMeanSigmaTblDlg& table) {
    (void)table.grab();
    EXPECT_TRUE(table.saveCsv(csv).ok());
    table.close();
  });
  press("table");
  expectFile(csv);
}

void ScriptedUser::selectMaps() {
  prompts_.maps = {QString::fromStdString(cleanName(work_.path(), "MFS", 0))};
  UserScript script;
  script.in<AMapSelDlg>([](AMapSelDlg& dialog) {
    dialog.findChild<QPushButton*>("addMaps")->click();
    dialog.findChild<QPushButton*>("selectAreas")->click();
  });
  script.in<ASelAreaDlg>([](ASelAreaDlg& dialog) {
    drawAreas(dialog);
    clickButton(dialog, "Cancel");
  });
  script.in<AMapSelDlg>([](AMapSelDlg& dialog) { dialog.findChild<QPushButton*>("mapTable")->click(); });
  script.in<AMeanSigmaTblDlg>([](AMeanSigmaTblDlg& table) { table.close(); });
  script.in<AMapSelDlg>([](AMapSelDlg& dialog) {
    dialog.findChild<QPushButton*>("deleteMap")->click();
    EXPECT_EQ(dialog.findChild<QListWidget*>("maps")->count(), 0);
    dialog.findChild<QPushButton*>("done")->click();
  });
  press("mapAndAreas");
}

void ScriptedUser::readAbout() {
  UserScript script;
  script.in<CAboutDlg>([](CAboutDlg& about) {
    (void)about.grab();
    pressKey(about, Qt::Key_Escape);
  });
  dialog_->findChild<QAction*>("about")->trigger();
}

void ScriptedUser::deleteFiles() {
  auto& list = get<QListWidget>("files");
  for (int left = list.count(); left > 0; --left) {
    clickRow(list, 0);
    press("delete");
    ASSERT_EQ(list.count(), left - 1);
  }
}

void ScriptedUser::expectNoComplaint() {
  EXPECT_THAT(prompts_.messages, testing::IsEmpty());
  EXPECT_THAT(logText(), testing::Not(testing::HasSubstr("failed")));
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  prompts_.questions.clear();
}

}  // namespace lumo::test
