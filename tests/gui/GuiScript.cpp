// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/GuiScript.h"

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QTimer>
#include <utility>

namespace lumo::test {

namespace {

constexpr std::chrono::milliseconds kPeriod(2);

}  // namespace

GuiScript::GuiScript(std::function<void()> rescue, std::chrono::seconds patience)
    : rescue_(std::move(rescue)), patience_(patience), since_(std::chrono::steady_clock::now()) {
  schedule();
}

GuiScript::~GuiScript() {
  EXPECT_EQ(next_, steps_.size()) << "steps of the script were not reached";
}

GuiScript& GuiScript::step(std::function<bool()> step) {
  steps_.push_back(std::move(step));
  return *this;
}

GuiScript& GuiScript::then(std::function<void()> action) {
  return step([action = std::move(action)] {
    action();
    return true;
  });
}

void GuiScript::schedule() {
  QTimer::singleShot(kPeriod, &context_, [this] { advance(); });
}

void GuiScript::advance() {
  // Before the step: it may open a modal window, whose loop must come back here for the next one.
  schedule();
  if (next_ < steps_.size() && !failed_) {
    const std::size_t current = next_++;
    if (steps_[current]()) {
      since_ = std::chrono::steady_clock::now();
      return;
    }
    next_ = current;
  }
  if (next_ < steps_.size() && std::chrono::steady_clock::now() - since_ > patience_) {
    if (!failed_) ADD_FAILURE() << "step " << next_ << " of the script did not come about";
    failed_ = true;
    if (rescue_) rescue_();
    if (QWidget* const window = QApplication::activeModalWidget()) window->close();
  }
}

void pressKey(QWidget& window, int key) {
  QWidget* const target = window.focusWidget() != nullptr ? window.focusWidget() : &window;
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(target, &press);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
  QApplication::sendEvent(target, &release);
}

}  // namespace lumo::test
