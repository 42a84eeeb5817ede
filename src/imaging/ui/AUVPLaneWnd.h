// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "view/AAxisWnd.h"

namespace lumo {

/// The plot window of the uv plane: an AAxisWnd that goes to paper by way of a picture in memory, so that
/// millions of points make a page of bounded size.
class AUVPLaneWnd : public AAxisWnd {
  Q_OBJECT

 public:
  using AAxisWnd::AAxisWnd;

  /// Gives the graphs the printer's abort test. What is no display gets a picture of the rectangle's pixels,
  /// or of 4096 along its longer side where it has more; should there be no memory for it, and on a display,
  /// the plot is drawn directly.
  void PrintWindow(PrintDevice& device, const QRect& rectangle, const PrintFlags& flags) override;
};

}  // namespace lumo
