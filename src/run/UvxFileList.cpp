// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/UvxFileList.h"

#include <memory>
#include <utility>

#include "core/Paths.h"
#include "core/TextForm.h"
#include "io/AUVXSources.h"

namespace lumo {

namespace {

template <typename Array>
void removeIfThere(Array& array, std::int32_t index) {
  if (index < array.count()) array.RemoveAt(index);
}

}  // namespace

int UvxFileList::fail(Status status) {
  status_ = std::move(status);
  return 0;
}

void UvxFileList::select(std::int32_t index) {
  selected_ = index >= 0 && index < inputs_.count() ? index : -1;
}

int UvxFileList::AddFile(const std::string& path) {
  const std::int32_t before = inputs_.count();
  if (append(path) == 0) return 0;
  if (inputs_.count() != before) {
    idTable_.rebuild();
    survey();
  }
  return 1;
}

std::vector<Status> UvxFileList::AddFiles(std::span<const std::string> paths) {
  const std::int32_t before = inputs_.count();
  std::vector<Status> failures;
  for (const std::string& path : paths)
    if (append(path) == 0) failures.push_back(status_);
  if (inputs_.count() != before) {
    idTable_.rebuild();
    survey();
  }
  return failures;
}

int UvxFileList::append(const std::string& path) {
  for (std::int32_t i = 0; i < inputs_.count(); ++i) {
    if (inputs_.names[i] != path) continue;
    selected_ = i;
    return 1;
  }
  AUVXFile file;
  if (file.Open(path, AFile::kRead) == 0) return fail(file.status());
  const AUVXSources sources(file);
  if (sources.count() != 1) {
    if (watcher_ != nullptr) watcher_->showMessage(kOneSourceMessage);
    return fail({StatusCode::kUnsupported,
                 "holds " + toStr(sources.count()) + " sources; a run takes files of one source", path});
  }
  const std::unique_ptr<const AArray<AStokesMix>> mixes(toListMix(AUVXStokes(file)));
  if (mixes->empty())
    return fail({StatusCode::kUnsupported,
                 "stores no Stokes product that can be imaged (I, Q, U, V, RR, LL, XX or YY)", path});

  if (!hasFiles()) {
    imaging_ = ABMakeParameters();
    if (watcher_ != nullptr) watcher_->proposeWorkFolder(getfPath(path));
  }
  const std::int32_t sourceId = sources[0].id;
  const AUVXFqTbl table(file, sourceId);
  ABitArray mask(table.GetFreqSels());
  mask = 1;
  const std::int32_t at = inputs_.count();
  // Masks that were put in from elsewhere may be more or fewer than the files.
  inputs_.selections.SetSize(at);
  inputs_.names.InsertAt(at, path);
  inputs_.sources.InsertAt(at, sourceId);
  inputs_.tables.InsertAt(at, table);
  inputs_.selections.InsertAt(at, mask);
  inputs_.mixes.InsertAt(at, (*mixes)[0]);
  selected_ = at;
  return 1;
}

void UvxFileList::DeleteFile() {
  if (selected_ < 0 || selected_ >= inputs_.count()) return;
  removeIfThere(inputs_.names, selected_);
  removeIfThere(inputs_.tables, selected_);
  removeIfThere(inputs_.selections, selected_);
  removeIfThere(inputs_.mixes, selected_);
  removeIfThere(inputs_.sources, selected_);
  idTable_.rebuild();
  if (selected_ >= inputs_.count()) selected_ = inputs_.count() - 1;
  if (hasFiles()) {
    survey();
  } else {
    imaging_.uvLimitU = imaging_.uvLimitV = imaging_.uvScaleU = imaging_.uvScaleV = 0;
  }
}

int UvxFileList::changeCell(std::int64_t row) {
  if (!idTable_.canToggle(row)) return 0;
  const FrequencyIdTable::Cell cell = idTable_.cellAt(row);
  ABitArray& mask = inputs_.selections[cell.file];
  mask(cell.selection, mask(cell.selection) == 0 ? 1 : 0);
  survey();
  return 1;
}

void UvxFileList::setSelected(std::int32_t file, std::int32_t selection, bool selected) {
  if (file < 0 || file >= inputs_.selections.count()) return;
  inputs_.selections[file](selection, selected ? 1 : 0);
}

void UvxFileList::survey() {
  survey_ = surveyFrequencies(inputs_);
  imaging_.uvScaleU = survey_.maxU;
  imaging_.uvScaleV = survey_.maxV;
  imaging_.uvLimitU = imaging_.uvLimitV = 0;
}

void UvxFileList::replaceSelections(AObjArray<ABitArray> masks) {
  inputs_.selections = std::move(masks);
  idTable_.rebuild();
  survey();
}

}  // namespace lumo
