// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ui/SpectrumPicture.h"

#include <QLayout>
#include <utility>

#include "analysis/ui/AResizeMultiAxisDlg.h"

namespace lumo {

Status drawSpectrum(SpectrumGraph graph, const std::string& path) {
  constexpr QSize kSize(900, 700);
  AResizeMultiAxisDlg dialog(std::move(graph));
  dialog.resize(kSize);
  dialog.layout()->activate();
  AMultiAxisDlgWnd& window = dialog.graphWindow();
  if (window.layout() != nullptr) window.layout()->activate();
  return window.exportPicture(path);
}

}  // namespace lumo
