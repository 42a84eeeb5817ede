// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/JsonObject.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "core/TextForm.h"

namespace lumo {

struct JsonObject::Value {
  nlohmann::json json;
};

namespace {

constexpr double kArcsecPerMas = 1e-3;
constexpr int kDeepest = 8;

// True when brackets stand inside each other more than kDeepest times: each level takes fifty times its byte.
bool isDeep(std::string_view text) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size() && depth <= kDeepest; ++i) {
    const char c = text[i];
    if (c == '"') quoted = !quoted;
    if (quoted) {
      if (c == '\\') ++i;
    } else if (c == '[' || c == '{') {
      ++depth;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return depth > kDeepest;
}

std::string found(const nlohmann::json& value) {
  return std::string("found ") + value.type_name();
}

}  // namespace

JsonObject::JsonObject() : value_(std::make_unique<Value>()) {}
JsonObject::JsonObject(JsonObject&&) noexcept = default;
JsonObject& JsonObject::operator=(JsonObject&&) noexcept = default;
JsonObject::~JsonObject() = default;

Status JsonObject::parse(std::string_view text, JsonObject& object) {
  if (isDeep(text))
    return {StatusCode::kBadFormat, "its JSON is nested more than " + toStr(kDeepest) + " levels deep"};
  JsonObject read;
  try {
    read.value_->json = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
    const auto line = 1 + std::count(text.begin(), end, '\n');
    return {StatusCode::kBadFormat, "is not valid JSON, line " + toStr(line)};
  } catch (const nlohmann::json::exception&) {
    return {StatusCode::kBadFormat, "is not valid JSON"};
  }
  if (!read.value_->json.is_object())
    return {StatusCode::kBadFormat, "a JSON object is expected, " + found(read.value_->json)};
  object = std::move(read);
  return {};
}

bool JsonObject::has(const std::string& key) const {
  return value_->json.is_object() && value_->json.contains(key);
}

double JsonObject::number(const std::string& key, double minimum, double maximum, Presence presence) {
  asked_.push_back(key);
  if (!has(key)) {
    if (presence == kRequired) fail(key, "is missing");
    return 0;
  }
  const auto& json = value_->json[key];
  if (!json.is_number()) {
    fail(key, "a number is expected, " + found(json));
    return 0;
  }
  const double value = json.get<double>();
  if (!(value >= minimum && value <= maximum)) {
    fail(key, "is " + valToStr(value) + "; expected " + valToStr(minimum) + " to " + valToStr(maximum));
    return 0;
  }
  return value;
}

std::string JsonObject::text(const std::string& key, Presence presence) {
  asked_.push_back(key);
  if (!has(key)) {
    if (presence == kRequired) fail(key, "is missing");
    return {};
  }
  const auto& json = value_->json[key];
  if (!json.is_string()) {
    fail(key, "a string is expected, " + found(json));
    return {};
  }
  return json.get<std::string>();
}

double JsonObject::angleArcsec(const std::string& key, double minimum, double maximum) {
  const std::string inMas = key + "_mas", inArcsec = key + "_arcsec";
  if (has(inMas) && has(inArcsec)) fail(inMas + " and " + inArcsec, "both are given; expected one of them");
  if (has(inArcsec)) return number(inArcsec, minimum, maximum);
  if (has(inMas)) return number(inMas, minimum / kArcsecPerMas, maximum / kArcsecPerMas) * kArcsecPerMas;
  fail(inMas + " or " + inArcsec, "is missing");
  return 0;
}

std::vector<JsonObject> JsonObject::list(const std::string& key, std::size_t maximum) {
  asked_.push_back(key);
  std::vector<JsonObject> items;
  if (!has(key)) {
    fail(key, "is missing");
    return items;
  }
  auto& json = value_->json[key];
  if (!json.is_array() || json.empty() || json.size() > maximum) {
    fail(key, "an array of 1 to " + toStr(static_cast<std::int64_t>(maximum)) + " objects is expected, " +
                  (json.is_array() ? "found " + toStr(static_cast<std::int64_t>(json.size())) : found(json)));
    return items;
  }
  for (auto& element : json) {
    JsonObject item;
    item.place_ = place_ + key + "[" + toStr(static_cast<std::int64_t>(items.size())) + "].";
    if (!element.is_object()) {
      fail(key + "[" + toStr(static_cast<std::int64_t>(items.size())) + "]",
           "an object is expected, " + found(element));
      return {};
    }
    item.value_->json = std::move(element);
    items.push_back(std::move(item));
  }
  return items;
}

void JsonObject::fail(const std::string& key, const std::string& what) {
  if (status_.ok()) status_ = {StatusCode::kInvalidValue, place_ + key + ": " + what};
}

Status JsonObject::finish() {
  for (const auto& [key, ignored] : value_->json.items())
    if (std::find(asked_.begin(), asked_.end(), key) == asked_.end()) fail(key, "is not a known key");
  return status_;
}

}  // namespace lumo
