// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Version.h"

namespace lumo {

const char* programVersion() {
  return "Lumo " LUMO_VERSION;
}

}  // namespace lumo
