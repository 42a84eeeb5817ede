// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "clean/ABCleanEngine.h"

namespace lumo {

/// The reference engine: one thread, no vector code, the loops of ABCleanEngine's description as they stand
/// there. It exists to be read and to be compared with.
///
/// The loops over terms are compiled for each of 1 to 4 terms, so that they unroll; more terms share one
/// form. An iteration costs rows x columns x N^2 multiply-adds for the search and as many for the
/// subtraction.
class PlainCleanEngine : public ABCleanEngine {
 public:
  using ABCleanEngine::ABCleanEngine;

 protected:
  void prepare() override;
  bool search(double gain, CleanStep& step) override;
  void subtract(const CleanStep& step) override;

 private:
  // kTerms is N, or 0 where N is only known at run time.
  /// Solves a = W r for the pixel at `offset` of every map, into solution_. Returns S = r'a.
  template <int kTerms>
  double solve(std::size_t offset);
  template <int kTerms>
  bool searchTerms(double gain, CleanStep& step);
  /// Subtracts the step from `pixels` map pixels from `mapOffset` on, below which the beam pixels from
  /// `beamOffset` on lie without a wrap.
  template <int kTerms>
  void subtractRun(const CleanStep& step, std::size_t mapOffset, std::size_t beamOffset, std::size_t pixels);
  template <int kTerms>
  void subtractTerms(const CleanStep& step);

  std::vector<float*> mapData_;         ///< elements of R_0 .. R_{N-1}
  std::vector<const float*> beamData_;  ///< elements of B_0 .. B_{2N-2}
  std::vector<double> pixel_;           ///< r_0 .. r_{N-1} of the pixel under test
  std::vector<double> solution_;        ///< a_0 .. a_{N-1} there
};

}  // namespace lumo
