// SPDX-License-Identifier: GPL-3.0-or-later
#include "clean/CleanRecord.h"

#include "core/PendingFile.h"
#include "core/TextForm.h"

namespace lumo {

void CleanRecord::iterationDone(const CleanProgress& progress) {
  if (lines_.capacity() < kMostLines) lines_.reserve(kMostLines);
  if (lastIsExtra_) lines_.pop_back();
  if (lines_.size() == kMostLines) {
    stride_ *= 2;
    std::size_t kept = 0;
    for (const CleanProgress& line : lines_)
      if (line.iteration % stride_ == 0) lines_[kept++] = line;
    lines_.resize(kept);
  }
  lines_.push_back(progress);
  lastIsExtra_ = progress.iteration % stride_ != 0;
}

std::string CleanRecord::text() const {
  std::string text = "iteration\tresidual\ttotal_flux\tscore\tgain\n";
  for (const CleanProgress& line : lines_)
    text += toStr(line.iteration) + '\t' + valToStr(line.residual) + '\t' + valToStr(line.totalFlux) + '\t' +
            valToStr(line.score) + '\t' + valToStr(line.gain) + '\n';
  return text;
}

Status CleanRecord::write(const std::string& path) const {
  return writeWholeFile(path, text());
}

}  // namespace lumo
