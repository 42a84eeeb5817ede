// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/ABCleanEngine.h"

namespace lumo {

ABCleanEngine::ABCleanEngine(APtrArray<AMatrix<float>*>& residuals, const APtrArray<AMatrix<float>*>& beams,
                             const CleanParameters& parameters)
    : residuals_(residuals), beams_(beams), parameters_(parameters) {}

int ABCleanEngine::Run(const std::atomic<int>& stop, CleanObserver* observer) {
  prepareRun();
  CleanStep step;
  step.increments.assign(static_cast<std::size_t>(terms()), 0.0);
  bool everFound = false;
  for (std::int64_t n = 1; n <= parameters_.iterations; ++n) {
    if (stop.load(std::memory_order_relaxed) != 0) {
      settle();
      return 0;
    }
    const double gain = loopGain(parameters_, n);
    const bool found = search(gain, step);
    everFound = everFound || found;
    if (everFound) apply(step);
    iterationsDone_ = static_cast<std::int32_t>(n);
    if (observer != nullptr)
      observer->iterationDone(
          {iterationsDone_, totalFlux_, gain, found, step.row, step.column, step.score, step.residual});
  }
  settle();
  return 1;
}

void ABCleanEngine::prepareRun() {
  inversionError_ = beamMatrix_.prepare(beams_, terms());
  components_.SetSize(terms());
  for (AMatrix<float>& component : components_)
    component.resize(residuals_[0]->rows(), residuals_[0]->columns());
  totalFlux_ = 0.0;
  iterationsDone_ = 0;
  prepare();
}

void ABCleanEngine::apply(const CleanStep& step) {
  for (std::int32_t j = 0; j < terms(); ++j) {
    float& component = components_[j](step.row, step.column);
    component =
        static_cast<float>(static_cast<double>(component) + step.increments[static_cast<std::size_t>(j)]);
  }
  totalFlux_ += step.increments[0];
  subtract(step);
}

}  // namespace lumo
