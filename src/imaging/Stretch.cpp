// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/Stretch.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "imaging/StretchColumns.h"
#include "io/UvxTables.h"

namespace lumo {

StretchReader::StretchReader(const AUVXFile& file, const IfBatch& batch, const CancelFlag* cancel)
    : file_(file),
      batch_(batch),
      cancel_(cancel),
      channels_(file.shape().channels),
      channelBytes_(file.shape().products * sizeof(AUVXComplex)),
      single_(channels_ == 1 && file.shape().products == 1 && batch.mix.second() < 0 &&
              std::endian::native == std::endian::little),
      copies_(copies(batch.ifs, file.shape().ifs, file.groupBytes())),
      atOnce_(copies_ ? kRoomBytes / file.groupBytes() : Stretch::kCapacity) {
  keepSelections(batch.selections.size());
}

void StretchReader::keepSelections(std::size_t count) {
  selections_.fill(kNotMeant);
  for (std::size_t i = 0; i < count; ++i)
    selections_[static_cast<std::uint8_t>(batch_.selections[i])] = static_cast<std::int16_t>(i);
}

bool StretchReader::read(std::uint64_t begin, std::uint64_t end, std::size_t ifs, Stretch& stretch,
                         Room& room) const {
  stretch.records = 0;
  for (std::uint64_t first = begin; first < end; first += atOnce_)
    if (!take(first, std::min(first + atOnce_, end), ifs, stretch, room)) return false;
  return true;
}

/// First byte of group `begin`, which is followed by the others.
const std::uint8_t* StretchReader::groups(std::uint64_t begin, std::uint64_t end, Room& room) const {
  if (!copies_) return file_.groupAt(begin);
  room.resize(kRoomBytes);
  // What cannot be read is zeros in the map, and the file is not intact() any more.
  return file_.copyGroups(begin, end, room.data()).ok() ? room.data() : file_.groupAt(begin);
}

bool StretchReader::take(std::uint64_t begin, std::uint64_t end, std::size_t ifs, Stretch& stretch,
                         Room& room) const {
  while (begin < end && !isMeant(begin)) ++begin;
  while (begin < end && !isMeant(end - 1)) --end;
  if (begin == end) return true;
  const std::uint8_t* bytes = groups(begin, end, room);
  const auto source = static_cast<std::int16_t>(batch_.sourceId);
  const std::size_t firstBytes = static_cast<std::size_t>(batch_.first) * channels_ * channelBytes_;
  const std::size_t first = stretch.records;
  const std::uint8_t* values[Stretch::kCapacity];  // of the records from the first on
  for (std::uint64_t group = begin; group < end; ++group, bytes += file_.groupBytes()) {
    if (!isMeant(group)) continue;
    const UvxRecord record = UvxRecord::load(bytes);
    const std::int16_t selection = selectionOf(record.freqSel);
    if (record.source != source || selection == kNotMeant) continue;
    if (!std::isfinite(record.u) || !std::isfinite(record.v)) continue;
    if (cancel_ != nullptr && cancel_->load(std::memory_order_relaxed) != 0) return false;
    if (record.isFlagged()) continue;
    stretch.u[stretch.records] = record.u;
    stretch.v[stretch.records] = record.v;
    stretch.selection[stretch.records] = static_cast<std::uint8_t>(selection);
    values[stretch.records - first] = bytes + UvxRecord::kBytes + firstBytes;
    ++stretch.records;
  }
  average(values, first, ifs, stretch);
  return true;
}

/// The records from `first` on, whose values begin at values[0] ...
void StretchReader::average(const std::uint8_t* const* values, std::size_t first, std::size_t ifs,
                            Stretch& stretch) const {
  std::size_t record = first;
  if (single_) record += takeColumns(values, stretch.records - first, first, ifs, stretch.ifs.data());
  for (; record < stretch.records; ++record) {
    if (batch_.mix.second() < 0)
      averageRecord<false>(values[record - first], record, ifs, stretch);
    else
      averageRecord<true>(values[record - first], record, ifs, stretch);
  }
}

template <bool kTwoProducts>
void StretchReader::averageRecord(const std::uint8_t* values, std::size_t record, std::size_t ifs,
                                  Stretch& stretch) const {
  for (std::size_t i = 0; i < ifs; ++i) {
    Stretch::Means& means = stretch.ifs[i];
    if (channels_ == 1) {
      // It is its own mean.
      const AUVXComplex value = batch_.mix.fromBytes<kTwoProducts>(values);
      values += channelBytes_;
      means.re[record] = value.Re();
      means.im[record] = value.Im();
      means.weight[record] = value.isUsable() ? value.Weight() : 0.0f;
      continue;
    }
    double re = 0, im = 0, weight = 0;
    int count = 0;
    for (std::size_t channel = 0; channel < channels_; ++channel, values += channelBytes_) {
      const AUVXComplex value = batch_.mix.fromBytes<kTwoProducts>(values);
      if (!value.isUsable()) continue;
      re += value.Re();
      im += value.Im();
      weight += value.Weight();
      ++count;
    }
    means.re[record] = static_cast<float>(re / count);
    means.im[record] = static_cast<float>(im / count);
    means.weight[record] = count != 0 ? static_cast<float>(weight / count) : 0.0f;
  }
}

}  // namespace lumo
