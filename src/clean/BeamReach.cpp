// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/BeamReach.h"

#include <algorithm>
#include <cfloat>

namespace lumo {

namespace {

constexpr int kMaxBeams = 7;
/// Covers the rounding to float.
constexpr double kUp = 1.0 + 1e-6;

/// Largest reach in one block of beam elements. The costly bound is formed only where the quick one, which is
/// never below it, exceeds what was found so far, beginning with the element whose quick bound is largest.
class BlockReach {
 public:
  BlockReach(const APtrArray<AMatrix<float>*>& beams, const BeamNorm& norm) : beams_(beams), norm_(norm) {}

  double largest(std::size_t firstRow, std::size_t firstColumn) {
    const std::size_t rows = std::min<std::size_t>(beams_[0]->rows(), firstRow + BeamReach::kRowsPerEntry);
    const std::size_t width = std::min(beams_[0]->columns() - firstColumn, BeamReach::kColumnsPerEntry);
    std::size_t count = 0;
    for (std::size_t row = firstRow; row < rows; ++row, count += width) {
      const std::size_t offset = row * beams_[0]->columns() + firstColumn;
      const float* below[kMaxBeams];
      for (std::int32_t m = 0; m < beams_.count(); ++m) below[m] = beams_[m]->data() + offset;
      norm_.quickFourths(below, width, fourths_ + count);
      for (std::size_t i = 0; i < width; ++i) offset_[count + i] = offset + i;
    }
    const auto first = static_cast<std::size_t>(std::max_element(fourths_, fourths_ + count) - fourths_);
    double found = norm_.reach(valuesAt(offset_[first]));
    for (std::size_t i = 0; i < count; ++i)
      if (fourths_[i] > found * found * found * found && i != first)
        found = std::max(found, norm_.reach(valuesAt(offset_[i])));
    return found;
  }

 private:
  const double* valuesAt(std::size_t offset) {
    for (std::int32_t m = 0; m < beams_.count(); ++m)
      values_[m] = static_cast<double>(beams_[m]->data()[offset]);
    return values_;
  }

  static_assert(BeamReach::kColumnsPerEntry <= BeamNorm::kMostQuick);
  static constexpr std::size_t kElements = BeamReach::kRowsPerEntry * BeamReach::kColumnsPerEntry;
  const APtrArray<AMatrix<float>*>& beams_;
  const BeamNorm& norm_;
  double values_[kMaxBeams] = {};
  std::size_t offset_[kElements] = {};
  double fourths_[kElements] = {};
};

/// Replaces every entry of a periodic line of blocks by the maximum over the blocks that `length` elements
/// from any element of its block on can touch. All blocks have `perBlock` elements, but the last may have
/// fewer.
void spread(std::vector<float>& line, std::size_t elements, std::size_t perBlock, std::size_t length) {
  const std::vector<float> blocks = line;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    std::size_t covered = 0;
    std::size_t block = i;
    for (std::size_t taken = 0; taken < blocks.size() && covered < perBlock - 1 + length; ++taken) {
      line[i] = std::max(line[i], blocks[block]);
      covered += std::min(perBlock, elements - block * perBlock);
      block = block + 1 == blocks.size() ? 0 : block + 1;
    }
  }
}

}  // namespace

void BeamReach::prepare(const APtrArray<AMatrix<float>*>& beams, const BeamNorm& norm, std::uint32_t tileRows,
                        std::uint32_t tileColumns, ThreadTeam& team) {
  const std::size_t rows = beams[0]->rows();
  const std::size_t columns = beams[0]->columns();
  const std::size_t entryRows = (rows + kRowsPerEntry - 1) / kRowsPerEntry;
  entriesPerRow_ = (columns + kColumnsPerEntry - 1) / kColumnsPerEntry;
  table_.assign(entryRows * entriesPerRow_, 0.0F);

  team.run(entryRows, [&](std::size_t entryRow, std::size_t /*member*/) {
    BlockReach block(beams, norm);
    for (std::size_t entry = 0; entry < entriesPerRow_; ++entry)
      table_[entryRow * entriesPerRow_ + entry] =
          static_cast<float>(kUp * block.largest(entryRow * kRowsPerEntry, entry * kColumnsPerEntry)) +
          FLT_MIN;
  });

  std::vector<float> line(entriesPerRow_);
  for (std::size_t entryRow = 0; entryRow < entryRows; ++entryRow) {
    float* const row = table_.data() + entryRow * entriesPerRow_;
    line.assign(row, row + entriesPerRow_);
    spread(line, columns, kColumnsPerEntry, tileColumns);
    std::copy(line.begin(), line.end(), row);
  }
  line.resize(entryRows);
  for (std::size_t entry = 0; entry < entriesPerRow_; ++entry) {
    for (std::size_t i = 0; i < entryRows; ++i) line[i] = table_[i * entriesPerRow_ + entry];
    spread(line, rows, kRowsPerEntry, tileRows);
    for (std::size_t i = 0; i < entryRows; ++i) table_[i * entriesPerRow_ + entry] = line[i];
  }
}

}  // namespace lumo
