// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/SpectraText.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "core/TextForm.h"

namespace lumo {

namespace {

// "[Jy]" of "Flux Density [%sJy] (log scale)"; the place of the scale prefix stays empty.
std::string bracketedUnit(const std::string& title) {
  const std::size_t open = title.find('[');
  const std::size_t close = title.find(']', open);
  if (open == std::string::npos || close == std::string::npos) return {};
  std::string unit = title.substr(open, close - open + 1);
  if (const std::size_t prefix = unit.find("%s"); prefix != std::string::npos) unit.erase(prefix, 2);
  std::replace(unit.begin(), unit.end(), ' ', '_');
  return unit;
}

bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](double one, double other) { return one == other || (one != one && other != other); });
}

bool shareFrequencies(const SpectrumGraph& graph) {
  return std::all_of(graph.curves.begin(), graph.curves.end(), [&graph](const SpectrumCurve& curve) {
    return sameNumbers(curve.freqs(), graph.curves.front().freqs());
  });
}

std::string headerLines(const SpectrumGraph& graph) {
  const std::string unit = bracketedUnit(graph.yTitle);
  std::string header = "# frequency" + bracketedUnit(graph.xTitle);
  std::string legends;
  for (std::size_t k = 1; k <= graph.curves.size(); ++k) {
    const std::string number = toStr(static_cast<std::int64_t>(k));
    header.append(" flux_density_").append(number).append(unit).append(" error_").append(number).append(unit);
    legends += "# curve " + number + ": " + graph.curves[k - 1].legend() + "\n";
  }
  return header + "\n" + legends;
}

/// Row `i` of the points of curve `owner`, or of all curves.
std::string pointRow(const SpectrumGraph& graph, std::size_t i, const SpectrumCurve* owner) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  std::string line = valToStr((owner != nullptr ? *owner : graph.curves.front()).freqs()[i]);
  for (const SpectrumCurve& curve : graph.curves) {
    const bool counts = owner == nullptr || owner == &curve;
    line += " " + valToStr(counts ? curve.fluxes()[i] : kNone);
    line += " " + valToStr(counts ? curve.errors()[i] : kNone);
  }
  return line + "\n";
}

}  // namespace

std::string spectrumColumns(const SpectrumGraph& graph) {
  std::string text = headerLines(graph);
  if (graph.curves.empty()) return text;
  if (shareFrequencies(graph)) {
    for (std::size_t i = 0; i < graph.curves.front().count(); ++i) text += pointRow(graph, i, nullptr);
    return text;
  }
  for (const SpectrumCurve& curve : graph.curves)
    for (std::size_t i = 0; i < curve.count(); ++i) text += pointRow(graph, i, &curve);
  return text;
}

std::string tableCsv(const MeanSigmaTable& table) {
  std::string text = "Frequency [Hz]";
  for (int column = 1; column < table.columnCount(); ++column)
    text += "," + csvField(table.headerText(0, column));
  text += "\n";
  for (int row = 1; row < table.rowCount(); ++row) {
    text += valToStr(table.frequency(row));
    for (int column = 1; column < table.columnCount(); ++column)
      text += "," + valToStr(table.value(row, column));
    text += "\n";
  }
  return text;
}

}  // namespace lumo
