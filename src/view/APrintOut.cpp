// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/APrintOut.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
#include <utility>

#include "core/PendingFile.h"
#include "view/PrintDevice.h"

namespace lumo {
namespace {

constexpr double kPointsPerInch = 72.0;
constexpr double kTitlePoints = 14.0;
constexpr double kTitleHeightPoints = 24.0;
constexpr double kMarginPoints = 42.5;  // 15 mm
constexpr int kPdfResolution = 600;

/// The largest rectangle of these proportions in `area`, in the middle of its upper part.
QRect fitted(const QSizeF& proportions, const QRect& area) {
  if (proportions.isEmpty()) return area;
  const QSize size = proportions.scaled(area.size(), Qt::KeepAspectRatio).toSize();
  return {QPoint(area.left() + (area.width() - size.width()) / 2, area.top()), size};
}

void drawTitle(QPainter& painter, const QString& title, const QRect& area) {
  painter.save();
  QFont font = painter.font();
  // In device pixels: a size in points would follow whatever resolution the device claims for its fonts.
  font.setPixelSize(qMax(1, qRound(area.height() * kTitlePoints / kTitleHeightPoints)));
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(Qt::black);
  painter.drawText(area, Qt::AlignHCenter | Qt::AlignTop, title);
  painter.restore();
}

}  // namespace

APrintOut::APrintOut(QString title, APrintable& window) : title_(std::move(title)), window_(window) {}

Status APrintOut::print(QPagedPaintDevice& device, const PrintAbort& isAborted) const {
  const Status failed{StatusCode::kWriteFailed,
                      "cannot print: the printer or its file does not take the page"};
  PrintDevice target(device);
  if (!target.isActive()) return failed;
  const double pixelsPerPoint = device.logicalDpiY() / kPointsPerInch;
  const QRect page(0, 0, device.width(), device.height());
  const int titleHeight = qMin(qRound(kTitleHeightPoints * pixelsPerPoint), page.height() / 4);
  const QRect area = page.adjusted(0, titleHeight, 0, 0);
  PrintFlags flags{0, isAborted};
  const int pages = window_.pages(QSizeF(area.size()) / pixelsPerPoint);
  for (; flags.page < pages && !flags.aborted(); ++flags.page) {
    if (flags.page > 0 && !device.newPage()) return failed;
    drawTitle(target.painter(), title_, QRect(page.topLeft(), QSize(page.width(), titleHeight)));
    window_.PrintWindow(target, fitted(window_.printedSize(), area), flags);
  }
  if (flags.aborted()) return {StatusCode::kCancelled, "the print-out was cancelled"};
  return target.finish() ? Status() : failed;
}

Status APrintOut::printToPdf(const std::string& path, const PrintAbort& isAborted) const {
  // Not into the file itself: the PDF writer does not report a disk that fills up.
  QBuffer pages;
  pages.open(QIODevice::WriteOnly);
  {
    QPdfWriter writer(&pages);
    writer.setTitle(title_);
    writer.setResolution(kPdfResolution);
    const QSizeF size = window_.printedSize();
    const bool lies = size.width() > size.height();
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4),
                                     lies ? QPageLayout::Landscape : QPageLayout::Portrait,
                                     QMarginsF(kMarginPoints, kMarginPoints, kMarginPoints, kMarginPoints)));
    const Status printed = print(writer, isAborted);
    if (!printed.ok()) return printed.about(path);
  }
  if (pages.data().isEmpty()) return {StatusCode::kOutOfMemory, "the print-out cannot be drawn", path};
  return writeWholeFile(path, pages.data().toStdString());
}

}  // namespace lumo
