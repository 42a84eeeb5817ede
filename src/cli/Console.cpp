// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Console.h"

#include <cmath>
#include <cstdio>

#include "cli/Command.h"
#include "core/TextForm.h"

namespace lumo {

void complain(const std::string& text) {
  std::fprintf(stderr, "lumo-cli: %s\n", printable(text).c_str());
}

int reportFailure(const Status& status) {
  complain(status.text());
  return kExitFailed;
}

Json failureJson(const Status& status) {
  return Json{
      {"code", statusCodeName(status.code())}, {"message", status.message()}, {"file", status.file()}};
}

void printJson(const Json& object) {
  const std::string text = object.dump(2, ' ', false, Json::error_handler_t::replace);
  std::printf("%s\n", text.c_str());
}

Json finiteOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

}  // namespace lumo
