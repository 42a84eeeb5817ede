// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/AreaEditor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "analysis/RegionFile.h"

namespace lumo {

namespace {

double distance(AreaPoint a, AreaPoint b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

bool draws(AreaTool tool) {
  return tool != AreaTool::kSelect && tool != AreaTool::kMoveMap;
}

}  // namespace

bool AreaEditor::isFull() const {
  return areas_.shapes().size() >= kMostRegions;
}

bool AreaEditor::replaceAll(AreaList areas) {
  if (areas.shapes().size() > kMostRegions) return false;
  abandon();
  AreaList before = std::exchange(areas_, std::move(areas));
  select(std::nullopt);
  keepStep(std::move(before));
  return true;
}

void AreaEditor::setTool(AreaTool tool) {
  if (busy()) abandon();
  tool_ = tool;
}

void AreaEditor::select(std::optional<std::size_t> area) {
  selected_ = area;
  vertex_.reset();
}

void AreaEditor::selectNext(bool forward) {
  const std::size_t count = areas_.shapes().size();
  if (count == 0 || busy()) return;
  if (!selected_)
    select(forward ? 0 : count - 1);
  else
    select((*selected_ + (forward ? 1 : count - 1)) % count);
}

std::optional<AreaHandle> AreaEditor::handleAt(const AreaPointer& pointer) const {
  if (!selected_) return std::nullopt;
  std::optional<AreaHandle> nearest;
  double best = kGrabPixels * pointer.pixel;
  for (const AreaHandle& handle : areaHandles(areas_.shapes()[*selected_], kRotatePixels * pointer.pixel)) {
    // Between two close vertices, the middle of their side must not keep one from them.
    const double away = distance(handle.at, pointer.at) * (handle.kind == HandleKind::kInsert ? 1.5 : 1.0);
    if (away > best) continue;
    best = away;
    nearest = handle;
  }
  return nearest;
}

std::optional<std::size_t> AreaEditor::areaAt(const AreaPointer& pointer) const {
  std::optional<std::size_t> found;
  double smallest = std::numeric_limits<double>::infinity();
  for (std::size_t k = areas_.shapes().size(); k-- > 0;) {
    const AreaShape& shape = areas_.shapes()[k];
    const bool near = shape.contains(pointer.at) || nearestPlace(areaOutline(shape), pointer.at).distance <=
                                                        kGrabPixels / 2.0 * pointer.pixel;
    if (!near) continue;
    // The smallest, so that an area inside another one can be reached.
    const TMinMax box = shape.bounds();
    const double size = (box.xMax - box.xMin) * (box.yMax - box.yMin);
    if (size < smallest || !found) {
      found = k;
      smallest = size;
    }
  }
  return found;
}

AreaHit AreaEditor::hit(const AreaPointer& pointer) const {
  AreaHit found;
  if (tool_ == AreaTool::kMoveMap) return found;
  found.handle = handleAt(pointer);
  found.area = found.handle ? selected_ : areaAt(pointer);
  return found;
}

bool AreaEditor::press(const AreaPointer& pointer) {
  if (tool_ == AreaTool::kMoveMap) return false;
  if (draft_ && tool_ == AreaTool::kPolygon) {
    addVertex(pointer);
    return true;
  }
  const AreaHit found = hit(pointer);
  if (found.handle || tool_ == AreaTool::kSelect) return startStroke(pointer, found);
  if (isFull())
    select(found.area);
  else
    stroke_ = Stroke{pointer.at, false, std::nullopt, areas_};
  return true;
}

bool AreaEditor::startStroke(const AreaPointer& pointer, const AreaHit& found) {
  if (!found.area) {
    select(std::nullopt);
    return false;
  }
  select(found.area);
  if (found.handle && found.handle->kind == HandleKind::kVertex) vertex_ = found.handle->vertex;
  stroke_ = Stroke{pointer.at, false, found.handle, areas_};
  return true;
}

void AreaEditor::move(const AreaPointer& pointer) {
  if (!stroke_) {
    if (draft_) stretchDraft(pointer.at);
    return;
  }
  if (!stroke_->moved && distance(stroke_->from, pointer.at) < kStrokePixels * pointer.pixel) return;
  stroke_->moved = true;
  if (draws(tool_) && !stroke_->handle) {
    stretchDraft(pointer.at);
    return;
  }
  const AreaShape& start = stroke_->before.shapes()[*selected_];
  const AreaPoint& from = stroke_->from;
  if (stroke_->handle) {
    areas_.replace(*selected_, pulledArea(start, *stroke_->handle, from, pointer.at));
    if (stroke_->handle->kind == HandleKind::kInsert) vertex_ = stroke_->handle->vertex;
  } else {
    areas_.replace(*selected_, movedArea(start, {pointer.at.x - from.x, pointer.at.y - from.y}));
  }
}

void AreaEditor::stretchDraft(AreaPoint to) {
  if (tool_ == AreaTool::kPolygon) {
    // A stroke draws the first side, so that dragging is no worse than clicking.
    if (!draft_) draft_ = AreaShape::polygon({stroke_->from, to});
    draft_->vertices.back() = to;
    return;
  }
  const AreaPoint from = stroke_->from;
  const AreaPoint middle{(from.x + to.x) / 2.0, (from.y + to.y) / 2.0};
  const double width = std::abs(to.x - from.x);
  const double height = std::abs(to.y - from.y);
  if (tool_ == AreaTool::kCircle)
    draft_ = AreaShape::circle(from, distance(from, to));
  else if (tool_ == AreaTool::kEllipse)
    draft_ = AreaShape::ellipse(middle, width / 2.0, height / 2.0);
  else
    draft_ = AreaShape::rectangle(middle, width, height);
}

void AreaEditor::addVertex(const AreaPointer& pointer) {
  const AreaPoint& first = draft_->vertices.front();
  draft_->vertices.back() = pointer.at;
  if (draft_->vertices.size() > 3 && distance(first, pointer.at) <= kGrabPixels * pointer.pixel) {
    draft_->vertices.pop_back();
    keepDraft();
  } else {
    draft_->vertices.push_back(pointer.at);
  }
}

void AreaEditor::release(const AreaPointer& pointer) {
  if (!stroke_) return;
  move(pointer);
  Stroke stroke = std::move(*stroke_);
  stroke_.reset();
  const bool drawing = draws(tool_) && !stroke.handle;
  if (!drawing) {
    if (areas_.shapes() != stroke.before.shapes()) keepStep(std::move(stroke.before));
  } else if (tool_ == AreaTool::kPolygon) {
    if (!draft_) draft_ = AreaShape::polygon({stroke.from, pointer.at});
    if (stroke.moved) draft_->vertices.push_back(pointer.at);
  } else if (!stroke.moved) {
    select(areaAt(pointer));
  } else if (draft_->sizeX > 0.0 && draft_->sizeY > 0.0) {
    keepDraft();
  } else {
    draft_.reset();
  }
}

bool AreaEditor::doubleClick(const AreaPointer& pointer) {
  if (tool_ == AreaTool::kMoveMap) return false;
  if (draft_) {
    // The click before has set a vertex here already.
    closePolygon();
    return true;
  }
  if (draws(tool_) && !handleAt(pointer)) return true;
  return editVertices(pointer) || hit(pointer).area.has_value();
}

bool AreaEditor::editVertices(const AreaPointer& pointer) {
  if (!selected_ || areas_.shapes()[*selected_].kind != AreaKind::kPolygon) return false;
  AreaShape shape = areas_.shapes()[*selected_];
  if (const auto handle = handleAt(pointer); handle && handle->kind == HandleKind::kVertex) {
    vertex_ = handle->vertex;
    return shape.vertices.size() > 3 && remove();
  }
  const OutlinePlace place = nearestPlace(shape.vertices, pointer.at);
  if (place.distance > kGrabPixels * pointer.pixel) return false;
  shape.vertices.insert(shape.vertices.begin() + static_cast<std::ptrdiff_t>(place.side + 1), place.at);
  AreaList before = areas_;
  areas_.replace(*selected_, std::move(shape));
  vertex_ = place.side + 1;
  keepStep(std::move(before));
  return true;
}

bool AreaEditor::closePolygon() {
  if (!draft_ || tool_ != AreaTool::kPolygon || stroke_ || draft_->vertices.size() < 4) return false;
  draft_->vertices.pop_back();  // the pointer
  keepDraft();
  return true;
}

bool AreaEditor::takeBackVertex() {
  if (!draft_ || tool_ != AreaTool::kPolygon || stroke_) return false;
  const AreaPoint pointer = draft_->vertices.back();
  draft_->vertices.pop_back();
  draft_->vertices.back() = pointer;
  if (draft_->vertices.size() < 2) draft_.reset();
  return true;
}

bool AreaEditor::abandon() {
  if (busy()) {
    if (stroke_) areas_ = std::move(stroke_->before);
    stroke_.reset();
    draft_.reset();
    vertex_.reset();
    return true;
  }
  const bool had = selected_.has_value();
  select(std::nullopt);
  return had;
}

bool AreaEditor::remove() {
  if (!selected_ || busy()) return false;
  AreaList before = areas_;
  AreaShape shape = areas_.shapes()[*selected_];
  if (vertex_ && shape.vertices.size() > 3) {
    shape.vertices.erase(shape.vertices.begin() + static_cast<std::ptrdiff_t>(*vertex_));
    areas_.replace(*selected_, std::move(shape));
    vertex_.reset();
  } else {
    areas_.remove(*selected_);
    select(std::nullopt);
  }
  keepStep(std::move(before));
  return true;
}

bool AreaEditor::nudge(AreaPoint by) {
  if (!selected_ || busy()) return false;
  AreaList before = areas_;
  areas_.replace(*selected_, movedArea(areas_.shapes()[*selected_], by));
  keepStep(std::move(before));
  return true;
}

void AreaEditor::keepDraft() {
  AreaList before = areas_;
  areas_.add(std::move(*draft_));
  draft_.reset();
  select(areas_.shapes().size() - 1);
  keepStep(std::move(before));
}

void AreaEditor::keepStep(AreaList before) {
  if (past_.size() == kMostSteps) past_.erase(past_.begin());
  past_.push_back(std::move(before));
  future_.clear();
}

void AreaEditor::stepTo(std::vector<AreaList>& from, std::vector<AreaList>& to) {
  to.push_back(std::exchange(areas_, std::move(from.back())));
  from.pop_back();
  const bool stays = selected_ && *selected_ < areas_.shapes().size();
  select(stays ? selected_ : std::nullopt);
}

bool AreaEditor::undo() {
  if (busy()) return abandon();
  if (past_.empty()) return false;
  stepTo(past_, future_);
  return true;
}

bool AreaEditor::redo() {
  if (busy() || future_.empty()) return false;
  stepTo(future_, past_);
  return true;
}

}  // namespace lumo
