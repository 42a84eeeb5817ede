// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace lumo {

/// What reaches another program's window: the calls of the window system, so that tests can stand in for it.
class ImagerLink {
 public:
  using Window = std::uintptr_t;  ///< a window of the system, 0 for none

  virtual ~ImagerLink() = default;
  /// The top-level window of a class, whatever its title.
  virtual Window findWindow(const std::string& className) = 0;
  /// Starts a program, its window shown normally. Whether it came up is not told.
  virtual void start(const std::string& command) = 0;
  virtual void wait(std::chrono::milliseconds time) = 0;
  /// Posts a message without waiting for it to be handled.
  virtual void post(Window window, unsigned message, std::uintptr_t first, std::intptr_t second) = 0;
};

/// The link of this system; null where there are no such windows, which is everywhere but on Windows.
[[nodiscard]] std::unique_ptr<ImagerLink> systemImagerLink();

}  // namespace lumo
