// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/PlotLoader.h"

#include <dlfcn.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "core/Paths.h"

namespace lumo {

namespace {

constexpr const char* kModuleName = "lumo_plot.so";

// Empty where there is none.
std::string modulePath() {
  const std::string home = getExePath();
  std::error_code error;
  for (const std::string& folder : {home, home + "../lib/lumo/"})
    if (std::filesystem::exists(folder + kModuleName, error)) return folder + kModuleName;
  return {};
}

}  // namespace

Status drawWithModule(const LumoPlotRequest& request) {
  const std::string path = modulePath();
  if (path.empty())
    return {StatusCode::kUnsupported, std::string("this lumo-cli was built without drawing (no ") +
                                          kModuleName + " beside it or in ../lib/lumo)"};
  // Never closed: the window library does not bear being unloaded.
  void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return {StatusCode::kUnsupported, ::dlerror(), path};
  auto* const function = reinterpret_cast<LumoPlotFunction*>(::dlsym(module, LUMO_PLOT_FUNCTION));
  if (function == nullptr) return {StatusCode::kUnsupported, "is not a drawing module of lumo-cli", path};
  LumoPlotAnswer answer{};
  if (function(&request, &answer) == 0) return {};
  return {StatusCode::kWriteFailed, answer.message, answer.file};
}

}  // namespace lumo
