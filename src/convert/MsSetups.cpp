// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/MsSetups.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "convert/UvfitsFile.h"
#include "core/TextForm.h"
#include "core/Units.h"

namespace lumo {
namespace {

constexpr double kUneven = 0.01;      // of a channel, above which it is not where an even spacing puts it
constexpr double kWideWindow = 0.01;  // share of the frequency above which one uv point for a window shows
constexpr std::uint64_t kMaxVisibilities = (std::numeric_limits<std::uint32_t>::max() - 26) / 12;

/// Products by casacore's Stokes code 1..12.
struct Product {
  std::int32_t code;
  const char* name;
};
constexpr std::array<Product, 13> kProducts = {{{0, ""},
                                                {1, "I"},
                                                {2, "Q"},
                                                {3, "U"},
                                                {4, "V"},
                                                {-1, "RR"},
                                                {-3, "RL"},
                                                {-4, "LR"},
                                                {-2, "LL"},
                                                {-5, "XX"},
                                                {-7, "XY"},
                                                {-8, "YX"},
                                                {-6, "YY"}}};

std::string productName(std::int32_t code) {
  for (const Product& product : kProducts)
    if (product.code == code) return product.name;
  return {};
}

/// The stored products in the order of a UVFITS file, and the place of each in a row.
Status readProducts(const std::vector<std::int32_t>& stokes, UvxProducts& products,
                    std::vector<std::uint32_t>& places) {
  places.clear();
  if (stokes.empty()) return {StatusCode::kBadFormat, "its POLARIZATION names no correlations"};
  for (const std::int32_t code : stokes)
    if (code < 1 || code >= static_cast<std::int32_t>(kProducts.size()))
      return {StatusCode::kUnsupported,
              "its correlations have the Stokes code " + toStr(code) +
                  "; expected I Q U V (1 to 4), circular (5 to 8) or linear (9 to 12) products"};
  places.resize(stokes.size());
  std::iota(places.begin(), places.end(), 0U);
  const auto code = [&](std::uint32_t place) {
    return kProducts[static_cast<std::size_t>(stokes[place])].code;
  };
  std::stable_sort(places.begin(), places.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return std::abs(code(a)) < std::abs(code(b)); });
  products.clear();
  for (const std::uint32_t place : places) {
    if (!products.empty() && products.back() == code(place))
      return {StatusCode::kUnsupported, "its correlations name " + productName(code(place)) + " twice"};
    products.push_back(code(place));
  }
  return {};
}

/// Hz from channel to channel: of several channels that of the even spacing, of one its width.
double increment(const MsWindow& window) {
  const std::size_t channels = window.frequencies.size();
  if (channels > 1)
    return (window.frequencies.back() - window.frequencies.front()) / static_cast<double>(channels - 1);
  return window.widths.empty() ? 0.0 : window.widths.front();
}

bool isEven(const MsWindow& window, double step) {
  for (std::size_t c = 0; c < window.frequencies.size(); ++c) {
    const double expected = window.frequencies.front() + static_cast<double>(c) * step;
    if (std::abs(window.frequencies[c] - expected) > kUneven * std::abs(step)) return false;
  }
  return true;
}

Status checkWindow(const MsWindow& window) {
  if (window.frequencies.empty())
    return {StatusCode::kBadFormat, "it has no channel frequencies (CHAN_FREQ)"};
  for (std::size_t c = 0; c < window.frequencies.size(); ++c)
    if (!std::isfinite(window.frequencies[c]) || window.frequencies[c] <= 0)
      return {StatusCode::kBadFormat, "the frequency of its channel " + toStr(static_cast<std::int64_t>(c)) +
                                          " (CHAN_FREQ) is " + valToStr(window.frequencies[c]) +
                                          "; expected positive Hz"};
  const auto [low, high] = std::minmax_element(window.frequencies.begin(), window.frequencies.end());
  if (window.frequencies.size() > 1 && *low == *high)
    return {StatusCode::kBadFormat, "all its " + toStr(static_cast<std::int64_t>(window.frequencies.size())) +
                                        " channels have the frequency " + valToStr(*low) + " Hz (CHAN_FREQ)"};
  for (const double width : window.widths)
    if (!std::isfinite(width))
      return {StatusCode::kBadFormat, "a channel width (CHAN_WIDTH) is " + valToStr(width)};
  return {};
}

/// Spread of the frequencies as a share of their mean.
double relativeSpan(const MsWindow& window) {
  const auto [low, high] = std::minmax_element(window.frequencies.begin(), window.frequencies.end());
  return 2 * (*high - *low) / (*high + *low);
}

std::string frameName(std::int32_t code) {
  constexpr std::array<const char*, 9> kNames = {"REST", "LSRK",    "LSRD",   "BARY", "GEO",
                                                 "TOPO", "GALACTO", "LGROUP", "CMB"};
  return code >= 0 && code < static_cast<std::int32_t>(kNames.size()) ? kNames[static_cast<std::size_t>(code)]
                                                                      : "code " + toStr(code);
}

/// True for what an interferometer observes in, and for no frame at all.
bool isTopocentric(std::int32_t frame) {
  constexpr std::int32_t kTopocentric = 5;
  constexpr std::int32_t kUndefined = 64;
  return frame == kTopocentric || frame == kUndefined;
}

std::string windowCount(std::size_t count) {
  return count == 1 ? "1 spectral window" : toStr(static_cast<std::int64_t>(count)) + " spectral windows";
}

/// The window's number, or where a group cannot store it the first free ID; -129 when none is left.
std::int32_t freeSelection(const std::vector<UvxSelection>& taken, std::int32_t window) {
  const auto isFree = [&](std::int32_t id) {
    return std::none_of(taken.begin(), taken.end(), [&](const UvxSelection& s) { return s.id == id; });
  };
  if (window <= 127 && isFree(window)) return window;
  for (std::int32_t id = 127; id >= -128; --id)
    if (isFree(id)) return id;
  return -129;
}

}  // namespace

std::string msWindowName(const MsTables& tables, std::int32_t window) {
  std::string text = "spectral window " + toStr(window);
  if (window < 0 || window >= static_cast<std::int32_t>(tables.windows.size())) return text;
  const std::string& name = tables.windows[static_cast<std::size_t>(window)].name;
  return name.empty() ? text : text + " '" + name + "'";
}

MsSetups::MsSetups(const MsTables& tables, const std::vector<bool>& used, std::uint32_t average,
                   ImportReport& report) {
  setups_.resize(tables.descriptions.size());
  for (std::size_t i = 0; i < setups_.size(); ++i)
    setups_[i].refusal = used[i] ? interpret(tables, tables.descriptions[i], average, setups_[i], report)
                                 : Status(StatusCode::kNoData, "it has no rows");
  nameShapes();
  describe(report);
}

Status MsSetups::interpret(const MsTables& tables, const MsDescription& description, std::uint32_t average,
                           MsSetup& setup, ImportReport& report) {
  if (description.window < 0 || description.window >= static_cast<std::int32_t>(tables.windows.size()))
    return {StatusCode::kBadFormat, "the set does not list it"};
  if (description.polarization < 0 ||
      description.polarization >= static_cast<std::int32_t>(tables.correlations.size()))
    return {StatusCode::kBadFormat,
            "the set does not list its POLARIZATION_ID " + toStr(description.polarization)};
  const MsWindow& window = tables.windows[static_cast<std::size_t>(description.window)];
  UvxProducts products;
  Status status = checkWindow(window);
  if (status.ok())
    status = readProducts(tables.correlations[static_cast<std::size_t>(description.polarization)], products,
                          setup.correlations);
  if (!status.ok()) return status;
  setup.channels = static_cast<std::uint32_t>(window.frequencies.size());
  const auto productCount = static_cast<std::uint32_t>(products.size());
  if (std::uint64_t{setup.channels} * productCount > kMaxVisibilities)
    return {StatusCode::kUnsupported, "a group of so many channels and products is too large"};

  UvxSelection selection;
  UvxShape shape{1, setup.channels, productCount};
  const double step = increment(window);
  const bool even = isEven(window, step);
  if (average > 0 || !even) {
    setup.average.emplace(setup.channels, productCount, std::max(average, 1U));
    selection.bands = setup.average->bands(window.frequencies, window.widths.empty()
                                                                   ? std::vector<double>(setup.channels, step)
                                                                   : window.widths);
    shape = {setup.average->ifs(), 1, productCount};
  } else {
    selection.bands.push_back({window.frequencies.front(), step});
  }
  const auto known = std::find_if(shapes_.begin(), shapes_.end(), [&](const Shape& other) {
    return other.shape == shape && other.products == products;
  });
  setup.shape = static_cast<std::size_t>(known - shapes_.begin());
  if (known == shapes_.end()) shapes_.push_back({shape, products, {}, {}});
  std::vector<UvxSelection>& selections = shapes_[setup.shape].selections;
  selection.id = freeSelection(selections, description.window);
  if (selection.id < -128)
    return {StatusCode::kUnsupported, "256 other windows have the same shape, more than a file can hold"};
  setup.selection = static_cast<std::int8_t>(selection.id);
  selections.push_back(std::move(selection));

  if (!isTopocentric(window.frame)) ++frames_[window.frame];
  if (average == 0 && !even)
    report.notes.push_back(msWindowName(tables, description.window) +
                           ": its channels are not evenly spaced; each becomes an IF of its own");
  if (average == 0 && even && relativeSpan(window) > kWideWindow) wide_.push_back(relativeSpan(window));
  return {};
}

void MsSetups::describe(ImportReport& report) const {
  for (const auto& [frame, count] : frames_)
    report.notes.push_back("the frequencies of " + windowCount(count) + " have the frame " +
                           frameName(frame) + " (MEAS_FREQ_REF), not TOPO; they are taken as they stand");
  if (!wide_.empty())
    report.warnings.push_back(
        "the channels of " + windowCount(wide_.size()) + " span up to " +
        nValToStr(100 * *std::max_element(wide_.begin(), wide_.end()), 2) +
        " % of their frequency and share one uv point, which smears sources far from the "
        "phase centre; averaging makes every N channels an IF of their own");
}

void MsSetups::nameShapes() {
  for (Shape& shape : shapes_) {
    const bool oneChannel = shape.shape.channels == 1;
    shape.name = oneChannel ? toStr(shape.shape.ifs) + "if" : toStr(shape.shape.channels) + "ch";
    const auto alike = std::count_if(shapes_.begin(), shapes_.end(), [&](const Shape& other) {
      return other.shape.ifs == shape.shape.ifs && other.shape.channels == shape.shape.channels;
    });
    if (alike == 1) continue;
    for (const std::int32_t code : shape.products) shape.name += "-" + productName(code);
  }
}

Status msFieldSource(const MsTables& tables, std::int32_t field, AUVXSourceItem& source,
                     ImportReport& report) {
  constexpr std::size_t kNameBytes = 16;
  const MsField& entry = tables.fields[static_cast<std::size_t>(field)];
  if (field > std::numeric_limits<std::int16_t>::max() - 1)
    return {StatusCode::kUnsupported, "its number is above what the groups of a file can tell apart"};
  if (entry.ephemeris >= 0)
    return {StatusCode::kUnsupported, "it follows an ephemeris (EPHEMERIS_ID " + toStr(entry.ephemeris) +
                                          "); only a fixed phase centre can be imaged"};
  if (entry.direction.size() < 2) return {StatusCode::kBadFormat, "it has no phase centre (PHASE_DIR)"};
  if (std::any_of(entry.direction.begin() + 2, entry.direction.end(), [](double rate) { return rate != 0; }))
    return {StatusCode::kUnsupported,
            "its phase centre moves (PHASE_DIR is a polynomial in time); only a fixed one can be imaged"};
  source.id = field + 1;
  source.name = cleanText(entry.name.substr(0, kNameBytes), kNameBytes);
  source.epoch = 2000.0;
  if (entry.frame == "ICRS") {
    source.frame = UvxFrame::kIcrs;
  } else if (entry.frame == "J2000" || entry.frame.empty()) {
    source.frame = UvxFrame::kFk5;
  } else if (entry.frame == "B1950" || entry.frame == "B1950_VLA") {
    source.frame = UvxFrame::kFk4;
    source.epoch = 1950.0;
  } else {
    return {StatusCode::kUnsupported,
            "its phase centre has the frame '" + entry.frame + "'; expected J2000, ICRS or B1950"};
  }
  const double rightAscension = entry.direction[0] * kDegreePerRadian;
  source.declination = entry.direction[1] * kDegreePerRadian;
  // A hair beyond the pole is rounding.
  if (std::abs(source.declination) > 90 && std::abs(source.declination) < 90.0001)
    source.declination = std::copysign(90.0, source.declination);
  if (!std::isfinite(rightAscension) || std::abs(rightAscension) > 720 ||
      !(std::abs(source.declination) <= 90))
    return {StatusCode::kBadFormat, "its phase centre (PHASE_DIR) is " + valToStr(entry.direction[0]) + ", " +
                                        valToStr(entry.direction[1]) + "; expected radians on the sky"};
  source.rightAscension = rightAscension - 360.0 * std::floor(rightAscension / 360.0);
  if (entry.frame.empty())
    report.warnings.push_back("field " + toStr(field) + " '" + entry.name +
                              "': PHASE_DIR states no frame; the position is taken as J2000");
  return {};
}

}  // namespace lumo
