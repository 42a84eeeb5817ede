// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/StraightClean.h"

#include <cmath>

#include "clean/BeamMatrix.h"

namespace lumo::test {

namespace {

struct Peak {
  bool known = false;
  int row = 0;
  int column = 0;
  double score = 0.0;
  std::vector<double> d;
};

double gainOf(const CleanParameters& parameters, int n) {
  const double g = parameters.gain;
  if (!parameters.variableGain) return g;
  const double value = std::atan(n - 7000.0) * (1.0 - g) * 0.3183098861837907 + 0.5 + 0.5 * g;
  return value < 1.0 ? value : 1.0;
}

class Straight {
 public:
  Straight(const CleanProblem& problem, const CleanParameters& parameters)
      : b_(problem.beams), parameters_(parameters), n_(problem.terms()) {
    result_.residuals = problem.maps;
    result_.components.assign(problem.maps.size(),
                              flatMap({problem.maps[0].rows(), problem.maps[0].columns()}, 0));
    const EngineInput input(problem);
    BeamMatrix matrix;
    matrix.prepare(input.beams, n_);
    w_ = matrix.inverse();
  }

  StraightResult run() {
    for (int n = 1; n <= parameters_.iterations; ++n) {
      search(gainOf(parameters_, n));
      result_.scores.push_back(peak_.score);
      if (!peak_.known) continue;
      for (int j = 0; j < n_; ++j) {
        float& c = result_.components[j](peak_.row, peak_.column);
        c = static_cast<float>(c + peak_.d[j]);
      }
      result_.totalFlux = result_.totalFlux + peak_.d[0];
      subtract();
    }
    return result_;
  }

 private:
  void search(double g) {
    const double h = 2.0 - g;
    const double q = 1.0 / w_(0, 0);
    double best = 0.0;
    for (int row = 0; row < rows(); ++row) {
      for (int column = 0; column < columns(); ++column) {
        std::vector<double> a(n_);
        double s = 0.0;
        for (int j = n_ - 1; j >= 0; --j) {
          a[j] = 0.0;
          for (int k = 0; k < n_; ++k) a[j] = a[j] + double(result_.residuals[k](row, column)) * w_(j, k);
          s = s + double(result_.residuals[j](row, column)) * a[j];
        }
        double e = s * (h * g);
        const double c = result_.components[0](row, column);
        const double t = a[0] * g + c;
        double constraint = 0.0;
        if (parameters_.nonNegative && t < 0) {
          e = e - (h * a[0] + c) * (t * q);
          constraint = t;
        }
        if (!(best > e)) {
          best = e;
          peak_.known = true;
          peak_.row = row;
          peak_.column = column;
          peak_.score = e;
          peak_.d.resize(n_);
          for (int j = 0; j < n_; ++j)
            peak_.d[j] = g * a[j] - constraint * (j == 0 ? 1.0 : w_(0, j) * (1.0 / w_(0, 0)));
        }
      }
    }
  }

  void subtract() {
    const int beamRows = static_cast<int>(b_[0].rows());
    const int beamColumns = static_cast<int>(b_[0].columns());
    for (int row = 0; row < rows(); ++row) {
      for (int column = 0; column < columns(); ++column) {
        int br = beamRows / 2 - peak_.row + row;
        if (br < 0)
          br += beamRows;
        else if (br >= beamRows)
          br -= beamRows;
        int bc = beamColumns / 2 - peak_.column + column;
        if (bc < 0)
          bc += beamColumns;
        else if (bc >= beamColumns)
          bc -= beamColumns;
        for (int k = 0; k < n_; ++k) {
          for (int j = 0; j < n_; ++j) {
            float& r = result_.residuals[k](row, column);
            r = static_cast<float>(double(r) - double(b_[k + j](br, bc)) * peak_.d[j]);
          }
        }
      }
    }
  }

  [[nodiscard]] int rows() const { return static_cast<int>(result_.residuals[0].rows()); }
  [[nodiscard]] int columns() const { return static_cast<int>(result_.residuals[0].columns()); }

  const std::vector<AMatrix<float>>& b_;
  CleanParameters parameters_;
  int n_;
  AMatrix<double> w_;
  Peak peak_;
  StraightResult result_;
};

}  // namespace

StraightResult straightClean(const CleanProblem& problem, const CleanParameters& parameters) {
  return Straight(problem, parameters).run();
}

AMatrix<float> straightRestore(const AMatrix<float>& components, const AMatrix<float>& beam) {
  AMatrix<float> restored(components.rows(), components.columns());
  const int rows = static_cast<int>(components.rows());
  const int columns = static_cast<int>(components.columns());
  const int beamRows = static_cast<int>(beam.rows());
  const int beamColumns = static_cast<int>(beam.columns());
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) {
      const float c = components(i, j);
      if (c == 0.0F) continue;
      for (int r = 0; r < beamRows; ++r) {
        const int ti = i - beamRows / 2 + r;
        if (ti < 0 || ti >= rows) continue;
        for (int s = 0; s < beamColumns; ++s) {
          const int tj = j - beamColumns / 2 + s;
          if (tj < 0 || tj >= columns) continue;
          restored(ti, tj) = static_cast<float>(double(restored(ti, tj)) + double(beam(r, s)) * double(c));
        }
      }
    }
  }
  return restored;
}

}  // namespace lumo::test
