// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QWheelEvent>
#include <filesystem>

#include "convert/Importer.h"
#include "convert/UvfitsImporter.h"
#include "gui/GuiScript.h"
#include "gui/MainDialogFixture.h"
#include "imaging/ui/AUVPGraph.h"
#include "imaging/ui/AUVPLaneWnd.h"
#include "imaging/ui/LumoUVPlaneDlg.h"
#include "imaging/ui/UvPlanePicture.h"
#include "io/AUVXFile.h"
#include "io/UvxStatistics.h"
#include "io/UvxWriter.h"
#include "run/UvPlaneSelection.h"
#include "support/RealData.h"
#include "view/APrintOut.h"
#include "view/PrintDevice.h"

namespace lumo {
namespace {

constexpr QRgb kBackground = 0xffe8eaed;

/// Lets the event loop turn until a condition holds.
template <typename Condition>
void waitUntil(Condition condition) {
  QElapsedTimer since;
  since.start();
  while (!condition()) {
    ASSERT_LT(since.elapsed(), 30000) << "the condition did not come about";
    QApplication::processEvents(QEventLoop::AllEvents, 5);
  }
}

class UvPlaneTest : public test::MainDialogTest {
 protected:
  /// Writes a file of one frequency, `channels` of it at the same frequency, with these u and v in
  /// wavelengths.
  std::string writePoints(const std::vector<UvPoint>& points, std::uint32_t channels = 1) {
    UvxContent content;
    content.shape = {1, channels, 1};
    content.unit = "JY";
    content.sources = {{1, "0716+714", UvxFrame::kIcrs, 110.472702, 71.343434, 2000.0}};
    content.products = {1};
    content.selections = {{1, {{kFrequency, 0.0}}}};
    const std::string path = data_.file("points" + std::to_string(++written_) + ".uvx");
    const std::vector<AUVXComplex> values(channels, AUVXComplex(1, 0, 1));
    UvxWriter writer;
    EXPECT_TRUE(writer.begin(path, content).ok());
    UvxRecord record;
    record.freqSel = 1;
    record.source = 1;
    for (const UvPoint& point : points) {
      // The picture has u and v with their signs turned.
      record.u = static_cast<float>(-point.u / kFrequency);
      record.v = static_cast<float>(-point.v / kFrequency);
      EXPECT_TRUE(writer.append(record, values).ok());
    }
    EXPECT_TRUE(writer.finish().ok());
    return path;
  }

  void list(const std::vector<std::string>& paths) {
    for (const Status& status : list_.AddFiles(paths)) ADD_FAILURE() << status.text();
  }

  LumoUVPlaneDlg& openPlane() {
    const UvPlaneData data = uvPlaneSelection(list_);
    plane_ = std::make_unique<LumoUVPlaneDlg>();
    plane_->SetData(data.names, data.tables, data.selections, data.sources, data.minHz, data.maxHz,
                    data.uExtent, data.vExtent);
    plane_->setImagerFolder(work_.path());
    plane_->show();
    return *plane_;
  }

  const AUVPGraph& graph() const {
    return dynamic_cast<const AUVPGraph&>(*plane_->plot().axis()->graphs().front());
  }

  /// Waits until the picture shown is complete and of what the window shows now.
  void settle() {
    QApplication::processEvents();
    (void)plane_->grab();  // lays out and asks for the picture
    waitUntil([this] {
      const UvPicture picture = graph().progress();
      return picture.complete && graph().isShown();
    });
    QApplication::processEvents();
  }

  /// What the dialog looks like in the panel between the axes.
  QImage panel() {
    const AUVPLaneWnd& plot = plane_->plot();
    return plane_->grab().toImage().copy(plot.panelRect().translated(plot.pos()));
  }

  /// Pixel of a position of the uv plane in the panel.
  QPoint pixelOf(double u, double v) const {
    const PlotPoint at = plane_->plot().view().toPixel({u, v});
    return {qRound(at.x), qRound(at.y)};
  }

  static constexpr double kFrequency = 1e9;
  UvxFileList list_;
  std::unique_ptr<LumoUVPlaneDlg> plane_;
  int written_ = 0;
};

/// True when the middle, the four arms up to 8 pixels away and nothing between them is marked.
bool isCross(const QImage& image, QPoint at) {
  const auto marked = [&](int dx, int dy) { return image.pixel(at.x() + dx, at.y() + dy) != kBackground; };
  for (int i = -8; i <= 8; ++i)
    if (!marked(i, 0) || !marked(0, i)) return false;
  return !marked(10, 0) && !marked(-10, 0) && !marked(0, 10) && !marked(0, -10) && !marked(4, 4) &&
         !marked(-4, 4) && !marked(4, -4) && !marked(-4, -4);
}

TEST_F(UvPlaneTest, CrossesStandAtEveryPointAndItsMirror) {
  list({writePoints({{1e6, 4e5}, {-3e5, 8e5}})});
  openPlane();
  settle();
  EXPECT_EQ(plane_->windowTitle(), "UV-Plane");
  const QImage image = panel();
  for (const UvPoint point : {UvPoint{1e6, 4e5}, {-3e5, 8e5}}) {
    EXPECT_TRUE(isCross(image, pixelOf(point.u, point.v))) << point.u;
    EXPECT_TRUE(isCross(image, pixelOf(-point.u, -point.v))) << point.u;
    // Not turned about one axis alone.
    EXPECT_FALSE(isCross(image, pixelOf(-point.u, point.v)));
  }
  EXPECT_LT(pixelOf(1e6, 0).x(), pixelOf(-1e6, 0).x());  // u grows to the left ...
  EXPECT_LT(pixelOf(0, 1e6).y(), pixelOf(0, -1e6).y());  // ... and v upwards
  test::savePicture(*plane_, "uvplane-few");
}

TEST_F(UvPlaneTest, AxesAreCalledUAndVAndHoldASquareFivePerCentLargerThanTheLargerExtent) {
  list({writePoints({{1e6, 4e5}})});
  openPlane();
  settle();
  const A2_3DAxis& axis = *plane_->plot().axis();
  EXPECT_EQ(axis.nameOX(), "U");
  EXPECT_EQ(axis.nameOY(), "V");
  EXPECT_EQ(axis.nameOZ(), "");
  const PlotRect extent = axis.extent();
  EXPECT_NEAR(extent.xMax, 1.05e6, 1.0);  // u is stored in single precision
  EXPECT_EQ(extent.xMin, -extent.xMax);
  EXPECT_EQ(extent.yMin, -extent.xMax);
  EXPECT_EQ(extent.yMax, extent.xMax);
}

TEST_F(UvPlaneTest, ButtonsAreThoseOfTheDialogAndCloseIsTheDefault) {
  list({writePoints({{1e6, 4e5}})});
  openPlane();
  EXPECT_EQ(plane_->findChild<QPushButton*>("print")->text(), "Print...");
  EXPECT_EQ(plane_->findChild<QPushButton*>("transmit")->text(), "Transmit to ZEL Imager");
  EXPECT_EQ(plane_->findChild<QPushButton*>("close")->text(), "Close");
  EXPECT_TRUE(plane_->findChild<QPushButton*>("close")->isDefault());
  plane_->findChild<QPushButton*>("close")->click();
  EXPECT_FALSE(plane_->isVisible());
}

TEST_F(UvPlaneTest, ZoomedInTheCrossesStandWhereTheyBelongMirrorsToo) {
  // The mirror of the second lies beside the first; it has no point of its own in the part shown.
  list({writePoints({{6.00e5, 4.00e5}, {-6.02e5, -4.03e5}, {1e6, 1e6}})});
  openPlane();
  settle();
  const PlotPoint about = plane_->plot().view().toPixel({6.01e5, 4.015e5});
  const QPointF inWindow = QPointF(about.x, about.y) + plane_->plot().panelRect().topLeft();
  QWidget* const target = plane_->plot().childAt(inWindow.toPoint());
  for (int i = 0; i < 32; ++i) {
    const QPointF local = target->mapFrom(&plane_->plot(), inWindow);
    QWheelEvent wheel(local, target->mapToGlobal(local), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &wheel);
  }
  ASSERT_LT(plane_->plot().view().visible().width(), 0.1e5);
  settle();
  const QImage image = panel();
  EXPECT_TRUE(isCross(image, pixelOf(6.00e5, 4.00e5)));
  EXPECT_TRUE(isCross(image, pixelOf(6.02e5, 4.03e5)));
}

TEST_F(UvPlaneTest, NothingListedIsAnEmptyPlane) {
  openPlane();
  settle();
  const QImage image = panel();
  EXPECT_EQ(image.pixel(pixelOf(0.3, 0.3)), kBackground);
  EXPECT_EQ(graph().progress().grid->crosses(), 0U);
}

TEST_F(UvPlaneTest, ReadOutTellsPlaceLengthAndAngle) {
  const AUVPGraph coverage;
  EXPECT_EQ(coverage.readOut(3e6, 4e6),
            "U 3000 k\u03bb   V 4000 k\u03bb\nBaseline 5000 k\u03bb, position angle 36.87\u00b0");
  // A baseline and its mirror have one angle.
  EXPECT_NE(coverage.readOut(-3e6, -4e6).find("36.87"), std::string::npos);
}

TEST_F(UvPlaneTest, TransmitWritesTheSlotFileAndShowsNothing) {
  list({writePoints({{1e6, 4e5}}), writePoints({{2e6, -1e6}})});
  openPlane();
  settle();
  test::writeFile(work_.file("mfs_zel0.dat"), "waiting");
  plane_->findChild<QPushButton*>("transmit")->click();
  EXPECT_EQ(test::readFile(work_.file("mfs_zel1.dat")),
            "1e+06\t2e+06\n0\t" + list_.inputs().names[0] + "\n0\t" + list_.inputs().names[1] + "\n");
  EXPECT_EQ(plane_->lastHandOver().slot, 1);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(UvPlaneTest, PrintsThroughTheDialogOfThePrinter) {
  list({writePoints({{1e6, 4e5}})});
  openPlane();
  settle();
  const std::string pdf = work_.file("printed.pdf");
  test::GuiScript script;
  script.step([&pdf] {
    auto* const dialog = test::modalWindow<QPrintDialog>();
    if (dialog == nullptr) return false;
    EXPECT_EQ(dialog->windowTitle(), "UV-Plane");
    dialog->printer()->setOutputFormat(QPrinter::PdfFormat);
    dialog->printer()->setOutputFileName(QString::fromStdString(pdf));
    dialog->done(QDialog::Accepted);
    return true;
  });
  plane_->findChild<QPushButton*>("print")->click();
  EXPECT_EQ(test::readFile(pdf).substr(0, 5), "%PDF-");
  EXPECT_NE(test::readFile(pdf).find("/Type /Page\n"), std::string::npos);
}

TEST_F(UvPlaneTest, APrintOutIsAPageWithAPictureInIt) {
  list({writePoints({{1e6, 4e5}, {-3e5, 8e5}})});
  openPlane();
  settle();
  const std::string pdf = work_.file("printed.pdf");
  ASSERT_TRUE(APrintOut("UV-Plane", plane_->plot()).printToPdf(pdf).ok());
  const std::string text = test::readFile(pdf);
  EXPECT_NE(text.find("/Type /Page\n"), std::string::npos);
  EXPECT_NE(text.find("/Subtype /Image"), std::string::npos) << "the plot goes by way of a bitmap";
}

TEST_F(UvPlaneTest, APictureThatIsKeptIsCompleteWhileTheScreenIsNot) {
  std::vector<UvPoint> points;
  for (int i = 0; i < 200000; ++i) points.push_back({3.0 * i, 2.0 * i});
  points.push_back({-3e5, 3.5e5});
  list({writePoints(points, 16)});
  openPlane();
  (void)plane_->grab();
  const bool wasReading = !graph().progress().complete;
  const QImage kept = plane_->plot().picture(1.0);
  EXPECT_TRUE(wasReading);
  EXPECT_TRUE(graph().keptStatus().ok());
  // The file's last group and its mirror.
  const QWidget* const drawing = plane_->plot().childAt(plane_->plot().panelRect().center());
  const QPoint corner = plane_->plot().panelRect().topLeft() - drawing->pos();
  EXPECT_NE(kept.pixel(pixelOf(-3e5, 3.5e5) + corner), kBackground);
  EXPECT_NE(kept.pixel(pixelOf(3e5, -3.5e5) + corner), kBackground);
  EXPECT_EQ(kept.pixel(pixelOf(3e5, 3.5e5) + corner), kBackground);
}

TEST_F(UvPlaneTest, PrintingWhileTheScreenIsFillingUpReadsTheFilesOnce) {
  constexpr int kPoints = 200000;
  constexpr int kChannels = 16;
  std::vector<UvPoint> points;
  for (int i = 0; i < kPoints; ++i) points.push_back({3.0 * i, 2.0 * i});
  list({writePoints(points, kChannels)});
  openPlane();
  (void)plane_->grab();
  const bool wasReading = !graph().progress().complete;
  int portions = 0;
  QImage paper(800, 800, QImage::Format_RGB32);
  PrintDevice device(paper);
  PrintFlags flags;
  flags.isAborted = [&] {
    ++portions;
    // As the window that offers to cancel does; long enough for what the reading thread has to tell.
    QElapsedTimer since;
    since.start();
    while (since.elapsed() < 10) QApplication::processEvents();
    return false;
  };
  plane_->plot().PrintWindow(device, paper.rect(), flags);
  EXPECT_TRUE(wasReading);
  EXPECT_TRUE(graph().keptStatus().ok());
  EXPECT_LE(portions, kPoints * kChannels / 65536 + 1) << "points come in portions of at least 65 536";
  EXPECT_GE(portions, 2);
  settle();  // and the screen goes on
}

TEST_F(UvPlaneTest, WhatIsCompleteOnTheScreenIsKeptWithoutReadingTheFilesAgain) {
  const std::string path = writePoints({{1e6, 4e5}, {-3e5, 8e5}});
  list({path});
  openPlane();
  settle();
  std::filesystem::remove(path);
  const QWidget* const drawing = plane_->plot().childAt(plane_->plot().panelRect().center());
  const QPoint corner = plane_->plot().panelRect().topLeft() - drawing->pos();
  const QImage kept = plane_->plot().picture(1.0);
  EXPECT_TRUE(graph().keptStatus().ok()) << graph().keptStatus().text();
  EXPECT_TRUE(isCross(kept, pixelOf(1e6, 4e5) + corner));
  // With other pixels it is another picture.
  (void)plane_->plot().picture(3.0);
  EXPECT_EQ(graph().keptStatus().code(), StatusCode::kNotFound);
}

TEST_F(UvPlaneTest, InAPictureWiderThanAFrameMayBeTheCrossesStandAtTheirNumbersToo) {
  list({writePoints({{1e6, 4e5}, {-3e5, 8e5}})});
  AUVPLaneWnd window;
  window.SetAxis(makeUvPlaneAxis(uvPlaneSelection(list_)));
  window.resize(UvHitGrid::kMostPixels + 1500, 500);
  window.layout()->activate();
  const QImage kept = window.picture(1.0);
  const QWidget* const drawing = window.childAt(window.panelRect().center());
  const QPoint corner = window.panelRect().topLeft() - drawing->pos();
  ASSERT_GT(window.panelRect().width(), UvHitGrid::kMostPixels);
  for (const UvPoint point : {UvPoint{1e6, 4e5}, {-1e6, -4e5}, {-3e5, 8e5}, {3e5, -8e5}}) {
    const PlotPoint at = window.view().toPixel({point.u, point.v});
    const QPoint pixel = QPoint(qRound(at.x), qRound(at.y)) + corner;
    // Made wider from 8192 pixels, an arm is 8 to 11 of them long.
    for (const int arm : {-6, 0, 6}) EXPECT_NE(kept.pixel(pixel + QPoint(arm, 0)), kBackground) << point.u;
    for (const int beyond : {-13, 13})
      EXPECT_EQ(kept.pixel(pixel + QPoint(beyond, 0)), kBackground) << point.u;
    EXPECT_EQ(kept.pixel(pixel + QPoint(5, 5)), kBackground) << point.u;
  }
}

TEST_F(UvPlaneTest, TheTextBelowThePlotTellsHowFarItIsOrWhyItWentNoFurther) {
  UvPicture picture;
  picture.share = 0.427;
  EXPECT_EQ(uvProgressText(picture), "Reading, 42 %");
  picture.status = {StatusCode::kOutOfMemory, "no room"};
  EXPECT_EQ(uvProgressText(picture), QString::fromStdString(picture.status.text()));
  auto grid = std::make_shared<UvHitGrid>(UvFrame());
  for (int i = 0; i < 600; ++i) grid->add({0.5, 0.5});
  picture = {grid, 1.0, true, {}};
  EXPECT_EQ(uvProgressText(picture), "1,200 crosses in this picture");
}

TEST_F(UvPlaneTest, ClosingWhileTenMillionPointsAreStillBeingReadReturnsAtOnce) {
  std::vector<UvPoint> points;
  for (int i = 0; i < 625000; ++i) points.push_back({1.0 * i, 0.5 * i});
  list({writePoints(points, 16)});
  openPlane();
  (void)plane_->grab();
  waitUntil([this] { return graph().progress().grid != nullptr || graph().progress().share > 0; });
  const bool wasReading = !graph().progress().complete;
  QElapsedTimer since;
  since.start();
  plane_->findChild<QPushButton*>("close")->click();
  plane_.reset();
  EXPECT_LT(since.elapsed(), 200);
  EXPECT_TRUE(wasReading);
}

TEST_F(UvPlaneTest, WritesPicturesWithoutAWindow) {
  list({writePoints({{1e6, 4e5}})});
  for (const char* name : {"uv.png", "uv.pdf", "uv.svg"}) {
    const Status status = drawUvPlane(uvPlaneSelection(list_), work_.file(name));
    EXPECT_TRUE(status.ok()) << status.text();
    EXPECT_GT(std::filesystem::file_size(work_.file(name)), 1000U);
  }
  UvPlaneData data = uvPlaneSelection(list_);
  data.names[0] = work_.file("gone.uvx");
  EXPECT_EQ(drawUvPlane(data, work_.file("none.png")).code(), StatusCode::kNotFound);
}

/// Every UVFITS file and Measurement Set below the folder of real observations.
std::vector<std::string> realObservations() {
  std::vector<std::string> paths;
  std::filesystem::recursive_directory_iterator entry(test::realDataFolder());
  for (; entry != std::filesystem::recursive_directory_iterator(); ++entry) {
    const std::filesystem::path& path = entry->path();
    const QString extension = QString::fromStdString(path.extension().string()).toLower();
    if (std::filesystem::exists(path / "table.dat")) {
      paths.push_back(path);
      entry.disable_recursion_pending();
    } else if (extension == ".uvf" || extension == ".uvfits" || extension == ".fits") {
      paths.push_back(path);
    }
  }
  return paths;
}

TEST_F(UvPlaneTest, OpensOnEveryRealObservation) {
  LUMO_NEEDS_REAL_DATA();
  int drawn = 0;
  for (const std::string& input : realObservations()) {
    ImportReport report;
    const Status imported = importVisibilities(input, {data_.file("real"), {}, {}}, {}, report);
    // A build without casacore imports no sets.
    if (imported.code() == StatusCode::kUnsupported && std::filesystem::is_directory(input)) continue;
    ASSERT_TRUE(imported.ok()) << imported.text();
    for (const ImportedFile& file : report.files) {
      while (list_.hasFiles()) list_.DeleteFile();
      list({file.path});
      openPlane();
      settle();
      const QImage image = panel();
      int marked = 0;
      constexpr int kFrame = 4;
      for (int y = kFrame; y < image.height() - kFrame; ++y)
        for (int x = kFrame; x < image.width() - kFrame; ++x)
          marked += image.pixel(x, y) != kBackground ? 1 : 0;
      AUVXFile groups;
      ASSERT_EQ(groups.Open(file.path, AFile::kRead), 1);
      const UvxStatistics statistics = countGroups(groups);
      // Two crosses have 62 pixels. One field of a set is flagged whole: nothing of it is drawn.
      if (statistics.flaggedRecords() < statistics.records())
        EXPECT_GT(marked, 50) << file.path;
      else
        EXPECT_EQ(marked, 0) << file.path;
      plane_.reset();
      ++drawn;
    }
  }
  EXPECT_GE(drawn, 17);
}

TEST_F(UvPlaneTest, TheFiveBandsOf3C111FillThePlane) {
  LUMO_NEEDS_REAL_DATA();
  std::vector<std::string> paths;
  for (const char* band : {"C", "X", "U", "Q", "W"}) {
    const std::string name = std::string("vlba-3c111-2014/3C111_") + band + "_2014_05_08.uvf";
    ImportReport report;
    ASSERT_TRUE(importUvfits(test::realDataFolder() + name, {data_.path(), {}, {}}, {}, report).ok());
    paths.push_back(report.files.at(0).path);
  }
  list(paths);
  openPlane();
  plane_->resize(760, 680);
  settle();
  // The longest baselines are 1099 million wavelengths long; nothing lies beyond.
  EXPECT_GT(graph().extent().xMax, 0.8e9);
  EXPECT_LT(graph().extent().xMax, 1.3e9);
  test::savePicture(*plane_, "uvplane");
  plane_->plot().zoom(6.0);
  settle();
  test::savePicture(*plane_, "uvplane-zoomed");
}

}  // namespace
}  // namespace lumo
