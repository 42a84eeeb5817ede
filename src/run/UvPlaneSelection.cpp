// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/UvPlaneSelection.h"

namespace lumo {

UvPlaneData uvPlaneSelection(const UvxFileList& list) {
  const VisibilityInputs& inputs = list.inputs();
  const FrequencySurvey& survey = list.frequencies();
  return {inputs.names, inputs.tables, inputs.selections, inputs.sources,
          survey.minHz, survey.maxHz,  survey.maxU,       survey.maxV};
}

}  // namespace lumo
