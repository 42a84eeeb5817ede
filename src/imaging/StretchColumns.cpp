// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/StretchColumns.h"

#include <limits>

#include "core/LittleEndian.h"

// Compiled once per instruction set; the one to run is chosen when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/StretchColumns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lumo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

std::size_t columns(const std::uint8_t* const* /*values*/, std::size_t /*records*/, std::size_t /*record*/,
                    std::size_t /*ifs*/, Stretch::Means* /*means*/) {
  return 0;
}

#else

/// Records and floats that are transposed together.
constexpr std::size_t kBlock = 4;

/// kBlock floats of kBlock records go to as many rows, of which the first is at `to`.
HWY_INLINE void transposeBlock(const std::uint8_t* const* from, std::size_t byte, float* to) {
  constexpr std::size_t kRow = Stretch::Means::kPadded;
  const hn::FixedTag<float, kBlock> d;
  const hn::FixedTag<std::uint8_t, kBlock * sizeof(float)> bytes;
  const auto load = [&](std::size_t n) { return hn::BitCast(d, hn::LoadU(bytes, from[n] + byte)); };
  const auto low01 = hn::InterleaveLower(d, load(0), load(1));
  const auto high01 = hn::InterleaveUpper(d, load(0), load(1));
  const auto low23 = hn::InterleaveLower(d, load(2), load(3));
  const auto high23 = hn::InterleaveUpper(d, load(2), load(3));
  hn::StoreU(hn::ConcatLowerLower(d, low23, low01), d, to);
  hn::StoreU(hn::ConcatUpperUpper(d, low23, low01), d, to + kRow);
  hn::StoreU(hn::ConcatLowerLower(d, high23, high01), d, to + 2 * kRow);
  hn::StoreU(hn::ConcatUpperUpper(d, high23, high01), d, to + 3 * kRow);
}

/// Weight 0 for kBlock records of one IF that are not usable.
HWY_INLINE void rejectUnusable(Stretch::Means& means, std::size_t record) {
  const hn::FixedTag<float, kBlock> d;
  const auto largest = hn::Set(d, std::numeric_limits<float>::max());
  const auto finite = [&](const float* values) {
    return hn::Le(hn::Abs(hn::LoadU(d, values + record)), largest);
  };
  const auto weight = hn::LoadU(d, means.weight + record);
  const auto usable = hn::And(hn::And(finite(means.re), finite(means.im)),
                              hn::And(hn::Gt(weight, hn::Zero(d)), hn::Le(weight, largest)));
  hn::StoreU(hn::IfThenElseZero(usable, weight), d, means.weight + record);
}

std::size_t columns(const std::uint8_t* const* values, std::size_t records, std::size_t record,
                    std::size_t ifs, Stretch::Means* means) {
  constexpr std::size_t kRow = Stretch::Means::kPadded;
  const std::size_t floats = 3 * ifs;
  auto* const rows = reinterpret_cast<float*>(means);  // they follow each other
  std::size_t done = 0;
  for (; done + kBlock <= records; done += kBlock, record += kBlock) {
    std::size_t i = 0;
    for (; i + kBlock <= floats; i += kBlock)
      transposeBlock(values + done, i * sizeof(float), rows + i * kRow + record);
    for (; i < floats; ++i)
      for (std::size_t n = 0; n < kBlock; ++n)
        rows[i * kRow + record + n] = loadLittle<float>(values[done + n] + i * sizeof(float));
    for (std::size_t n = 0; n < ifs; ++n) rejectUnusable(means[n], record);
  }
  return done;
}

#endif

}  // namespace lumo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lumo {

HWY_EXPORT(columns);

std::size_t takeColumns(const std::uint8_t* const* values, std::size_t records, std::size_t record,
                        std::size_t ifs, Stretch::Means* means) {
  return HWY_DYNAMIC_DISPATCH(columns)(values, records, record, ifs, means);
}

}  // namespace lumo

#endif
