// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/ABMakeParameters.h"

#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/LittleEndian.h"
#include "core/TextForm.h"
#include "imaging/Fft.h"
#include "io/AUVXSources.h"

namespace lumo {

namespace {

constexpr char kMark[4] = {'A', 'M', 'P', '1'};

// The transform takes some powers of two from 32768 on again; grids of those sizes are not offered.
constexpr std::int32_t kLargestLength = 2048;

/// Calls f with every field in the order of the file.
template <typename Block, typename F>
void forEachField(Block& p, F&& f) {
  const auto all = [&f](auto&... fields) { (f(fields), ...); };
  all(p.uvLimitU, p.uvLimitV, p.uvScaleU, p.uvScaleV, p.shiftX, p.shiftY, p.halfSizeX, p.halfSizeY,
      p.weightingMode, p.uniformBoxU, p.uniformBoxV, p.kernelWidthU, p.kernelWidthV, p.kernelType,
      p.taperWidthU, p.taperWidthV, p.taperParam3, p.taperParam4, p.taperType, p.useVisWeights);
}

Status invalid(const char* field, const std::string& value, const char* expected) {
  return {StatusCode::kInvalidValue, std::string(field) + " is " + value + "; expected " + expected};
}

}  // namespace

bool ABMakeParameters::isUsableColumns(std::int32_t halfSizeX) {
  return halfSizeX <= kLargestLength && isTransformLength(halfSizeX);
}

bool ABMakeParameters::isUsableRows(std::int32_t halfSizeY) {
  return halfSizeY >= 2 && halfSizeY <= kLargestLength / 2 && isTransformLength(std::int64_t{2} * halfSizeY);
}

Status ABMakeParameters::validate() const {
  if (!isUsableColumns(halfSizeX))
    return invalid("halfSizeX", std::to_string(halfSizeX), "one of 2, 4, 16, 32, 256, 512, 1024, 2048");
  if (!isUsableRows(halfSizeY))
    return invalid("halfSizeY", std::to_string(halfSizeY), "one of 2, 8, 16, 128, 256, 512, 1024");
  for (const auto& [name, value] : {std::pair{"uvLimitU", uvLimitU}, std::pair{"uvLimitV", uvLimitV}})
    if (!std::isfinite(value) || value < 0) return invalid(name, valToStr(value), "a number not below 0");
  for (const auto& [name, value] :
       {std::pair{"shiftX", shiftX}, std::pair{"shiftY", shiftY}, std::pair{"taperParam3", taperParam3},
        std::pair{"taperParam4", taperParam4}})
    if (!std::isfinite(value)) return invalid(name, valToStr(value), "a finite number");
  for (const auto& [name, value] :
       {std::pair{"kernelWidthU", kernelWidthU}, std::pair{"kernelWidthV", kernelWidthV},
        std::pair{"taperWidthU", taperWidthU}, std::pair{"taperWidthV", taperWidthV}})
    if (!std::isfinite(value) || value < 0) return invalid(name, valToStr(value), "a number not below 0");
  for (const auto& [name, value] :
       {std::pair{"uniformBoxU", uniformBoxU}, std::pair{"uniformBoxV", uniformBoxV}})
    if (!std::isfinite(value) || value > 2) return invalid(name, valToStr(value), "a number not above 2");
  if (kernelType < kKernelPillBox || kernelType > kKernelHat)
    return invalid("kernelType", std::to_string(kernelType),
                   "1 (pill box), 2 (Gauss), 3 (Lorentz) or 4 (hat)");
  if (taperType < kTaperNone || taperType > kTaperTh)
    return invalid("taperType", std::to_string(taperType), "1 (none), 2 (Gauss), 3 (Lorentz) or 4 (th)");
  return {};
}

int ABMakeParameters::Setup(const AUVXFile& file, std::int32_t sourceId) {
  status_ =
      AUVXSources(file).ForID(sourceId) != nullptr
          ? validate()
          : Status(StatusCode::kBadFormat, "has no source with ID " + std::to_string(sourceId), file.name());
  if (!status_.ok()) return 0;
  if (uvLimitU == 0) uvLimitU = kDefaultUvLimit;
  if (uvLimitV == 0) uvLimitV = kDefaultUvLimit;
  return 1;
}

int ABMakeParameters::Store(AFile& file) const {
  std::vector<std::uint8_t> bytes(kMark, kMark + sizeof kMark);
  forEachField(*this, [&bytes](const auto& field) {
    const std::size_t at = bytes.size();
    bytes.resize(at + sizeof field);
    storeLittle<std::remove_cvref_t<decltype(field)>>(bytes.data() + at, field);
  });
  return file.Write(bytes.data(), bytes.size());
}

int ABMakeParameters::Load(AFile& file) {
  char mark[sizeof kMark];
  if (file.Read(mark, sizeof mark) == 0 || std::memcmp(mark, kMark, sizeof mark) != 0) return 0;
  ABMakeParameters loaded;
  bool complete = true;
  forEachField(loaded, [&](auto& field) {
    std::uint8_t bytes[sizeof field];
    complete = complete && file.Read(bytes, sizeof bytes) != 0;
    if (complete) field = loadLittle<std::remove_cvref_t<decltype(field)>>(bytes);
  });
  if (!complete) return 0;
  *this = loaded;
  return 1;
}

}  // namespace lumo
