// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace lumo {

/// What the CLEAN dialog asks of the main window. Called on the user-interface thread.
class MainWindowLink {
 public:
  virtual ~MainWindowLink() = default;
  virtual void setTitle(const std::string& title) = 0;
  virtual void minimise() = 0;
  /// Shows the window in its normal state.
  virtual void restore() = 0;
  /// Notes something the user may want to know of, without interrupting; one line, UTF-8.
  virtual void log(const std::string& text) = 0;
};

}  // namespace lumo
