// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Status.h"

namespace lumo {

/// Reads the members of one JSON object whose keys are all known in advance.
///
/// parse(), then one call per key, then finish(), which reports the first thing that was wrong or a key that
/// nobody asked for. After a failure the readers return harmless values, so the caller need not look between.
/// No exception leaves the class.
class JsonObject {
 public:
  enum Presence { kRequired, kOptional };

  JsonObject();
  JsonObject(JsonObject&&) noexcept;
  JsonObject& operator=(JsonObject&&) noexcept;
  ~JsonObject();

  /// Parses a text that is one JSON object. A syntax error is reported with its line; brackets inside each
  /// other more than 8 times are refused.
  [[nodiscard]] static Status parse(std::string_view text, JsonObject& object);

  /// A finite number in [minimum, maximum]; 0 when it is absent and optional.
  double number(const std::string& key, double minimum, double maximum, Presence presence = kRequired);
  /// A string; empty when it is absent and optional.
  std::string text(const std::string& key, Presence presence = kRequired);
  /// The angle key_mas or key_arcsec (one of the two), in arcseconds, inside [minimum, maximum] arcseconds.
  double angleArcsec(const std::string& key, double minimum, double maximum);
  /// The objects of a non-empty array; each reports its place ("components[2].index").
  std::vector<JsonObject> list(const std::string& key, std::size_t maximum);

  /// Records a failure of a key, unless there is one already.
  void fail(const std::string& key, const std::string& what);
  [[nodiscard]] const Status& status() const { return status_; }
  [[nodiscard]] Status finish();

 private:
  struct Value;

  [[nodiscard]] bool has(const std::string& key) const;

  std::unique_ptr<Value> value_;
  std::string place_;  ///< prefix of the keys in messages
  std::vector<std::string> asked_;
  Status status_;
};

}  // namespace lumo
