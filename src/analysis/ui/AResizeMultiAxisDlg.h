// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>
#include <string>
#include <vector>

#include "analysis/SpectrumCurve.h"
#include "view/AMultiAxisDlgWnd.h"

class QCheckBox;
class QComboBox;

namespace lumo {

class AFQSGraph;

/// The spectrum graph in a window of any size: scales and colours can be switched while it is shown, a fit
/// can be drawn over the spectra, and the graph can be saved as a picture or as columns of numbers, and
/// printed.
class AResizeMultiAxisDlg : public QDialog {
  Q_OBJECT

 public:
  explicit AResizeMultiAxisDlg(SpectrumGraph graph, QWidget* parent = nullptr);

  /// The graph as it is set now.
  [[nodiscard]] const SpectrumGraph& graph() const { return graph_; }
  [[nodiscard]] AMultiAxisDlgWnd& graphWindow() const { return *window_; }
  /// The curves drawn, in their order.
  [[nodiscard]] const std::vector<AFQSGraph*>& curves() const { return curves_; }

  /// Writes the points as columns of text.
  [[nodiscard]] Status saveColumns(const std::string& path) const;

 protected:
  /// Above the plot, where a narrow window has no room for the whole legend, a tool tip tells it.
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] std::unique_ptr<AMSD2DAxisMulti> makeFrame();
  [[nodiscard]] QLayout* makeTools();
  [[nodiscard]] QLayout* makeButtons();
  void makeRoomForLegends();
  void changeScales();
  void changeColours();
  void changeFit();
  void saveAsText();

  SpectrumGraph graph_;
  std::vector<AFQSGraph*> curves_;  // belong to the frame, which belongs to window_
  AMultiAxisDlgWnd* window_;        // this and the controls belong to Qt as children of this window
  QCheckBox* logarithmicX_;
  QCheckBox* logarithmicY_;
  QCheckBox* inverted_;
  QComboBox* fit_;
};

}  // namespace lumo
