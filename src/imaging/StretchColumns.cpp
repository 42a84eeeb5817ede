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

/// Floats of a record that are transposed at once.
constexpr std::size_t kBlock = 4;

/// Floats of a row, one of each record: as many records are transposed at once.
using Narrow = hn::FixedTag<float, kBlock>;
#if HWY_HAVE_SCALABLE
using Wide = Narrow;
#else
using Wide = hn::CappedTag<float, 16>;
#endif

/// kBlock floats of every fourth record.
template <class D>
HWY_INLINE hn::Vec<D> loadBlocks(D d, const std::uint8_t* const* from, std::size_t byte) {
  if constexpr (hn::MaxLanes(d) == kBlock) {
    const hn::FixedTag<std::uint8_t, kBlock * sizeof(float)> bytes;
    return hn::BitCast(d, hn::LoadU(bytes, *from + byte));
  } else {
    const hn::Half<D> half;
    constexpr std::size_t kRecords = hn::MaxLanes(half);
    return hn::Combine(d, loadBlocks(half, from + kRecords, byte), loadBlocks(half, from, byte));
  }
}

/// kBlock floats of Lanes(d) records go to as many rows, of which the first is at `to`.
template <class D>
HWY_INLINE void transposeBlock(D d, const std::uint8_t* const* from, std::size_t byte, float* to) {
  constexpr std::size_t kRow = Stretch::Means::kPadded;
  const hn::Repartition<double, D> pairs;
  const auto record = [&](std::size_t n) { return loadBlocks(d, from + n, byte); };
  const auto low01 = hn::BitCast(pairs, hn::InterleaveLower(d, record(0), record(1)));
  const auto high01 = hn::BitCast(pairs, hn::InterleaveUpper(d, record(0), record(1)));
  const auto low23 = hn::BitCast(pairs, hn::InterleaveLower(d, record(2), record(3)));
  const auto high23 = hn::BitCast(pairs, hn::InterleaveUpper(d, record(2), record(3)));
  const auto store = [&](auto row, std::size_t n) { hn::StoreU(hn::BitCast(d, row), d, to + n * kRow); };
  store(hn::InterleaveLower(pairs, low01, low23), 0);
  store(hn::InterleaveUpper(pairs, low01, low23), 1);
  store(hn::InterleaveLower(pairs, high01, high23), 2);
  store(hn::InterleaveUpper(pairs, high01, high23), 3);
}

/// Weight 0 for Lanes(d) records of one IF that are not usable.
template <class D>
HWY_INLINE void rejectUnusable(D d, Stretch::Means& means, std::size_t record) {
  const auto largest = hn::Set(d, std::numeric_limits<float>::max());
  const auto finite = [&](const float* values) {
    return hn::Le(hn::Abs(hn::LoadU(d, values + record)), largest);
  };
  const auto weight = hn::LoadU(d, means.weight + record);
  const auto usable = hn::And(hn::And(finite(means.re), finite(means.im)),
                              hn::And(hn::Gt(weight, hn::Zero(d)), hn::Le(weight, largest)));
  hn::StoreU(hn::IfThenElseZero(usable, weight), d, means.weight + record);
}

/// Lanes(d) records at a time. @return how many of them were done.
template <class D>
HWY_INLINE std::size_t transpose(D d, const std::uint8_t* const* values, std::size_t records,
                                 std::size_t record, std::size_t ifs, Stretch::Means* means) {
  constexpr std::size_t kRow = Stretch::Means::kPadded;
  constexpr std::size_t kRecords = hn::MaxLanes(d);
  const std::size_t floats = 3 * ifs;
  auto* const rows = reinterpret_cast<float*>(means);  // they follow each other
  std::size_t done = 0;
  for (; done + kRecords <= records; done += kRecords, record += kRecords) {
    std::size_t i = 0;
    for (; i + kBlock <= floats; i += kBlock)
      transposeBlock(d, values + done, i * sizeof(float), rows + i * kRow + record);
    for (; i < floats; ++i)
      for (std::size_t n = 0; n < kRecords; ++n)
        rows[i * kRow + record + n] = loadLittle<float>(values[done + n] + i * sizeof(float));
    for (std::size_t n = 0; n < ifs; ++n) rejectUnusable(d, means[n], record);
  }
  return done;
}

std::size_t columns(const std::uint8_t* const* values, std::size_t records, std::size_t record,
                    std::size_t ifs, Stretch::Means* means) {
  const std::size_t done = transpose(Wide(), values, records, record, ifs, means);
  return done + transpose(Narrow(), values + done, records - done, record + done, ifs, means);
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
