// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/FitsFile.h"

#include <array>

namespace lumo {

namespace {

// cfitsio skips leading blanks and expands a leading "~" even in names it is told to take as they stand.
std::string literalPath(const std::string& path) {
  return path.starts_with('/') ? path : "./" + path;
}

}  // namespace

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
  fits_open_diskfile(&opened, literalPath(path).c_str(), READONLY, &error);
  if (error != 0) return fitsFailure(error, StatusCode::kReadFailed, "cannot be read as a FITS file");
  file.reset(opened);
  return {};
}

Status createFits(const std::string& path, FitsHandle& file) {
  fitsfile* created = nullptr;
  int error = 0;
  fits_create_diskfile(&created, literalPath(path).c_str(), &error);
  if (error != 0) return fitsFailure(error, StatusCode::kWriteFailed, "cannot be created");
  file.reset(created);
  return {};
}

Status closeFits(FitsHandle& file) {
  int error = 0;
  fits_close_file(file.release(), &error);
  if (error != 0) return fitsFailure(error, StatusCode::kWriteFailed, "cannot be written");
  return {};
}

}  // namespace lumo
