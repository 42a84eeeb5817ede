// SPDX-License-Identifier: GPL-3.0-or-later
#include "view/PictureExport.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <QWidget>
#include <algorithm>
#include <cctype>
#include <filesystem>

#include "core/PendingFile.h"

namespace lumo {
namespace {

using Draw = std::function<void(QPaintDevice&)>;

std::string extensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

bool writePng(const QSize& size, const Draw& draw, QIODevice& out) {
  constexpr int kScale = 2;  // a picture for print, not only for the screen
  QImage image(size * kScale, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return false;
  image.setDevicePixelRatio(kScale);
  image.fill(Qt::white);
  draw(image);
  image.setDevicePixelRatio(1.0);
  return image.save(&out, "PNG");
}

bool writePdf(const QSize& size, const Draw& draw, QIODevice& out) {
  QPdfWriter writer(&out);
  writer.setResolution(96);
  writer.setPageMargins(QMarginsF());
  // A page of exactly this size: 96 logical pixels are an inch.
  if (!writer.setPageSize(
          QPageSize(QSizeF(size) * 72.0 / 96.0, QPageSize::Point, QString(), QPageSize::ExactMatch))) {
    return false;
  }
  draw(writer);
  return true;
}

bool writeSvg(const QSize& size, const Draw& draw, QIODevice& out) {
  QSvgGenerator generator;
  generator.setOutputDevice(&out);
  generator.setSize(size);
  generator.setViewBox(QRect(QPoint(), size));
  generator.setResolution(96);
  draw(generator);
  return true;
}

}  // namespace

Status exportPicture(const QSize& size, const Draw& draw, const std::string& path) {
  if (size.isEmpty()) return {StatusCode::kInvalidValue, "there is no picture to save", path};
  const std::string extension = extensionOf(path);
  const auto write = extension == ".png"   ? writePng
                     : extension == ".pdf" ? writePdf
                     : extension == ".svg" ? writeSvg
                                           : nullptr;
  if (write == nullptr) {
    return {StatusCode::kInvalidValue, "a picture needs a name that ends in .png, .pdf or .svg", path};
  }
  // Not into the file itself: the PDF and SVG writers do not report a disk that fills up.
  QBuffer picture;
  picture.open(QIODevice::WriteOnly);
  if (!write(size, draw, picture) || picture.data().isEmpty())
    return {StatusCode::kOutOfMemory, "the picture cannot be drawn", path};
  return writeWholeFile(path, picture.data().toStdString());
}

Status exportPicture(QWidget& widget, const std::string& path) {
  return exportPicture(
      widget.size(), [&widget](QPaintDevice& device) { widget.render(&device); }, path);
}

}  // namespace lumo
