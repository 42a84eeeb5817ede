// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QSvgRenderer>
#include <filesystem>

#include "support/FullDisk.h"
#include "support/TempFolder.h"
#include "view/PictureExport.h"

namespace lumo {
namespace {

/// Blue left half, green right half of a picture of 40 by 20.
void drawHalves(QPaintDevice& device) {
  QPainter painter(&device);
  painter.fillRect(QRectF(0, 0, 20, 20), Qt::blue);
  painter.fillRect(QRectF(20, 0, 20, 20), Qt::green);
}

TEST(PictureExportTest, WritesPngInDoubleResolution) {
  const test::TempFolder folder;
  ASSERT_TRUE(exportPicture(QSize(40, 20), drawHalves, folder.file("a.png")).ok());
  const QImage image(QString::fromStdString(folder.file("a.png")));
  ASSERT_EQ(image.size(), QSize(80, 40));
  EXPECT_EQ(image.pixelColor(39, 39), QColor(Qt::blue));
  EXPECT_EQ(image.pixelColor(40, 0), QColor(Qt::green));
}

TEST(PictureExportTest, WritesSvgThatReadsBack) {
  const test::TempFolder folder;
  ASSERT_TRUE(exportPicture(QSize(40, 20), drawHalves, folder.file("a.svg")).ok());
  QSvgRenderer renderer(QString::fromStdString(folder.file("a.svg")));
  ASSERT_TRUE(renderer.isValid());
  EXPECT_EQ(renderer.viewBoxF(), QRectF(0, 0, 40, 20));
}

TEST(PictureExportTest, WritesPdfOfTheSizeAsked) {
  const test::TempFolder folder;
  ASSERT_TRUE(exportPicture(QSize(400, 200), drawHalves, folder.file("a.pdf")).ok());
  const std::string pdf = test::readFile(folder.file("a.pdf"));
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  // 400 and 200 pixels of 1/96 inch are 300 and 150 points.
  EXPECT_NE(pdf.find("/MediaBox [0 0 300"), std::string::npos);
}

TEST(PictureExportTest, WritesAnyWindow) {
  const test::TempFolder folder;
  QLabel label("Declination");
  label.resize(90, 30);
  ASSERT_TRUE(exportPicture(label, folder.file("label.png")).ok());
  EXPECT_EQ(QImage(QString::fromStdString(folder.file("label.png"))).size(), QSize(180, 60));
}

TEST(PictureExportTest, RefusesAnotherExtension) {
  const test::TempFolder folder;
  const Status status = exportPicture(QSize(40, 20), drawHalves, folder.file("a.bmp"));
  EXPECT_EQ(status.code(), StatusCode::kInvalidValue);
  EXPECT_FALSE(test::exists(folder.file("a.bmp")));
}

TEST(PictureExportTest, RefusesAnEmptyPicture) {
  const test::TempFolder folder;
  EXPECT_EQ(exportPicture(QSize(0, 20), drawHalves, folder.file("a.png")).code(), StatusCode::kInvalidValue);
}

TEST(PictureExportTest, ReportsAFolderThatIsNotThere) {
  const test::TempFolder folder;
  for (const char* name : {"none/a.png", "none/a.pdf", "none/a.svg"}) {
    EXPECT_EQ(exportPicture(QSize(40, 20), drawHalves, folder.file(name)).code(), StatusCode::kWriteFailed)
        << name;
  }
}

TEST(PictureExportTest, AFullDiskIsReportedAndTheOldPictureStays) {
  for (const char* name : {"a.png", "a.pdf", "a.svg"}) {
    const test::TempFolder folder;
    test::writeFile(folder.file(name), "old");
    Status status;
    {
      const test::FullDisk full(64);
      status = exportPicture(QSize(400, 200), drawHalves, folder.file(name));
    }
    EXPECT_EQ(status.code(), StatusCode::kWriteFailed) << name;
    EXPECT_EQ(status.file(), folder.file(name));
    EXPECT_EQ(test::readFile(folder.file(name)), "old");
    const std::filesystem::directory_iterator files(folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 1) << name;
  }
}

TEST(PictureExportTest, LeavesNoTemporaryFileBehind) {
  const test::TempFolder folder;
  (void)exportPicture(QSize(40, 20), drawHalves, folder.file("a.png"));
  const std::filesystem::directory_iterator files(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

}  // namespace
}  // namespace lumo
