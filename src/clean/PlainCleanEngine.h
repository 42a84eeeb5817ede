// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "clean/ABCleanEngine.h"

namespace lumo {

/// The reference engine: one thread, no vector code, the loops of ABCleanEngine's description as they stand
/// there. It exists to be read and to be compared with.
///
/// An iteration costs rows x columns x N^2 multiply-adds for the search and as many for the subtraction.
class PlainCleanEngine final : public ABCleanEngine {
 public:
  using ABCleanEngine::ABCleanEngine;

 protected:
  void prepare() override;
  bool search(double gain, CleanStep& step) override;
  void subtract(const CleanStep& step) override;

 private:
  /// Solves a = W r for the pixel at `offset` of every map, into solution_. Returns S = r'a.
  double solve(std::size_t offset);
  /// Subtracts the step from `pixels` map pixels from `mapOffset` on, below which the beam pixels from
  /// `beamOffset` on lie without a wrap.
  void subtractRun(const CleanStep& step, std::size_t mapOffset, std::size_t beamOffset, std::size_t pixels);

  std::vector<float*> mapData_;         ///< elements of R_0 .. R_{N-1}
  std::vector<const float*> beamData_;  ///< elements of B_0 .. B_{2N-2}
  std::vector<double> pixel_;           ///< r_0 .. r_{N-1} of the pixel under test
  std::vector<double> solution_;        ///< a_0 .. a_{N-1} there
};

}  // namespace lumo
