// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "analysis/AreaHandles.h"
#include "analysis/AreaList.h"

namespace lumo {

/// What pressing and dragging on the map means.
enum class AreaTool { kSelect, kMoveMap, kRectangle, kEllipse, kCircle, kPolygon };

/// The pointer on the map.
struct AreaPointer {
  AreaPoint at;
  double pixel = 1.0;  ///< arcseconds a screen pixel, > 0
};

/// What the pointer is on: a handle of the selected area, an area, or nothing.
struct AreaHit {
  std::optional<AreaHandle> handle;
  std::optional<std::size_t> area;
};

/// The areas of a map while a user marks them: what the mouse and the keys do to them, what is selected, and
/// the way back. Knows no window; places are in map coordinates.
///
/// A stroke is press, any number of moves, release. With kSelect it pulls a handle of the selected area, or
/// selects and moves the area under the pointer. With a drawing tool it draws: rectangles and ellipses from
/// corner to corner, circles from their centre, polygons click by click; the handles of the selected area
/// work as well, and a click without a stroke selects. Every change is one step of undo().
class AreaEditor {
 public:
  static constexpr double kGrabPixels = 7.0;     ///< a handle is taken from this far
  static constexpr double kStrokePixels = 4.0;   ///< a shorter stroke is a click
  static constexpr double kRotatePixels = 24.0;  ///< from an area to its handle for turning
  static constexpr std::size_t kMostSteps = 100;

  AreaEditor() = default;
  explicit AreaEditor(AreaList areas) : areas_(std::move(areas)) {}

  [[nodiscard]] const AreaList& areas() const { return areas_; }
  /// Puts other areas in the place of all, as one step. False, and nothing done, for more than kMostRegions.
  bool replaceAll(AreaList areas);
  /// True with kMostRegions areas, as many as a region file may hold: drawing tools then only select.
  [[nodiscard]] bool isFull() const;

  [[nodiscard]] AreaTool tool() const { return tool_; }
  /// Gives up what is being drawn.
  void setTool(AreaTool tool);
  [[nodiscard]] std::optional<std::size_t> selected() const { return selected_; }
  /// Nothing, or an index below the number of shapes.
  void select(std::optional<std::size_t> area);
  /// Selects the next area in the order of their numbers, or the one before.
  void selectNext(bool forward);
  /// The vertex of the selected polygon that remove() takes, if the user pointed at one.
  [[nodiscard]] std::optional<std::size_t> currentVertex() const { return vertex_; }

  /// False when the press is none of the editor's business and may move the map.
  bool press(const AreaPointer& pointer);
  /// With or without the button down.
  void move(const AreaPointer& pointer);
  void release(const AreaPointer& pointer);
  /// The second press of two: closes a polygon, inserts a vertex on a side, removes a vertex. False when it
  /// means nothing here.
  bool doubleClick(const AreaPointer& pointer);
  [[nodiscard]] AreaHit hit(const AreaPointer& pointer) const;

  /// What is being drawn; the last vertex of a polygon is where the pointer is.
  [[nodiscard]] const std::optional<AreaShape>& draft() const { return draft_; }
  /// True during a stroke and while a polygon is drawn.
  [[nodiscard]] bool busy() const { return draft_.has_value() || stroke_.has_value(); }
  /// Closes the polygon being drawn; false when there is none of three vertices or more.
  bool closePolygon();
  /// Takes back the last vertex of the polygon being drawn; false when there is none.
  bool takeBackVertex();
  /// Undoes the stroke or polygon under way, else unselects; false when there was neither.
  bool abandon();

  /// Removes the current vertex of a polygon of four or more, else the selected area.
  bool remove();
  /// Moves the selected area.
  bool nudge(AreaPoint by);
  bool undo();
  bool redo();
  [[nodiscard]] bool canUndo() const { return !past_.empty(); }
  [[nodiscard]] bool canRedo() const { return !future_.empty(); }

 private:
  /// A stroke under way.
  struct Stroke {
    AreaPoint from;
    bool moved = false;                ///< further than a click
    std::optional<AreaHandle> handle;  ///< pulled; without one the selected area is moved
    AreaList before;
  };

  [[nodiscard]] std::optional<std::size_t> areaAt(const AreaPointer& pointer) const;
  [[nodiscard]] std::optional<AreaHandle> handleAt(const AreaPointer& pointer) const;
  bool editVertices(const AreaPointer& pointer);
  bool startStroke(const AreaPointer& pointer, const AreaHit& found);
  void addVertex(const AreaPointer& pointer);
  void stretchDraft(AreaPoint to);
  void keepDraft();
  void keepStep(AreaList before);
  void stepTo(std::vector<AreaList>& from, std::vector<AreaList>& to);

  AreaList areas_;
  AreaTool tool_ = AreaTool::kSelect;
  std::optional<std::size_t> selected_;
  std::optional<std::size_t> vertex_;
  std::optional<AreaShape> draft_;
  std::optional<Stroke> stroke_;
  std::vector<AreaList> past_;
  std::vector<AreaList> future_;
};

}  // namespace lumo
