// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanDialogModel.h"

#include <utility>

#include "core/TextForm.h"

namespace lumo {

bool CleanDialogModel::update(std::int32_t iteration, double totalFlux) {
  if (iteration <= 0) return false;
  std::string number = toStr(iteration);
  std::string flux = valToStr(totalFlux);
  if (number == iterationText_ && flux == fluxText_) return false;
  mainTitle_ = number + " - MFS";
  iterationText_ = std::move(number);
  fluxText_ = std::move(flux);
  return true;
}

}  // namespace lumo
