// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/MsImporter.h"

namespace lumo {

Status importMeasurementSet(const std::string& input, const ImportOptions&, const RunIndicators&,
                            ImportReport& report) {
  report = {};
  report.input = input;
  return {StatusCode::kUnsupported,
          "is a Measurement Set, which this program cannot read: it was built without casacore", input};
}

}  // namespace lumo
