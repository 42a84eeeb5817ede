// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "core/Status.h"

namespace lumo {

/// Ordered, so that the objects read in the order they are documented in.
using Json = nlohmann::ordered_json;

/// One line on standard error: "lumo-cli: TEXT".
void complain(const std::string& text);
/// The line for a failed status; returns kExitFailed.
int reportFailure(const Status& status);
/// {"code","message","file"} of a failure.
[[nodiscard]] Json failureJson(const Status& status);
/// Prints one JSON object on standard output. Text that is not UTF-8 gets replacement characters.
void printJson(const Json& object);
/// A number for JSON: null where it is not finite.
[[nodiscard]] Json finiteOrNull(double value);

}  // namespace lumo
