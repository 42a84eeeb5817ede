// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/UvGroupReader.h"

#include <algorithm>
#include <cmath>

#include "io/AUVXGroup.h"

namespace lumo {

namespace {

constexpr std::uint64_t kPointsAtOnce = 65536;
constexpr std::uint64_t kMostGroupsAtOnce = 4096;

}  // namespace

UvBands::UvBands(const UvPlaneData& data) {
  std::uint64_t most = 1;
  for (const AUVXFqTbl& table : data.tables) {
    most = std::max(most, std::uint64_t(table.GetIFs()) * std::uint64_t(table.GetChannels()));
    first_.push_back(static_cast<std::uint32_t>(rows_.size()));
    for (int row = 0; row < table.GetFreqSels(); ++row) rows_.push_back({&table, row});
  }
  groupsAtOnce_ = std::clamp<std::uint64_t>(kPointsAtOnce / most, 1, kMostGroupsAtOnce);
}

UvGroupReader::UvGroupReader(const UvPlaneData& data, const UvBands& bands, Place from)
    : data_(data), bands_(bands), file_(from.file), group_(from.group) {}

bool UvGroupReader::next(std::vector<UvGroup>& groups, std::uint64_t most) {
  groups.clear();
  while (!index_) {
    if (!openNext()) return false;
    if (group_ >= open_.groupCount()) closeFile();
  }
  const std::uint64_t end = std::min(open_.groupCount(), group_ + most);
  index_->limit(end);
  take(groups);
  group_ = end;
  if (status_ = open_.intact(); !status_.ok()) {
    groups.clear();
    closeFile();
    return false;
  }
  if (group_ >= open_.groupCount()) {
    closeFile();
  } else if ((group_ - released_) * open_.groupBytes() >= MappedFile::kResidentBytes) {
    open_.releaseBefore(group_);
    released_ = group_;
  }
  return true;
}

bool UvGroupReader::openNext() {
  if (!status_.ok() || file_ >= data_.names.count() || file_ >= data_.tables.count() ||
      file_ >= data_.sources.count())
    return false;
  if (open_.Open(data_.names[file_], AFile::kRead) == 0) {
    status_ = open_.status().about(data_.names[file_]);
    open_.Close();
    return false;
  }
  index_.emplace(open_, data_.sources[file_], nullptr, group_);
  released_ = group_;
  return true;
}

void UvGroupReader::closeFile() {
  index_.reset();
  open_.Close();
  ++file_;
  group_ = 0;
}

void UvGroupReader::take(std::vector<UvGroup>& groups) {
  const AUVXFqTbl& table = data_.tables[file_];
  AUVXGroup group;
  std::uint64_t position = 0;
  while (index_->GetIndex(position) != 0) {
    if (open_.SeekUVGroup(position) == 0 || group.load(open_) == 0) continue;
    const UvxRecord& record = group.record();
    if (record.isFlagged() || !std::isfinite(record.u) || !std::isfinite(record.v)) continue;
    const int row = table.GetFreqSelNum(record.freqSel);
    if (row < 0 || !data_.isSelected(file_, row)) continue;
    groups.push_back({record.u, record.v, bands_.index(file_, row)});
  }
}

double UvGroupReader::share() const {
  const std::int32_t files = data_.names.count();
  if (files == 0 || file_ >= files || !status_.ok()) return 1.0;
  const double inFile = index_ && open_.groupCount() > 0
                            ? static_cast<double>(group_) / static_cast<double>(open_.groupCount())
                            : 0.0;
  return (file_ + inFile) / files;
}

}  // namespace lumo
