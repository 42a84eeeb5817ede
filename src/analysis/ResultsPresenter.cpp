// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/ResultsPresenter.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>
#include <system_error>
#include <utility>

#include "analysis/MaskedStatistics.h"
#include "core/TextForm.h"
#include "io/AMapFile.h"
#include "io/MapProduct.h"
#include "io/ProductNames.h"

namespace lumo {

namespace {

std::string sizeText(const AMatrix<float>& map) {
  return toStr(map.rows()) + " x " + toStr(map.columns()) + " pixels";
}

bool sameSize(const AMatrix<float>& a, const AMatrix<float>& b) {
  return a.rows() == b.rows() && a.columns() == b.columns();
}

bool isThere(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

std::vector<double> frequencyGrid(double freqMin, double freqMax, int count) {
  std::vector<double> freq(static_cast<std::size_t>(count), freqMin);
  for (int u = 0; count > 1 && u < count; ++u)
    freq[static_cast<std::size_t>(u)] = freqMin + (freqMax - freqMin) * u / (count - 1);
  return freq;
}

std::vector<double> rowOf(const AMatrix<double>& matrix, std::uint32_t row) {
  const double* const first = matrix.data() + static_cast<std::size_t>(matrix.columns()) * row;
  return {first, first + matrix.columns()};
}

}  // namespace

ResultsPresenter::ResultsPresenter(std::string folder, std::string prefix, double freqMin, double freqMax)
    : folder_(std::move(folder)), prefix_(std::move(prefix)), freqMin_(freqMin), freqMax_(freqMax) {}

Status ResultsPresenter::load() {
  if (Status status = checkProducts(); !status.ok()) return status;
  rangeStatus_ = readFrequencies();
  AMapFile index;
  if (index.Open(indexName(folder_, prefix_), AFile::kRead) == 0) return index.status();
  return readTerms();
}

Status ResultsPresenter::checkProducts() const {
  if (!folder_.empty() && !isThere(folder_))
    return {StatusCode::kNotFound, "there is no such folder", folder_};
  const std::string first = cleanName(folder_, prefix_, 0);
  if (!isThere(first))
    return {StatusCode::kNotFound,
            "is not there; measuring needs the CLEAN maps that a run leaves under this folder and prefix",
            first};
  const std::string index = indexName(folder_, prefix_);
  if (!isThere(index))
    return {StatusCode::kNotFound,
            "is not there; a run of order 1 makes no spectral-index map, and spectra need order 2 or more",
            index};
  return {};
}

Status ResultsPresenter::readFrequencies() {
  const std::string name = freqRangeName(folder_, prefix_);
  if (!isThere(name)) return {StatusCode::kNotFound, "is not there", name};
  std::ifstream stream(name);
  if (!stream.is_open()) return {StatusCode::kReadFailed, "cannot be opened", name};
  stream.imbue(std::locale::classic());
  double lowest = 0.0;
  double highest = 0.0;
  if (!(stream >> lowest >> highest))
    return {StatusCode::kBadFormat, "does not begin with the lowest and the highest frequency in Hz", name};
  if (!std::isfinite(highest) || !(lowest > 0.0) || !(lowest <= highest))
    return {StatusCode::kBadFormat,
            "says " + valToStr(lowest) + " to " + valToStr(highest) +
                " Hz; frequencies are positive, the lowest first",
            name};
  freqMin_ = lowest;
  freqMax_ = highest;
  return {};
}

Status ResultsPresenter::readTerms() {
  termMaps_.clear();
  for (int term = 0; term < kMostTerms; ++term) {
    const std::string name = cleanName(folder_, prefix_, term);
    LoadedMap map;
    Status status = readMap(name, map);
    if (status.ok() && term > 0 && !sameSize(*map.matrix, intensity()))
      status = {StatusCode::kBadFormat,
                "has " + sizeText(*map.matrix) + ", the map of term 0 has " + sizeText(intensity()), name};
    if (!status.ok()) {
      // Two terms make a spectrum; where the row of higher ones ends is not a failure.
      if (term < 2) return status;
      break;
    }
    if (term == 0) {
      mapHeader_ = map.header;
      mapRange_ = map.range;
    }
    termMaps_.push_back(std::move(map.matrix));
  }
  return {};
}

Status ResultsPresenter::measure(const AreaSettings& settings, AreaSpectra& spectra) const {
  spectra = AreaSpectra();
  if (settings.pointCount < 1 || settings.pointCount > kMostPoints)
    return {StatusCode::kInvalidValue, "the number of frequency points is " + toStr(settings.pointCount) +
                                           "; it must be from 1 to " + toStr(kMostPoints)};
  LoadedMap residual;
  spectra.noiseStatus = readMap(residualName(folder_, prefix_), residual);
  spectra.error = spectra.noiseStatus.ok() ? 0.5 * mapDeviation(*residual.matrix)
                                           : std::numeric_limits<double>::quiet_NaN();
  spectra.refFreq = mapHeader_.frequency;
  spectra.freq = frequencyGrid(freqMin_, freqMax_, settings.pointCount);
  const std::size_t areaCount = settings.areas.areaCount();
  spectra.flux.resize(static_cast<std::uint32_t>(areaCount), static_cast<std::uint32_t>(settings.pointCount));
  spectra.fluxErr = spectra.flux;
  for (std::size_t k = 0; k < areaCount; ++k) measureArea(settings.areas, k, spectra);
  return {};
}

void ResultsPresenter::measureArea(const AreaList& areas, std::size_t k, AreaSpectra& spectra) const {
  const AMatrix<float>& zero = *termMaps_[0];
  const AMatrix<float>& first = *termMaps_[1];
  double zeroSum = 0.0;
  double firstSum = 0.0;
  // Row by row, so that a sum has the same bits whatever way its pixels are found.
  areas.visitPixels(k, zero.rows(), zero.columns(), mapRange_, [&](std::uint32_t row, std::uint32_t column) {
    const float a = zero(row, column);
    const float b = first(row, column);
    if (!std::isfinite(a) || a == 0.0F || !std::isfinite(b)) return;
    zeroSum += a;
    firstSum += b;
  });
  // The index of an area is the ratio of the sums: a mean of the index map would weight faint pixels like
  // bright ones.
  const double index = firstSum / zeroSum;
  const double flux = zeroSum / beamPixels(mapHeader_, mapRange_, zero);
  spectra.areaTermSum.push_back(firstSum);
  spectra.areaIndex.push_back(index);
  spectra.areaFlux.push_back(flux);
  const auto area = static_cast<std::uint32_t>(k);
  for (std::uint32_t u = 0; u < spectra.flux.columns(); ++u) {
    spectra.flux(area, u) = std::pow(spectra.freq[u] / spectra.refFreq, index) * flux;
    spectra.fluxErr(area, u) = spectra.error;
  }
}

Status headerFrequencies(const std::string& path, double& freqMin, double& freqMax) {
  AMapFile file;
  AMapHeader header;
  if (file.Open(path, AFile::kRead) == 0 || header.Load(file) == 0) return file.status();
  const double half = std::isfinite(header.bandwidth) ? header.bandwidth / 2.0 : 0.0;
  freqMin = header.frequency - half;
  freqMax = header.frequency + half;
  return {};
}

double mapDeviation(const AMatrix<float>& map) {
  double sum = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < map.size(); ++i) {
    const double value = map.data()[i];
    sum += value;
    squares += value * value;
  }
  const auto count = static_cast<double>(map.size());
  const double mean = sum / count;
  const double variance = squares / count - mean * mean;
  // Rounding takes the variance of a constant map below zero.
  return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

std::string valueTitle(const std::string& unit) {
  return unit.empty() ? std::string() : "[%s" + unit + "]";
}

MeanSigmaTable spectraTable(const AreaSpectra& spectra) {
  MeanSigmaTable table;
  table.setData(spectra.flux, spectra.fluxErr, spectra.freq);
  return table;
}

SpectrumGraph spectraGraph(const AreaSpectra& spectra, const AreaSettings& settings) {
  SpectrumGraph graph = emptyGraph(settings, "Flux Density [%sJy]");
  for (std::uint32_t area = 0; area < spectra.flux.rows(); ++area) {
    SpectrumCurve curve;
    curve.setData(spectra.freq, rowOf(spectra.flux, area), rowOf(spectra.fluxErr, area));
    curve.refFreq = spectra.refFreq;
    curve.refIntensity = spectra.areaFlux[area];
    curve.specIndex = spectra.areaIndex[area];
    graph.curves.push_back(std::move(curve));
  }
  return graph;
}

}  // namespace lumo
