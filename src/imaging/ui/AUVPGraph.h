// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <functional>
#include <memory>
#include <string>

#include "core/Status.h"
#include "imaging/UvPlaneWorker.h"
#include "view/AGraph.h"
#include "view/APrintable.h"

namespace lumo {

/// The coverage of the uv plane: for every point P of a selection of data a cross at P and one at -P, dots
/// where crosses would hide each other (see uvMarkSize()). Dots are the darker the more points they stand
/// for, on a logarithmic scale.
///
/// On the screen it fills up while a worker reads the files, and while a new part is being drawn it shows the
/// picture there is, moved and enlarged. A picture that is kept is always complete: the one of the screen
/// where it has the same pixels, otherwise one that is read from the files at once, on the calling thread.
class AUVPGraph : public AGraph {
 public:
  /// `changed`, which may be empty, is called on the worker's thread when there is more to show.
  explicit AUVPGraph(std::function<void()> changed = {});

  /// Takes the data and begins to read.
  void SetData(UvPlaneData data);
  [[nodiscard]] const UvPlaneData& data() const { return worker_->data(); }
  /// The printer's abort test, asked while a picture that is kept is drawn.
  void setPrinterAbort(PrintAbort isAborted) { isAborted_ = std::move(isAborted); }
  /// How far the picture on the screen is.
  [[nodiscard]] UvPicture progress() const { return worker_->latest(); }
  /// True when the last frame showed the newest picture, drawn for just that part of the plane.
  [[nodiscard]] bool isShown() const { return isShown_; }
  /// Why the last picture that was kept does not show every file; ok otherwise.
  [[nodiscard]] const Status& keptStatus() const { return keptStatus_; }

  /// A square about the origin that holds everything.
  [[nodiscard]] PlotRect extent() const override;
  void draw(const GraphPainter& target) const override;
  void drawToKeep(const GraphPainter& target) const override;
  /// u and v, and the baseline's length and position angle, in wavelengths.
  [[nodiscard]] std::string readOut(double u, double v) const override;

 private:
  [[nodiscard]] std::shared_ptr<const UvHitGrid> gridToKeep(const UvFrame& frame) const;

  std::function<void()> changed_;
  std::unique_ptr<UvPlaneWorker> worker_;
  PrintAbort isAborted_;
  mutable std::shared_ptr<const UvHitGrid> shown_;
  mutable QImage image_;  ///< of shown_
  mutable bool isShown_ = false;
  mutable Status keptStatus_;
};

/// The counted points as marks on a transparent picture of the grid's size.
[[nodiscard]] QImage uvImage(const UvHitGrid& grid, const QColor& colour);

}  // namespace lumo
