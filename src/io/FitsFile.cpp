// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsFile.h"

#include <array>

namespace lumo {

std::string literalFitsPath(const std::string& path) {
  return path.starts_with('/') ? path : "./" + path;
}

void FitsCloser::operator()(fitsfile* file) const {
  int error = 0;
  fits_close_file(file, &error);
  fits_clear_errmsg();
}

Status fitsFailure(int error, StatusCode code, const std::string& what) {
  std::array<char, FLEN_STATUS> text{};
  fits_get_errstatus(error, text.data());
  fits_clear_errmsg();
  return {code, what + " (cfitsio " + std::to_string(error) + ": " + text.data() + ")"};
}

Status openFits(const std::string& path, FitsHandle& file) {
  fitsfile* opened = nullptr;
  int error = 0;
  fits_open_diskfile(&opened, literalFitsPath(path).c_str(), READONLY, &error);
  if (error != 0) return fitsFailure(error, StatusCode::kReadFailed, "cannot be read as a FITS file");
  file.reset(opened);
  return {};
}

}  // namespace lumo
