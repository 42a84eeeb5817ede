// SPDX-License-Identifier: GPL-3.0-or-later
#include "imaging/StraightGridding.h"

#include <cmath>
#include <memory>

#include "imaging/AB3DFunc.h"

namespace lumo::test {

namespace {

using Complex = std::complex<double>;
using ComplexGrid = std::vector<Complex>;
using RealGrid = std::vector<double>;

bool usable(float re, float im, float weight) {
  return std::isfinite(re) && std::isfinite(im) && std::isfinite(weight) && weight > 0;
}

struct Sample {
  float re, im, weight;
};

/// The stored I, or the mean of the two hands (products RR and LL).
Sample mixed(const TestFile& file, const AUVXComplex* products) {
  const AUVXComplex& a = products[0];
  if (file.content.shape.products == 1) return {a.Re(), a.Im(), a.Weight()};
  const AUVXComplex& b = products[1];
  if (!usable(a.Re(), a.Im(), a.Weight()) || !usable(b.Re(), b.Im(), b.Weight())) return {0, 0, 0};
  const double wa = a.Weight();
  const double wb = b.Weight();
  return {static_cast<float>((static_cast<double>(a.Re()) + static_cast<double>(b.Re())) / 2),
          static_cast<float>((static_cast<double>(a.Im()) + static_cast<double>(b.Im())) / 2),
          static_cast<float>(4 * wa * wb / (wa + wb))};
}

class StraightGridder {
 public:
  StraightGridder(const ABMakeParameters& parameters, int order, double referenceFrequency)
      : p_(parameters), order_(order), nu0_(referenceFrequency) {
    uMax_ = p_.uvLimitU * p_.uvScaleU;
    vMax_ = p_.uvLimitV * p_.uvScaleV;
    nx_ = p_.halfSizeX;
    result_.rows = 2 * p_.halfSizeY;
    result_.columns = nx_ + 1;
    du_ = 2 * uMax_ / (2 * nx_);
    dv_ = 2 * vMax_ / (2 * p_.halfSizeY);
    const std::size_t cells = static_cast<std::size_t>(result_.rows) * static_cast<std::size_t>(nx_ + 1);
    result_.beams.assign(static_cast<std::size_t>(2 * order - 1), ComplexGrid(cells));
    result_.dirty.assign(static_cast<std::size_t>(order), ComplexGrid(cells));
    d_.assign(cells, 0.0);
    if (p_.kernelType == 1) kernel_ = std::make_unique<APillBox3DFunc>(du_, dv_);
    if (p_.kernelType == 2)
      kernel_ = std::make_unique<AGauss3DFunc>(p_.kernelWidthU * du_, p_.kernelWidthV * dv_);
    if (p_.kernelType == 3)
      kernel_ = std::make_unique<ALorentz3DFunc>(p_.kernelWidthU * du_, p_.kernelWidthV * dv_);
    if (p_.kernelType == 4)
      kernel_ = std::make_unique<AHat3DFunc>(p_.kernelWidthU * du_, p_.kernelWidthV * dv_);
    if (p_.taperType == 1) taper_ = std::make_unique<APillBox3DFunc>(0.0, 0.0);
    if (p_.taperType == 2) taper_ = std::make_unique<AGauss3DFunc>(p_.taperWidthU, p_.taperWidthV);
    if (p_.taperType == 3) taper_ = std::make_unique<ALorentz3DFunc>(p_.taperWidthU, p_.taperWidthV);
    if (p_.taperType == 4)
      taper_ = std::make_unique<ATH3DFunc>(p_.taperWidthU, p_.taperWidthU, p_.taperParam3, p_.taperParam4);
    hu_ = static_cast<std::int64_t>(kernel_->halfWidthX() / du_ + 0.7);
    hv_ = static_cast<std::int64_t>(kernel_->halfWidthY() / dv_ + 0.7);
  }

  void addFile(const TestFile& file) {
    for (std::size_t r = 0; r < file.content.selections.size(); ++r) {
      if (file.used(static_cast<std::int32_t>(r)) == 0) continue;
      const UvxSelection& selection = file.content.selections[r];
      for (std::size_t j = 0; j < file.content.shape.ifs; ++j)
        addFrequency(file, selection.id, j, selection.bands[j].frequency);
    }
  }

  StraightGrids finish() {
    if (p_.weightingMode == 2) weightUniformly();
    return std::move(result_);
  }

 private:
  void addFrequency(const TestFile& file, int selectionId, std::size_t j, double nu) {
    const double f = nu * (1 / nu0_) - 1;
    b_.assign(d_.size(), 0.0);
    v_.assign(d_.size(), Complex());
    w_.assign(d_.size(), 0.0);
    for (const TestFile::Group& group : file.groups) {
      const UvxRecord& record = group.record;
      if (record.source != static_cast<std::int16_t>(file.source) || record.freqSel != selectionId) continue;
      if (!std::isfinite(record.u) || !std::isfinite(record.v)) continue;
      if (record.flag != 0) continue;
      addRecord(file, group, j, nu);
    }
    for (std::size_t cell = 0; cell < d_.size(); ++cell) {
      if (w_[cell] == 0) continue;
      double p = 1;
      for (int k = 0; k < 2 * order_ - 1; ++k) {
        Complex& beam = result_.beams[static_cast<std::size_t>(k)][cell];
        beam.real(beam.real() + p * b_[cell]);
        if (k < order_) result_.dirty[static_cast<std::size_t>(k)][cell] += p * v_[cell];
        p = p * f;
      }
      d_[cell] += w_[cell];
    }
  }

  void addRecord(const TestFile& file, const TestFile::Group& group, std::size_t j, double nu) {
    const UvxShape& shape = file.content.shape;
    double sumRe = 0;
    double sumIm = 0;
    double sumWeight = 0;
    int count = 0;
    for (std::size_t channel = 0; channel < shape.channels; ++channel) {
      const Sample s = mixed(file, &group.values[(j * shape.channels + channel) * shape.products]);
      if (!usable(s.re, s.im, s.weight)) continue;
      sumRe += s.re;
      sumIm += s.im;
      sumWeight += s.weight;
      ++count;
    }
    if (count == 0) return;
    const auto re = static_cast<float>(sumRe / count);
    const auto im = static_cast<float>(sumIm / count);
    const auto wt = static_cast<float>(sumWeight / count);
    const double u = group.record.u * nu;
    const double v = group.record.v * nu;
    double w = taper_->value(u, v);
    if (p_.useVisWeights != 0) w = w * wt;
    const double px = p_.shiftX * 3.0461741978670858e-5;
    const double py = p_.shiftY * 3.0461741978670858e-5;
    const double phi = u * px + v * py;
    const Complex turned(re * std::cos(phi) + im * std::sin(phi), im * std::cos(phi) - re * std::sin(phi));
    addPoint(u, v, w, turned);
    addPoint(-u, -v, w, std::conj(turned));
  }

  void addPoint(double u, double v, double w, Complex value) {
    const double cc = std::trunc((u + uMax_) * (1 / du_) + 0.5) - (nx_ + 1) + 1;
    const double rc = std::trunc((v + vMax_) * (1 / dv_) + 0.5);
    const auto reachU = static_cast<double>(hu_);
    const auto reachV = static_cast<double>(hv_);
    // Only the cells of the grid are visited, so that a far point costs no time; the test is the footprint's.
    for (int c = 0; c < nx_ + 1; ++c) {
      if (!(cc - reachU <= c && c <= cc + reachU)) continue;
      for (int s = 0; s < result_.rows; ++s) {
        if (!(rc - reachV <= s && s <= rc + reachV)) continue;
        const double k = kernel_->value(c * du_ - u, s * dv_ - vMax_ - v);
        const std::size_t cell =
            static_cast<std::size_t>(s) * static_cast<std::size_t>(nx_ + 1) + static_cast<std::size_t>(c);
        b_[cell] += k * w;
        v_[cell] += Complex(k * w * value.real(), k * w * value.imag());
        w_[cell] += k;
      }
    }
  }

  void weightUniformly() {
    const int rows = result_.rows;
    const int columns = result_.columns;
    const int bh = p_.uniformBoxV > 0 ? static_cast<int>(std::lround(1 / p_.uniformBoxV)) : rows;
    const int bw = p_.uniformBoxU > 0 ? static_cast<int>(std::lround(1 / p_.uniformBoxU)) : columns;
    for (int top = 0; top < rows; top += bh) {
      for (int left = 0; left < columns; left += bw) {
        std::vector<std::size_t> cells;
        for (int r = top; r < top + bh && r < rows; ++r)
          for (int c = left; c < left + bw && c < columns; ++c)
            cells.push_back(static_cast<std::size_t>(r) * static_cast<std::size_t>(columns) +
                            static_cast<std::size_t>(c));
        double s = 0;
        for (const std::size_t cell : cells) s += d_[cell];
        if (!(s > 0)) continue;
        for (auto* const grids : {&result_.beams, &result_.dirty}) {
          for (ComplexGrid& grid : *grids) {
            Complex sum;
            for (const std::size_t cell : cells) sum += grid[cell];
            for (const std::size_t cell : cells) grid[cell] = sum / s;
          }
        }
      }
    }
  }

  const ABMakeParameters& p_;
  int order_;
  double nu0_;
  double uMax_ = 0, vMax_ = 0, du_ = 0, dv_ = 0;
  int nx_ = 0;
  std::int64_t hu_ = 0, hv_ = 0;
  std::unique_ptr<AB3DFunc> kernel_, taper_;
  RealGrid b_, w_, d_;
  ComplexGrid v_;
  StraightGrids result_;
};

}  // namespace

StraightGrids gridStraight(const ABMakeParameters& parameters, const std::vector<TestFile>& files, int order,
                           double referenceFrequency) {
  StraightGridder gridder(parameters, order, referenceFrequency);
  for (const TestFile& file : files) gridder.addFile(file);
  return gridder.finish();
}

}  // namespace lumo::test
