// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/Profile.h"

// Bytes are kept as they are: no conversion between encodings is wanted, nor the library that does it.
#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <new>
#include <string_view>
#include <utility>

#include "core/AFile.h"
#include "core/PendingFile.h"
#include "core/TextForm.h"

namespace lumo {

namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr std::string_view kLineEnds("\n\r\0", 3);

bool isQuoted(std::string_view text) {
  return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

std::string toLine(const std::string& value) {
  const bool trimmed = !value.empty() && (kBlanks.find(value.front()) != std::string_view::npos ||
                                          kBlanks.find(value.back()) != std::string_view::npos);
  return trimmed || isQuoted(value) ? '"' + value + '"' : value;
}

std::string fromLine(std::string_view line) {
  return std::string(isQuoted(line) ? line.substr(1, line.size() - 2) : line);
}

}  // namespace

struct Profile::Content {
  CSimpleIniA ini;
};

Profile::Profile(std::string path) : path_(std::move(path)) {}

Profile::~Profile() = default;

int Profile::fail(const Status& status) {
  status_ = status.about(path_);
  return 0;
}

bool Profile::ready() {
  if (content_ != nullptr) return usable_;
  content_ = std::make_unique<Content>();
  content_->ini.SetSpaces(false);
  const Status status = load();
  usable_ = status.ok();
  if (!usable_) fail(status);
  return usable_;
}

Status Profile::load() {
  AFile file;
  if (file.Open(path_, AFile::kRead) == 0) {
    if (file.status().code() == StatusCode::kNotFound) return {};
    return file.status();
  }
  if (file.remaining() > kMaxBytes)
    return {StatusCode::kBadFormat, "is " + toStr(static_cast<std::int64_t>(file.remaining())) +
                                        " bytes long; a profile has at most " + toStr(kMaxBytes)};
  std::string text(file.remaining(), '\0');
  if (file.Read(text.data(), text.size()) == 0) return file.status();
  if (text.find('\0') != std::string::npos)
    return {StatusCode::kBadFormat, "is not a text profile: it holds NUL bytes"};
  if (content_->ini.LoadData(text.data(), text.size()) < 0)
    return {StatusCode::kBadFormat, "cannot be read as a profile"};
  return {};
}

std::int32_t Profile::GetProfileInt(const std::string& section, const std::string& key,
                                    std::int32_t fallback) {
  const char* const line = ready() ? content_->ini.GetValue(section.c_str(), key.c_str()) : nullptr;
  return line != nullptr ? textToInt(fromLine(line)) : fallback;
}

std::string Profile::GetProfileString(const std::string& section, const std::string& key,
                                      const std::string& fallback) {
  const char* const line = ready() ? content_->ini.GetValue(section.c_str(), key.c_str()) : nullptr;
  return line != nullptr ? fromLine(line) : fallback;
}

int Profile::WriteProfileInt(const std::string& section, const std::string& key, std::int32_t value) {
  return WriteProfileString(section, key, toStr(value));
}

int Profile::WriteProfileString(const std::string& section, const std::string& key,
                                const std::string& value) {
  if (!ready()) return 0;
  if (value.find_first_of(kLineEnds) != std::string::npos)
    return fail({StatusCode::kInvalidValue,
                 "cannot keep the value of " + key + ": it holds a line end or a NUL byte"});
  if (content_->ini.SetValue(section.c_str(), key.c_str(), toLine(value).c_str()) < 0)
    return fail({StatusCode::kOutOfMemory, "cannot keep the value of " + key});
  return held_ ? 1 : save();
}

int Profile::flush() {
  held_ = false;
  return ready() ? save() : 0;
}

int Profile::save() {
  std::string text;
  if (content_->ini.Save(text) < 0) return fail({StatusCode::kOutOfMemory, "cannot be put together"});
  if (text.size() > kMaxBytes)
    return fail({StatusCode::kInvalidValue, "would grow to " + toStr(static_cast<std::int64_t>(text.size())) +
                                                " bytes; a profile has at most " + toStr(kMaxBytes)});
  const Status status = writeWholeFile(path_, text);
  return status.ok() ? 1 : fail(status);
}

}  // namespace lumo
