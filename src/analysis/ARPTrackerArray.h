// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "analysis/AreaEditor.h"
#include "core/ABitMatrix.h"
#include "core/TMinMax.h"

namespace lumo {

/// The areas that are marked on a map, under the mouse of a user or at rest.
class ARPTrackerArray {
 public:
  ARPTrackerArray() = default;
  explicit ARPTrackerArray(AreaList areas) : editor_(std::move(areas)) {}
  virtual ~ARPTrackerArray() = default;

  /// Ends what the user is at: a polygon of three vertices or more is kept, anything else under way undone.
  virtual void EndWorking();
  /// Sets the mask bits of the pixels inside area `k` (from 0) and leaves the others as they are. `mask` is
  /// of rows × cols bits, `range` the map's. Returns 0, and does nothing, when there is no such area or the
  /// mask is of another size, else 1. For hosts of the editor that want one area's pixels; results are
  /// measured from areas(), over the same pixels (forEachPixel()).
  int FillMatrixForItem(std::size_t k, ABitMatrix& mask, std::uint32_t rows, std::uint32_t cols,
                        const TMinMax& range) const;

  [[nodiscard]] AreaEditor& editor() { return editor_; }
  [[nodiscard]] const AreaEditor& editor() const { return editor_; }
  [[nodiscard]] const AreaList& areas() const { return editor_.areas(); }

 protected:
  ARPTrackerArray(const ARPTrackerArray&) = default;
  ARPTrackerArray& operator=(const ARPTrackerArray&) = default;

 private:
  AreaEditor editor_;
};

}  // namespace lumo
