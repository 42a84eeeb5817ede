// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/MakeParametersModel.h"

#include <cmath>
#include <limits>
#include <string_view>
#include <variant>

#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {

namespace {

using Member = std::variant<double ABMakeParameters::*, std::int32_t ABMakeParameters::*>;

struct FieldEntry {
  const char* name;
  Member member;
};

using Block = ABMakeParameters;
constexpr std::array<FieldEntry, kMakeFieldCount> kFields{{
    {"uvLimitU", &Block::uvLimitU},
    {"uvLimitV", &Block::uvLimitV},
    {"uvScaleU", &Block::uvScaleU},
    {"uvScaleV", &Block::uvScaleV},
    {"shiftX", &Block::shiftX},
    {"shiftY", &Block::shiftY},
    {"halfSizeX", &Block::halfSizeX},
    {"halfSizeY", &Block::halfSizeY},
    {"weightingMode", &Block::weightingMode},
    {"uniformBoxU", &Block::uniformBoxU},
    {"uniformBoxV", &Block::uniformBoxV},
    {"kernelWidthU", &Block::kernelWidthU},
    {"kernelWidthV", &Block::kernelWidthV},
    {"kernelType", &Block::kernelType},
    {"taperWidthU", &Block::taperWidthU},
    {"taperWidthV", &Block::taperWidthV},
    {"taperParam3", &Block::taperParam3},
    {"taperParam4", &Block::taperParam4},
    {"taperType", &Block::taperType},
    {"useVisWeights", &Block::useVisWeights},
}};

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

std::size_t indexOf(MakeField field) {
  return static_cast<std::size_t>(field);
}

std::string_view trimmed(std::string_view text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Status refused(const FieldEntry& entry, const std::string& text, const char* expected) {
  const std::string found = trimmed(text).empty() ? "empty" : text;
  return {StatusCode::kInvalidValue, std::string(entry.name) + " is " + found + "; expected " + expected};
}

Status readField(const FieldEntry& entry, const std::string& text, Block& block) {
  if (const auto* const real = std::get_if<double Block::*>(&entry.member)) {
    if (parseDouble(trimmed(text), block.**real)) return {};
    return refused(entry, text, "a number");
  }
  std::int64_t value = 0;
  if (!parseInt(trimmed(text), value) || value != static_cast<std::int32_t>(value))
    return refused(entry, text, "a whole number");
  block.*std::get<std::int32_t Block::*>(entry.member) = static_cast<std::int32_t>(value);
  return {};
}

/// The field that a refusal by ABMakeParameters::validate() is about: its message starts with the name.
MakeField fieldNamed(std::string_view message) {
  const std::string_view name = message.substr(0, message.find(' '));
  for (std::size_t i = 0; i < kMakeFieldCount; ++i)
    if (name == kFields[i].name) return static_cast<MakeField>(i);
  return MakeField::kUvLimitU;
}

std::vector<std::int32_t> usableSizes(bool (*isUsable)(std::int32_t)) {
  constexpr std::int32_t kLargest = 2048;
  std::vector<std::int32_t> sizes;
  for (std::int32_t size = 1; size <= kLargest; ++size)
    if (isUsable(size)) sizes.push_back(size);
  return sizes;
}

MapExtent extent(double limit, double scale, double pixels) {
  MapExtent extent;
  if (limit == 0) limit = Block::kDefaultUvLimit;
  extent.gridLimit = limit > 0 && scale > 0 ? limit * scale : kUnknown;
  extent.cell = kArcsecPerRadian / (2 * extent.gridLimit);
  extent.field = pixels > 0 ? pixels * extent.cell : kUnknown;
  return extent;
}

constexpr int kShownDigits = 4;

}  // namespace

MakeParametersModel::MakeParametersModel(const ABMakeParameters& block) {
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) {
    if (const auto* const real = std::get_if<double Block::*>(&kFields[i].member))
      texts_[i] = valToStr(block.**real);
    else
      texts_[i] = toStr(block.*std::get<std::int32_t Block::*>(kFields[i].member));
  }
}

const char* MakeParametersModel::name(MakeField field) {
  return kFields[indexOf(field)].name;
}

const std::string& MakeParametersModel::text(MakeField field) const {
  return texts_[indexOf(field)];
}

void MakeParametersModel::setText(MakeField field, const std::string& text) {
  texts_[indexOf(field)] = text;
}

double MakeParametersModel::number(MakeField field) const {
  double value = kUnknown;
  return parseDouble(trimmed(text(field)), value) ? value : kUnknown;
}

MakeParametersModel::Result MakeParametersModel::read() const {
  Result result;
  for (std::size_t i = 0; i < kMakeFieldCount; ++i) {
    result.field = static_cast<MakeField>(i);
    result.status = readField(kFields[i], texts_[i], result.block);
    if (!result.status.ok()) return result;
  }
  for (const MakeField field : {MakeField::kUvScaleU, MakeField::kUvScaleV}) {
    const double scale = number(field);
    if (std::isfinite(scale) && scale >= 0) continue;
    result.field = field;
    result.status = refused(kFields[indexOf(field)], text(field), "a number not below 0");
    return result;
  }
  result.status = result.block.validate();
  if (!result.status.ok()) result.field = fieldNamed(result.status.message());
  return result;
}

bool MakeParametersModel::isUsed(MakeField field) const {
  const auto choice = [this](MakeField type) { return textToInt(text(type)); };
  const std::int32_t taper = choice(MakeField::kTaperType);
  switch (field) {
    case MakeField::kUniformBoxU:
    case MakeField::kUniformBoxV:
      return choice(MakeField::kWeightingMode) == kUniformWeighting;
    case MakeField::kKernelWidthU:
    case MakeField::kKernelWidthV:
      return choice(MakeField::kKernelType) != kKernelPillBox;
    case MakeField::kTaperWidthU:
      return taper != kTaperNone;
    case MakeField::kTaperWidthV:
      return taper != kTaperNone && taper != kTaperTh;
    case MakeField::kTaperParam3:
    case MakeField::kTaperParam4:
      return taper == kTaperTh;
    default:
      return true;
  }
}

MapExtent MakeParametersModel::extentX() const {
  return extent(number(MakeField::kUvLimitU), number(MakeField::kUvScaleU), number(MakeField::kHalfSizeX));
}

MapExtent MakeParametersModel::extentY() const {
  return extent(number(MakeField::kUvLimitV), number(MakeField::kUvScaleV), number(MakeField::kHalfSizeY));
}

std::vector<std::int32_t> MakeParametersModel::usableColumns() {
  return usableSizes(ABMakeParameters::isUsableColumns);
}

std::vector<std::int32_t> MakeParametersModel::usableRows() {
  return usableSizes(ABMakeParameters::isUsableRows);
}

std::string angleText(double arcsec) {
  constexpr double kMasPerArcsec = 1000.0;
  constexpr double kArcsecPerDegree = 3600.0;
  if (!std::isfinite(arcsec)) return "unknown";
  if (std::abs(arcsec) < 0.1) return nValToStr(arcsec * kMasPerArcsec, kShownDigits) + " mas";
  if (std::abs(arcsec) < 1000.0) return nValToStr(arcsec, kShownDigits) + " arcsec";
  return nValToStr(arcsec / kArcsecPerDegree, kShownDigits) + " deg";
}

std::string wavelengthText(double wavelengths) {
  if (!std::isfinite(wavelengths)) return "unknown";
  if (std::abs(wavelengths) < 1e3) return nValToStr(wavelengths, kShownDigits) + " λ";
  if (std::abs(wavelengths) < 1e6) return nValToStr(wavelengths / 1e3, kShownDigits) + " kλ";
  return nValToStr(wavelengths / 1e6, kShownDigits) + " Mλ";
}

}  // namespace lumo
