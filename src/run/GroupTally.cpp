// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/GroupTally.h"

#include <algorithm>
#include <cmath>

#include "io/UvxTables.h"

namespace lumo {

namespace {

/// The last number from `inside` towards `outside` for which `holds`, which changes once between them.
/// `inside` where there is no number between them.
template <typename Holds>
double lastThat(double inside, double outside, Holds holds) {
  for (;;) {
    const double middle = (inside + outside) / 2;
    if (!(middle > std::min(inside, outside) && middle < std::max(inside, outside))) return inside;
    (holds(middle) ? inside : outside) = middle;
  }
}

}  // namespace

GridReach::GridReach(const GridGeometry& grid)
    : top_(lastThat(
          0, 2 * grid.uMax,
          [&](double u) { return std::trunc((u + grid.uMax) * grid.perDu + 0.5) - grid.nx < grid.columns; })),
      lowest_(lastThat(0, -2 * grid.vMax, [&](double v) { return (v + grid.vMax) * grid.perDv > -0.5; })),
      highest_(lastThat(0, 2 * grid.vMax, [&](double v) {
        return std::trunc((v + grid.vMax) * grid.perDv + 0.5) < grid.rows;
      })) {}

TallyRules::TallyRules(const VisibilityInputs& inputs, std::int32_t file, const UvxShape& shape, bool weights,
                       const TileCover::Layout& itsLayout, const GridReach& itsReach)
    : mix(inputs.mixes[file]),
      source(static_cast<std::int16_t>(inputs.sources[file])),
      channels(shape.channels),
      channelBytes(shape.products * sizeof(AUVXComplex)),
      useWeights(weights),
      layout(itsLayout),
      reach(itsReach) {
  const AUVXFqTbl& table = inputs.tables[file];
  selections.resize(static_cast<std::size_t>(table.GetFreqSels()));
  for (int s = 0; s < table.GetFreqSels(); ++s) {
    if (inputs.selections[file](s) == 0) continue;
    Selection& selection = selections[static_cast<std::size_t>(s)];
    for (int i = 0; i < table.GetIFs(); ++i) selection.frequencies.push_back(table.GetFreq(0, i, s));
    for (const double hertz : selection.frequencies) selection.highest = std::max(selection.highest, hertz);
  }
  for (std::size_t byte = 0; byte < selectionOf.size(); ++byte) {
    const int s = table.GetFreqSelNum(static_cast<std::int8_t>(byte));
    selectionOf[byte] = s >= 0 && inputs.selections[file](s) != 0 ? s : -1;
  }
}

void GroupTally::add(const TallyRules& rules, const std::uint8_t* group) {
  const UvxRecord record = UvxRecord::load(group);
  const std::int32_t number = rules.selectionOf[static_cast<std::uint8_t>(record.freqSel)];
  if (number < 0 || record.source != rules.source) return;
  ++records_;
  if (record.isFlagged() || !std::isfinite(record.u) || !std::isfinite(record.v)) return;
  const auto index = static_cast<std::size_t>(number);
  const TallyRules::Selection& selection = rules.selections[index];
  if (selections_.size() <= index) selections_.resize(index + 1);
  Selection& tally = selections_[index];
  if (tally.bands.empty()) tally.bands.resize(selection.frequencies.size());
  const std::uint64_t before = usable_;
  const std::uint8_t* const visibilities = group + UvxRecord::kBytes;
  if (rules.mix.second() < 0)
    addBands<false>(rules, selection, visibilities, record.u, record.v, tally.bands);
  else
    addBands<true>(rules, selection, visibilities, record.u, record.v, tally.bands);
  if (usable_ != before)
    tally.cover.add(rules.layout, record.u * selection.highest, record.v * selection.highest);
}

template <bool kTwoProducts>
void GroupTally::addBands(const TallyRules& rules, const TallyRules::Selection& selection,
                          const std::uint8_t* visibilities, double u, double v, std::vector<Band>& bands) {
  const double length = u * u + v * v;
  // Most points lie inside even at the highest frequency.
  const bool allInside = rules.reach.holds(u * selection.highest, v * selection.highest);
  for (std::size_t i = 0; i < bands.size(); ++i) {
    std::uint64_t usable = 0;
    double weight = 0;
    for (std::size_t c = 0; c < rules.channels; ++c, visibilities += rules.channelBytes) {
      const AUVXComplex value = rules.mix.fromBytes<kTwoProducts>(visibilities);
      const bool good = value.isUsable();
      usable += good ? 1 : 0;
      weight += good ? double{value.Weight()} : 0.0;
    }
    if (usable == 0) continue;
    usable_ += usable;
    weight_ += weight;
    Band& band = bands[i];
    ++band.points;
    const double hertz = selection.frequencies[i];
    if (allInside || rules.reach.holds(u * hertz, v * hertz))
      band.weight += rules.useWeights ? weight / static_cast<double>(usable) : 1.0;
    else
      ++band.outside;
    band.maxU = std::max(band.maxU, std::abs(u));
    band.maxV = std::max(band.maxV, std::abs(v));
    band.shortest = std::min(band.shortest, length);
    band.longest = std::max(band.longest, length);
  }
}

void GroupTally::merge(const GroupTally& later) {
  records_ += later.records_;
  usable_ += later.usable_;
  weight_ += later.weight_;
  if (selections_.size() < later.selections_.size()) selections_.resize(later.selections_.size());
  for (std::size_t s = 0; s < later.selections_.size(); ++s) {
    const Selection& from = later.selections_[s];
    if (from.bands.empty()) continue;
    Selection& to = selections_[s];
    if (to.bands.empty()) to.bands.resize(from.bands.size());
    to.cover.merge(from.cover);
    for (std::size_t i = 0; i < from.bands.size(); ++i) {
      Band& band = to.bands[i];
      band.points += from.bands[i].points;
      band.outside += from.bands[i].outside;
      band.weight += from.bands[i].weight;
      band.maxU = std::max(band.maxU, from.bands[i].maxU);
      band.maxV = std::max(band.maxV, from.bands[i].maxV);
      band.shortest = std::min(band.shortest, from.bands[i].shortest);
      band.longest = std::max(band.longest, from.bands[i].longest);
    }
  }
}

}  // namespace lumo
