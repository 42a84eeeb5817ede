// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ImagerLink.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace lumo {

#ifdef _WIN32

namespace {

class WindowsImagerLink : public ImagerLink {
 public:
  Window findWindow(const std::string& className) override {
    return reinterpret_cast<Window>(FindWindowA(className.c_str(), nullptr));
  }
  void start(const std::string& command) override { WinExec(command.c_str(), SW_SHOW); }
  void wait(std::chrono::milliseconds time) override { Sleep(static_cast<DWORD>(time.count())); }
  void post(Window window, unsigned message, std::uintptr_t first, std::intptr_t second) override {
    PostMessageA(reinterpret_cast<HWND>(window), message, first, second);
  }
};

}  // namespace

std::unique_ptr<ImagerLink> systemImagerLink() {
  return std::make_unique<WindowsImagerLink>();
}

#else

std::unique_ptr<ImagerLink> systemImagerLink() {
  return nullptr;
}

#endif

}  // namespace lumo
