// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <filesystem>
#include <vector>

#include "Mouse.h"
#include "support/FullDisk.h"
#include "support/TempFolder.h"
#include "view/AAxisWnd.h"
#include "view/APrintOut.h"
#include "view/PrintDevice.h"

namespace lumo {
namespace {

/// Remembers how it was printed.
class Sheet : public APrintable {
 public:
  [[nodiscard]] QSizeF printedSize() const override { return size; }
  [[nodiscard]] int pages(const QSizeF& area) const override {
    areas.push_back(area);
    return pageCount;
  }
  void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) override {
    EXPECT_TRUE(device.isActive());
    EXPECT_FALSE(device.isDisplay());
    device.painter().fillRect(rectangle, Qt::darkGreen);
    rectangles.push_back(rectangle);
    pagesDrawn.push_back(flags.page);
  }

  QSizeF size{300, 200};
  int pageCount = 1;
  mutable std::vector<QSizeF> areas;
  std::vector<QRect> rectangles;
  std::vector<int> pagesDrawn;
};

std::size_t pagesOf(const std::string& path) {
  const std::string pdf = test::readFile(path);
  std::size_t pages = 0;
  for (std::size_t at = pdf.find("/Type /Page\n"); at != std::string::npos;
       at = pdf.find("/Type /Page\n", at + 1))
    ++pages;
  return pages;
}

class APrintOutTest : public testing::Test {
 protected:
  test::TempFolder folder_;
  Sheet sheet_;
  APrintOut printOut_{"A title", sheet_};
};

TEST_F(APrintOutTest, AWindowIsFittedBelowTheTitleWithItsProportions) {
  ASSERT_TRUE(printOut_.printToPdf(folder_.file("a.pdf")).ok());
  EXPECT_EQ(pagesOf(folder_.file("a.pdf")), 1U);
  ASSERT_EQ(sheet_.rectangles.size(), 1U);
  const QRect rectangle = sheet_.rectangles[0];
  EXPECT_NEAR(static_cast<double>(rectangle.width()) / rectangle.height(), 1.5, 0.001);
  EXPECT_GT(rectangle.top(), 0);
  // A lying A4 page without its margins is 757 points wide and 510 high, 486 of them below the title.
  EXPECT_NEAR(rectangle.height(), 486.0 * 600 / 72, 600.0 / 72);
}

TEST_F(APrintOutTest, AnUprightWindowGetsAnUprightPage) {
  sheet_.size = {200, 300};
  ASSERT_TRUE(printOut_.printToPdf(folder_.file("a.pdf")).ok());
  EXPECT_NE(test::readFile(folder_.file("a.pdf")).find("/MediaBox [0 0 595"), std::string::npos);
  sheet_.size = {300, 200};
  ASSERT_TRUE(printOut_.printToPdf(folder_.file("b.pdf")).ok());
  EXPECT_NE(test::readFile(folder_.file("b.pdf")).find("/MediaBox [0 0 842"), std::string::npos);
}

TEST_F(APrintOutTest, AWindowWithoutProportionsTakesTheWholeArea) {
  sheet_.size = QSizeF();
  ASSERT_TRUE(printOut_.printToPdf(folder_.file("a.pdf")).ok());
  ASSERT_EQ(sheet_.areas.size(), 1U);
  EXPECT_NEAR(sheet_.rectangles[0].height(), sheet_.areas[0].height() * 600 / 72, 1.0);
  EXPECT_NEAR(sheet_.rectangles[0].width(), sheet_.areas[0].width() * 600 / 72, 1.0);
}

TEST_F(APrintOutTest, EveryPageIsPrinted) {
  sheet_.pageCount = 3;
  ASSERT_TRUE(printOut_.printToPdf(folder_.file("a.pdf")).ok());
  EXPECT_EQ(sheet_.pagesDrawn, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(pagesOf(folder_.file("a.pdf")), 3U);
}

TEST_F(APrintOutTest, AFullDiskIsReportedAndLeavesNoHalfFile) {
  Status status;
  {
    const test::FullDisk full(64);
    status = printOut_.printToPdf(folder_.file("a.pdf"));
  }
  EXPECT_EQ(status.code(), StatusCode::kWriteFailed);
  EXPECT_EQ(status.file(), folder_.file("a.pdf"));
  EXPECT_FALSE(test::exists(folder_.file("a.pdf")));
}

TEST_F(APrintOutTest, AbortingLeavesNoFile) {
  sheet_.pageCount = 3;
  const Status status =
      printOut_.printToPdf(folder_.file("a.pdf"), [this] { return !sheet_.pagesDrawn.empty(); });
  EXPECT_EQ(status.code(), StatusCode::kCancelled);
  EXPECT_EQ(sheet_.pagesDrawn.size(), 1U);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(APrintOutTest, AFolderThatIsNotThereIsReported) {
  EXPECT_EQ(printOut_.printToPdf(folder_.file("none/a.pdf")).code(), StatusCode::kWriteFailed);
}

TEST_F(APrintOutTest, TheTitleStandsAboveThePicture) {
  const auto sizeOf = [this](const QString& title) {
    const std::string path = folder_.file("t.pdf");
    EXPECT_TRUE(APrintOut(title, sheet_).printToPdf(path).ok());
    return std::filesystem::file_size(path);
  };
  // Its glyphs need a font in the file.
  EXPECT_GT(sizeOf("UV-Plane"), sizeOf(""));
}

TEST(PrintWindowTest, APlotIsEnlargedIntoItsRectangleWithEverythingInProportion) {
  AAxisWnd window;
  window.SetAxis(test::greyMapAxis(test::mapWithOnePixel(21, 21, 15, 5)));
  (void)test::shown(window, {420, 420});
  const QImage screen = window.picture(3.0);
  QImage page(screen.size() + QSize(50, 70), QImage::Format_RGB32);
  page.fill(Qt::white);
  {
    PrintDevice device(page);
    ASSERT_TRUE(device.isDisplay());
    window.PrintWindow(device, QRect(QPoint(50, 70), screen.size()), {});
    EXPECT_TRUE(device.finish());
  }
  // Not to the pixel: edges of glyphs may fall differently on the grid.
  int different = 0;
  for (int y = 0; y < screen.height(); ++y)
    for (int x = 0; x < screen.width(); ++x)
      different += page.pixel(x + 50, y + 70) != screen.pixel(x, y) ? 1 : 0;
  EXPECT_LT(different, screen.width() * screen.height() / 100);
}

}  // namespace
}  // namespace lumo
