// SPDX-License-Identifier: GPL-3.0-or-later
#include "convert/UvfitsImporter.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <vector>

#include "convert/ImportOutput.h"
#include "convert/UvfitsAxes.h"
#include "convert/UvfitsFile.h"
#include "convert/UvfitsGroups.h"
#include "convert/UvfitsParameters.h"
#include "convert/UvfitsTables.h"
#include "core/MappedFile.h"
#include "core/Paths.h"
#include "core/TextForm.h"
#include "core/Version.h"

namespace lumo {
namespace {

constexpr std::size_t kMaxHistory = 10000;  // lines taken over from the input
constexpr std::size_t kMaxOutputs = 256;    // files open at a time
constexpr std::uint64_t kPollGroups = 256;  // between two looks at the cancel flag
constexpr double kSecondsPerDay = 86400.0;

/// One import from the open file to the finished outputs.
class UvfitsImport {
 public:
  UvfitsImport(const std::string& input, const ImportOptions& options, const RunIndicators& indicators,
               ImportReport& report)
      : input_(input), options_(options), indicators_(indicators), report_(report) {}

  [[nodiscard]] Status run();

 private:
  [[nodiscard]] Status checkForm() const;
  [[nodiscard]] Status readTables();
  [[nodiscard]] Status readSourceList();
  [[nodiscard]] Status copyGroups();
  [[nodiscard]] Status copyGroup(std::uint64_t index, std::span<const double> parameters,
                                 std::span<const AUVXComplex> visibilities);
  [[nodiscard]] Status findSelection(std::uint64_t index, std::int32_t named, std::int8_t& id) const;
  [[nodiscard]] Status findOutput(std::uint64_t index, std::int32_t named, ImportOutput*& output);
  [[nodiscard]] Status open(const UvfitsSource& source, ImportOutput& output);
  [[nodiscard]] UvxRecord record(const UvfitsGroupHead& head, std::int8_t selection);
  [[nodiscard]] Status finish();
  [[nodiscard]] bool wanted(const UvfitsSource& source) const {
    return options_.source.empty() || source.item.name == options_.source;
  }
  void describeDamage();
  [[nodiscard]] std::string sourceNames() const;

  const std::string& input_;
  const ImportOptions& options_;
  const RunIndicators& indicators_;
  ImportReport& report_;

  UvfitsFile file_;
  UvfitsAxes axes_;
  UvfitsParameters parameters_;
  UvfitsGroups groups_;
  std::vector<UvfitsSetup> setups_;
  std::vector<UvfitsSource> sources_;
  bool sourceTable_ = false;  ///< the groups' source numbers refer to sources_
  UvfitsStations stations_;
  UvxContent common_;
  std::map<std::int32_t, std::unique_ptr<ImportOutput>> outputs_;  ///< by source number; null: not asked for
  std::vector<std::string> paths_;
  UvfitsGroups::Damage damage_;
  std::uint64_t badPlaces_ = 0;
  std::uint64_t badBaselines_ = 0;
  std::uint64_t badTimes_ = 0;
};

Status UvfitsImport::run() {
  report_ = {};
  report_.input = input_;
  Status status = file_.open(input_);
  if (status.ok()) status = checkForm();
  if (status.ok()) status = readUvfitsAxes(file_, axes_, report_);
  if (status.ok()) status = groups_.read(file_, axes_);
  if (status.ok()) status = parameters_.read(file_, groups_.parameterCount());
  if (status.ok()) status = readTables();
  if (status.ok()) status = copyGroups();
  if (status.ok()) status = finish();
  return status.about(input_);
}

/// Names the other forms of FITS that a user may take for this one.
Status UvfitsImport::checkForm() const {
  double first = -1;
  double second = -1;
  double axes = 0;
  Status status = file_.number("NAXIS", 0.0, axes);
  if (status.ok()) status = file_.number("NAXIS1", -1.0, first);
  if (status.ok()) status = file_.number("NAXIS2", -1.0, second);
  if (!status.ok()) return status;
  if (first == 777777701.0 || !file_.extensionsNamed("AIPS UV").empty())
    return {StatusCode::kUnsupported,
            "holds its visibilities as a table (NAXIS1 = 777777701, EXTNAME 'AIPS UV'); expected random "
            "groups. Write it with FITTP instead of FITAB"};
  if (axes == 0 && (file_.logical("GROUPS") || !file_.extensionsNamed("UV_DATA").empty()))
    return {StatusCode::kUnsupported,
            "is a FITS-IDI file (NAXIS = 0, tables of visibilities); expected UVFITS random groups. Load it "
            "into AIPS (FITLD) or CASA (importfitsidi) and export it from there"};
  if (!file_.logical("GROUPS") || first != 0)
    return {StatusCode::kUnsupported,
            "is FITS but holds no visibilities: expected random groups, with the cards GROUPS = T and "
            "NAXIS1 = 0"};
  return {};
}

Status UvfitsImport::readTables() {
  if (file_.extensionsDamaged()) {
    const std::string damage = "the header of HDU " +
                               toStr(static_cast<std::int64_t>(file_.extensions().size()) + 2) +
                               " is damaged: the tables from there on cannot be read";
    if (file_.extensionsNamed("AIPS FQ").empty())
      return {StatusCode::kBadFormat, damage + ", and the frequencies (AIPS FQ) may be among them"};
    report_.warnings.push_back(damage);
  }
  bool cut = false;
  common_.shape = axes_.shape();
  common_.products = axes_.products;
  std::string unit = file_.text("BUNIT");
  std::transform(unit.begin(), unit.end(), unit.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  if (unit.find("JY") != std::string::npos) common_.unit = "JY";
  common_.history.push_back(programVersion());
  common_.history.push_back("imported from UVFITS file " + fileName(input_));
  common_.history.push_back("telescope " + file_.text("TELESCOP") + ", observed " + file_.text("DATE-OBS") +
                            ", observer " + file_.text("OBSERVER"));
  for (std::string& line : file_.history(kMaxHistory, cut)) common_.history.push_back(std::move(line));
  if (cut) report_.notes.push_back("only the first " + toStr(kMaxHistory) + " HISTORY cards were kept");
  Status status = readUvfitsSetups(file_, axes_, setups_, report_);
  if (status.ok()) status = readSourceList();
  if (!status.ok()) return status;
  stations_ = readUvfitsStations(file_, report_);
  common_.antennas = stations_.antennas;
  return {};
}

Status UvfitsImport::readSourceList() {
  if (Status status = readUvfitsSources(file_, axes_, sources_, report_); !status.ok()) return status;
  sourceTable_ = parameters_.hasSource() && !sources_.empty();
  if (!sourceTable_) {
    const bool positionGiven =
        axes_.rightAscension && axes_.declination && (*axes_.rightAscension != 0 || *axes_.declination != 0);
    if (parameters_.hasSource() && !positionGiven)
      return {StatusCode::kBadFormat,
              "has a random parameter SOURCE but no table AIPS SU with the sources' positions"};
    if (sources_.size() != 1 || positionGiven) {
      sources_.assign(1, {});
      Status status = readUvfitsHeaderSource(file_, axes_, sources_[0], report_);
      if (!status.ok()) return status;
    }
  }
  if (std::none_of(sources_.begin(), sources_.end(), [&](const auto& source) { return wanted(source); }))
    return {StatusCode::kNoData, "holds no source '" + options_.source + "'; it holds " + sourceNames()};
  return {};
}

std::string UvfitsImport::sourceNames() const {
  constexpr std::size_t kMaxNames = 20;
  std::string names;
  for (std::size_t i = 0; i < sources_.size() && i < kMaxNames; ++i)
    names += (i == 0 ? "" : ", ") + sources_[i].item.name;
  return sources_.size() > kMaxNames ? names + ", ..." : names;
}

Status UvfitsImport::copyGroups() {
  const MappedFile& map = file_.map();
  std::vector<double> parameters(groups_.parameterCount());
  std::vector<AUVXComplex> visibilities(axes_.shape().visibilities());
  AProgress progress(indicators_.readingBar, static_cast<double>(groups_.count()));
  std::uint64_t released = groups_.offset(0);
  for (std::uint64_t i = 0; i < groups_.count(); ++i) {
    if (i % kPollGroups == 0) {
      if (indicators_.cancelled()) return {StatusCode::kCancelled, "the import was stopped"};
      if (Status intact = map.check(); !intact.ok()) return intact;
      progress.SetPos(static_cast<double>(i));
    }
    groups_.decode(map.data() + groups_.offset(i), parameters, visibilities, damage_);
    if (Status status = copyGroup(i, parameters, visibilities); !status.ok()) return status;
    const std::uint64_t end = groups_.offset(i + 1);
    if (end - released < MappedFile::kResidentBytes) continue;
    map.release(released, end);
    released = end;
  }
  report_.groups = groups_.count();
  progress.SetPos(static_cast<double>(groups_.count()));
  return map.check();
}

Status UvfitsImport::copyGroup(std::uint64_t index, std::span<const double> parameters,
                               std::span<const AUVXComplex> visibilities) {
  const UvfitsGroupHead head = parameters_.decode(parameters);
  std::int8_t selection = 0;
  ImportOutput* output = nullptr;
  if (head.antenna1 != 0 && head.antenna1 == head.antenna2) {
    ++report_.autocorrelations;
    return {};
  }
  if (Status status = findSelection(index, head.selection, selection); !status.ok()) return status;
  if (Status status = findOutput(index, head.source, output); !status.ok() || output == nullptr)
    return status;
  UvxRecord entry = record(head, selection);
  const auto id = sourceTable_ ? head.source : sources_[0].item.id;
  entry.source = static_cast<std::int16_t>(static_cast<std::uint32_t>(id) & 0xFFFFU);
  return output->add(entry, visibilities);
}

Status UvfitsImport::findSelection(std::uint64_t index, std::int32_t named, std::int8_t& id) const {
  // AIPS writes no FREQSEL, or one <= 0, where there is nothing to choose.
  const UvfitsSetup* setup = named <= 0 && setups_.size() == 1 ? &setups_[0] : nullptr;
  for (const UvfitsSetup& candidate : setups_)
    if (setup == nullptr && candidate.id == named) setup = &candidate;
  if (setup == nullptr && !parameters_.hasSelection())
    return {StatusCode::kBadFormat,
            "table AIPS FQ holds " + toStr(static_cast<std::int64_t>(setups_.size())) +
                " set-ups, but no random parameter FREQSEL tells which one a group has"};
  if (setup == nullptr)
    return {StatusCode::kBadFormat, "group " + toStr(static_cast<std::int64_t>(index) + 1) +
                                        " has frequency set-up " + toStr(named) +
                                        " (FREQSEL), which table AIPS FQ does not list"};
  if (setup->id < -128 || setup->id > 127)
    return {StatusCode::kUnsupported,
            "frequency set-up " + toStr(setup->id) + " of table AIPS FQ: expected an ID from -128 to 127"};
  id = static_cast<std::int8_t>(setup->id);
  return {};
}

/// The output of a group's source, opened when its first group comes; null for a source not asked for.
Status UvfitsImport::findOutput(std::uint64_t index, std::int32_t named, ImportOutput*& output) {
  const auto known = outputs_.find(sourceTable_ ? named : 0);
  if (known != outputs_.end()) {
    output = known->second.get();
    return {};
  }
  const UvfitsSource* source = sourceTable_ ? nullptr : &sources_[0];
  for (const UvfitsSource& candidate : sources_)
    if (source == nullptr && candidate.item.id == named) source = &candidate;
  if (source == nullptr)
    return {StatusCode::kBadFormat, "group " + toStr(static_cast<std::int64_t>(index) + 1) +
                                        " has source number " + toStr(named) +
                                        " (SOURCE), which table AIPS SU does not list"};
  auto& entry = outputs_[sourceTable_ ? named : 0];
  if (!wanted(*source)) return {};
  if (paths_.size() == kMaxOutputs)
    return {StatusCode::kUnsupported,
            "holds more than " + toStr(kMaxOutputs) + " sources; import them one at a time by name"};
  entry = std::make_unique<ImportOutput>();
  output = entry.get();
  return open(*source, *output);
}

Status UvfitsImport::open(const UvfitsSource& source, ImportOutput& output) {
  UvxContent content = common_;
  content.sources = {source.item};
  for (const UvfitsSetup& setup : setups_) {
    if (setup.id < -128 || setup.id > 127) continue;
    UvxSelection selection;
    if (Status status = uvfitsSelection(axes_, setup, source, selection); !status.ok()) return status;
    content.selections.push_back(std::move(selection));
  }
  std::string path;
  Status status =
      outputPath(input_, sources_.size() > 1 ? source.item.name : std::string(), options_, paths_, path);
  if (!status.ok()) return status;
  paths_.push_back(path);
  return output.begin(path, std::move(content), options_.average);
}

UvxRecord UvfitsImport::record(const UvfitsGroupHead& head, std::int8_t selection) {
  constexpr double kMaxFloat = std::numeric_limits<float>::max();
  UvxRecord entry;
  entry.freqSel = selection;
  if (std::abs(head.u) <= kMaxFloat && std::abs(head.v) <= kMaxFloat) {
    entry.u = static_cast<float>(head.u);
    entry.v = static_cast<float>(head.v);
  } else {
    entry.flag = 1;
    ++badPlaces_;
  }
  // w and the time are not needed for imaging: what is not finite becomes 0.
  if (std::abs(head.w) <= kMaxFloat) entry.w = static_cast<float>(head.w);
  if (std::isfinite(head.time))
    entry.time = head.time - stations_.secondsFromUtc / kSecondsPerDay;
  else
    ++badTimes_;
  if (head.antenna1 == 0) {
    entry.flag = 1;
    ++badBaselines_;
  }
  if (head.antenna1 <= 255 && head.antenna2 <= 255)
    entry.baseline = static_cast<std::uint16_t>(256 * head.antenna1 + head.antenna2);
  return entry;
}

void UvfitsImport::describeDamage() {
  const auto describe = [&](std::uint64_t count, const char* what) {
    if (count != 0) report_.warnings.push_back(toStr(static_cast<std::int64_t>(count)) + what);
  };
  describe(damage_.weights, " visibilities have a weight that is not finite; they are taken as no data");
  describe(damage_.values, " visibilities are not finite; they are taken as no data");
  describe(badPlaces_, " records have a u or v that is not finite; they are flagged");
  describe(badBaselines_, " records do not name their antennas legibly; they are flagged");
  describe(badTimes_, " records have no finite date; their time is stored as 0");
  if (report_.autocorrelations != 0)
    report_.notes.push_back(toStr(static_cast<std::int64_t>(report_.autocorrelations)) +
                            " autocorrelations were left out");
  if (axes_.complexParts == 2) report_.notes.push_back("the file has no weights; every weight is 1");
}

Status UvfitsImport::finish() {
  if (paths_.empty())
    return {StatusCode::kNoData, options_.source.empty()
                                     ? "holds no visibilities between different antennas"
                                     : "holds no visibilities of source '" + options_.source + "'"};
  describeDamage();
  for (auto& [id, output] : outputs_) {
    if (output == nullptr) continue;
    for (const std::string& line : report_.warnings) output->addHistory(line);
    for (const std::string& line : report_.notes) output->addHistory(line);
    ImportedFile description;
    if (Status status = output->finish(description); !status.ok()) return status;
    report_.files.push_back(std::move(description));
  }
  return {};
}

}  // namespace

Status importUvfits(const std::string& input, const ImportOptions& options, const RunIndicators& indicators,
                    ImportReport& report) {
  try {
    return UvfitsImport(input, options, indicators, report).run();
  } catch (const std::bad_alloc&) {
    return {StatusCode::kOutOfMemory, "there is not enough memory to import it", input};
  } catch (const std::exception& error) {
    return {StatusCode::kReadFailed, std::string("cannot be imported: ") + error.what(), input};
  }
}

}  // namespace lumo
