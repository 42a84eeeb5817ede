// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "convert/ChannelAverage.h"
#include "convert/ImportReport.h"
#include "convert/MsTables.h"
#include "core/Status.h"
#include "io/UvxTables.h"

namespace lumo {

/// How the rows of one data description become groups.
struct MsSetup {
  Status refusal;         ///< why they cannot; the rest means nothing then
  std::size_t shape = 0;  ///< of MsSetups::shapes()
  std::int8_t selection = 0;
  std::uint32_t channels = 0;               ///< of a row
  std::vector<std::uint32_t> correlations;  ///< of each stored product: its place in a row
  std::optional<ChannelAverage> average;    ///< where the channels do not go into one IF as they are
};

/// The file set-ups of a Measurement Set.
///
/// A spectral window becomes a frequency selection of its own, windows of one shape (IFs × channels ×
/// products) share a file. The windows of an instant are separate rows of the set and stay separate groups:
/// so each keeps its own time and uv point, no row order is relied on, and no room is spent on windows that a
/// baseline lacks. The selection's ID is the window's number where that is below 128, else one that is free.
///
/// A window is one IF with its channels, if these are evenly spaced to a hundredth of a channel and no
/// average is asked for. Otherwise its channels, or the averages of them, are IFs of one channel each.
class MsSetups {
 public:
  struct Shape {
    UvxShape shape;
    UvxProducts products;
    std::vector<UvxSelection> selections;
    std::string name;  ///< part of a file name that tells it from the set's other shapes
  };

  /// Interprets the data descriptions that `used` marks; the others stay refused. Notes what was done to
  /// them.
  MsSetups(const MsTables& tables, const std::vector<bool>& used, std::uint32_t average,
           ImportReport& report);

  /// One for each data description.
  [[nodiscard]] const std::vector<MsSetup>& setups() const { return setups_; }
  [[nodiscard]] const std::vector<Shape>& shapes() const { return shapes_; }

 private:
  [[nodiscard]] Status interpret(const MsTables& tables, const MsDescription& description,
                                 std::uint32_t average, MsSetup& setup, ImportReport& report);
  void nameShapes();
  void describe(ImportReport& report) const;

  std::vector<MsSetup> setups_;
  std::vector<Shape> shapes_;
  std::map<std::int32_t, std::size_t> frames_;  ///< windows whose frequencies are not topocentric, by frame
  std::vector<double> wide_;                    ///< relative spans of windows that one uv point does not suit
};

/// "spectral window 3 'name'" for messages.
[[nodiscard]] std::string msWindowName(const MsTables& tables, std::int32_t window);

/// The source that a field is. Fails for a phase centre that moves and for frames other than J2000 (FK5),
/// ICRS and B1950 (FK4). Its ID is the field's number + 1.
[[nodiscard]] Status msFieldSource(const MsTables& tables, std::int32_t field, AUVXSourceItem& source,
                                   ImportReport& report);

}  // namespace lumo
