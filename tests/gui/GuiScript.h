// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QObject>
#include <QWidget>
#include <chrono>
#include <cstddef>
#include <functional>
#include <vector>

namespace lumo::test {

/// Drives modal windows from inside their event loops: each step is called again and again until it returns
/// true, then the next one. A step that does not succeed within `patience` fails the test; then `rescue` is
/// called and every modal window is closed, so that the loops return.
class GuiScript {
 public:
  explicit GuiScript(std::function<void()> rescue = {},
                     std::chrono::seconds patience = std::chrono::seconds(30));
  GuiScript(const GuiScript&) = delete;
  GuiScript& operator=(const GuiScript&) = delete;
  /// Fails the test when steps are left.
  ~GuiScript();

  GuiScript& step(std::function<bool()> step);
  /// A step that needs no waiting.
  GuiScript& then(std::function<void()> action);

 private:
  void schedule();
  void advance();

  std::vector<std::function<bool()>> steps_;
  std::size_t next_ = 0;
  std::function<void()> rescue_;
  std::chrono::seconds patience_;
  std::chrono::steady_clock::time_point since_;
  bool failed_ = false;
  QObject context_;
};

/// The modal window on top as a `Window`; null if it is another kind or there is none.
template <typename Window>
[[nodiscard]] Window* modalWindow() {
  return qobject_cast<Window*>(QApplication::activeModalWidget());
}

/// Presses and releases a key in the window's focus widget, or in the window itself.
void pressKey(QWidget& window, int key);

}  // namespace lumo::test
