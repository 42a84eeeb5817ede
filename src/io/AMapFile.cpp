// SPDX-License-Identifier: GPL-3.0-or-later
#include "io/AMapFile.h"

#include <cstdint>
#include <new>
#include <optional>
#include <utility>

#include "io/FitsFile.h"
#include "io/FitsMapReader.h"
#include "io/FitsMapWriter.h"

namespace lumo {

struct AMapFile::Reading {
  FitsHandle file;
  MapRecord record;
};

struct AMapFile::Writing {
  std::optional<AMapHeader> header;
  std::optional<TMinMax> range;
  bool begun = false;
  bool complete = false;
};

AMapFile::AMapFile() = default;

AMapFile::~AMapFile() {
  AMapFile::Close();
}

int AMapFile::Open(const std::string& name, int mode) {
  AMapFile::Close();
  if (mode == kCreate) {
    if (AFile::Open(name, kCreate) == 0) return 0;
    writing_ = std::make_unique<Writing>();
    return 1;
  }
  setName(name);
  auto reading = std::make_unique<Reading>();
  FitsHeader header;
  Status opened = readFitsHeader(name, header);
  if (opened.ok()) opened = readMapRecord(header, reading->record);
  if (opened.ok()) opened = openFits(name, reading->file);
  if (!opened.ok()) return fail(opened);
  reading_ = std::move(reading);
  return 1;
}

int AMapFile::Close() {
  reading_.reset();
  const auto writing = std::exchange(writing_, nullptr);
  if (writing == nullptr) return 1;
  if (writing->complete) return AFile::Close();
  giveUp();
  if (!status().ok()) return 0;
  return fail({StatusCode::kWriteFailed, "was closed before a map was put into it"});
}

int AMapFile::giveHeader(AMapHeader& header) {
  if (reading_ == nullptr) return fail({StatusCode::kReadFailed, "is not open for reading"});
  header = reading_->record.header;
  return 1;
}

int AMapFile::takeHeader(const AMapHeader& header) {
  if (writing_ == nullptr) return fail({StatusCode::kWriteFailed, "is not open for writing"});
  if (writing_->begun)
    return fail({StatusCode::kWriteFailed, "holds its map already; the header comes first"});
  writing_->header = header;
  return 1;
}

TMinMax AMapFile::GetMinMax() const {
  if (reading_ != nullptr) return reading_->record.range;
  if (writing_ != nullptr && writing_->range) return *writing_->range;
  return {};
}

int AMapFile::PutMinMax(const TMinMax& range) {
  if (writing_ == nullptr || !writing_->header)
    return fail({StatusCode::kWriteFailed, "has no header yet; the ranges come after it"});
  if (writing_->begun)
    return fail({StatusCode::kWriteFailed, "holds its map already; the ranges come before"});
  writing_->range = range;
  return 1;
}

std::unique_ptr<AMatrix<float>> AMapFile::GetMatrix() {
  if (reading_ == nullptr) {
    fail({StatusCode::kReadFailed, "is not open for reading"});
    return nullptr;
  }
  try {
    auto matrix = std::make_unique<AMatrix<float>>();
    const Status read = readMapPixels(reading_->file.get(), reading_->record, *matrix);
    if (read.ok()) return matrix;
    fail(read);
  } catch (const std::bad_alloc&) {
    fail({StatusCode::kOutOfMemory, "does not fit into memory"});
  }
  return nullptr;
}

int AMapFile::PutMatrix(const AMatrix<float>& matrix, const AMatrixRect& rect) {
  if (writing_ == nullptr || !writing_->range)
    return fail({StatusCode::kWriteFailed, "has no ranges yet; the map comes after them"});
  if (writing_->begun) return fail({StatusCode::kWriteFailed, "holds its map already"});
  if (rect.firstRow < 0 || rect.firstColumn < 0 || rect.firstRow > rect.lastRow ||
      rect.firstColumn > rect.lastColumn || static_cast<std::uint32_t>(rect.lastRow) >= matrix.rows() ||
      static_cast<std::uint32_t>(rect.lastColumn) >= matrix.columns())
    return fail({StatusCode::kInvalidValue,
                 "cannot take rows " + std::to_string(rect.firstRow) + ".." + std::to_string(rect.lastRow) +
                     ", columns " + std::to_string(rect.firstColumn) + ".." +
                     std::to_string(rect.lastColumn) + " of a map of " + std::to_string(matrix.rows()) +
                     " x " + std::to_string(matrix.columns()) + " pixels"});
  writing_->begun = true;
  const ValueRange values = finiteRange(matrix, rect);
  TMinMax& range = *writing_->range;
  if (!(range.vMin <= range.vMax) && values.set()) {
    range.vMin = values.min;
    range.vMax = values.max;
  }
  const auto rows = static_cast<std::uint32_t>(rect.lastRow - rect.firstRow) + 1;
  const auto columns = static_cast<std::uint32_t>(rect.lastColumn - rect.firstColumn) + 1;
  const FitsCards cards = mapCards(*writing_->header, range, rows, columns, values);
  writing_->complete = writeMapImage(*this, cards, matrix, rect) != 0;
  return writing_->complete ? 1 : 0;
}

}  // namespace lumo
