// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <optional>

#include "analysis/RegionFile.h"
#include "analysis/RegionText.h"
#include "core/PendingFile.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

class Writer {
 public:
  Writer(const RegionFrame& frame, RegionSystem system) : frame_(frame), system_(system) {}

  // The line of a shape; nothing when a point of it is not on the sky.
  [[nodiscard]] std::optional<std::string> line(const AreaShape& shape) const {
    const auto centre = shape.kind == AreaKind::kPolygon ? vertexText(shape) : positionText(shape.centre);
    if (!centre) return std::nullopt;
    return keyword(shape.kind) + *centre + sizeTexts(shape) + ")" + regionNameText(shape.name) + "\n";
  }

 private:
  static std::string keyword(AreaKind kind) {
    switch (kind) {
      case AreaKind::kCircle:
        return "circle(";
      case AreaKind::kEllipse:
        return "ellipse(";
      case AreaKind::kRectangle:
        return "box(";
      case AreaKind::kPolygon:
        break;
    }
    return "polygon(";
  }

  [[nodiscard]] std::optional<std::string> positionText(AreaPoint point) const {
    const auto place =
        system_ == RegionSystem::kSky ? frame_.skyOf(point) : std::optional(frame_.pixelOf(point));
    if (!place) return std::nullopt;
    return valToStr(place->x) + "," + valToStr(place->y);
  }

  [[nodiscard]] std::optional<std::string> vertexText(const AreaShape& shape) const {
    std::string text;
    for (const AreaPoint& vertex : shape.vertices) {
      const auto position = positionText(vertex);
      if (!position) return std::nullopt;
      text += (text.empty() ? "" : ",") + *position;
    }
    return text;
  }

  // Pixels only where they are square: a turned shape would be sheared by others.
  [[nodiscard]] std::string sizeText(double arcsec) const {
    if (system_ == RegionSystem::kImage && frame_.squarePixels())
      return "," + valToStr(arcsec / frame_.stepX());
    return "," + valToStr(arcsec) + "\"";
  }

  [[nodiscard]] std::string sizeTexts(const AreaShape& shape) const {
    if (shape.kind == AreaKind::kPolygon) return {};
    if (shape.kind == AreaKind::kCircle) return sizeText(shape.sizeX);
    const double angle =
        system_ == RegionSystem::kSky ? skyRotation(shape.rotation) : frame_.rotationOf(shape.rotation);
    return sizeText(shape.sizeX) + sizeText(shape.sizeY) + "," + valToStr(angle);
  }

  const RegionFrame& frame_;
  RegionSystem system_;
};

std::string frameWord(const RegionFrame& frame, RegionSystem system) {
  if (system == RegionSystem::kImage) return "image";
  return frame.skyName() == "FK4" ? "fk4" : frame.skyName() == "FK5" ? "fk5" : "icrs";
}

}  // namespace

Status formatRegions(const std::vector<AreaShape>& shapes, const RegionFrame& frame, RegionSystem system,
                     std::string& text) {
  text.clear();
  if (system == RegionSystem::kSky && !frame.hasSky())
    return {StatusCode::kInvalidValue, "the map has no position on the sky; write image coordinates"};
  std::string lines =
      "# Region file format: DS9 version 4.1\nglobal color=green\n" + frameWord(frame, system) + "\n";
  const Writer writer(frame, system);
  for (std::size_t k = 0; k < shapes.size(); ++k) {
    const auto line = writer.line(shapes[k]);
    if (!line)
      return {StatusCode::kInvalidValue,
              "area " + toStr(static_cast<std::int64_t>(k + 1)) + " lies beyond the horizon of the map"};
    lines += *line;
  }
  text = lines;
  return {};
}

Status writeRegions(const std::string& path, const std::vector<AreaShape>& shapes, const RegionFrame& frame,
                    RegionSystem system) {
  std::string text;
  if (Status status = formatRegions(shapes, frame, system, text); !status.ok()) return status.about(path);
  return writeWholeFile(path, text);
}

}  // namespace lumo
