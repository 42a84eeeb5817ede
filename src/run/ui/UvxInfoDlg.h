// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>

#include "core/Status.h"

namespace lumo {

/// A read-only description of a visibility file: shape, sources, extents, tables, bands.
class UvxInfoDlg : public QDialog {
  Q_OBJECT

 public:
  /// `text` for a fixed-width font.
  UvxInfoDlg(const std::string& path, const std::string& text, QWidget* parent = nullptr);
};

/// Describes a file in a modal dialog above `parent`. Reads the whole file once to count what can be used.
/// Fails, without a dialog, when the file does not open.
Status UVXView(const std::string& path, QWidget* parent);

}  // namespace lumo
