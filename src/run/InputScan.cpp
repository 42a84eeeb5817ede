// SPDX-License-Identifier: GPL-3.0-or-later
#include "run/InputScan.h"

#include <algorithm>
#include <utility>

#include "core/Crc32.h"
#include "imaging/ShareOut.h"
#include "io/AUVXFile.h"

namespace lumo {

namespace {

/// Of a piece: fits the second-level cache, since it is looked at twice.
constexpr std::uint64_t kPieceBytes = std::uint64_t{512} << 10;
/// Pieces that a thread gets in a round.
constexpr std::size_t kPiecesPerMember = 16;

}  // namespace

/// A file that is being read.
struct InputScan::Source {
  Source(TallyRules itsRules, ProgressBar* bar, std::uint64_t bytes)
      : rules(std::move(itsRules)), progress(bar, static_cast<double>(bytes)) {}

  std::int32_t number = 0;
  AFile file;
  TallyRules rules;
  AProgress progress;
  ScannedFile result;
  std::uint64_t firstGroup = 0;  ///< byte at which it begins
  std::uint64_t groupsEnd = 0;
  std::uint64_t cut = 0;     ///< bytes that have become pieces
  std::uint64_t merged = 0;  ///< bytes of which the results are in `result`
};

struct InputScan::Piece {
  Source* source;
  std::uint64_t begin;
  std::size_t bytes;
  bool groups;  ///< whole ones
  std::uint32_t crc = 0;
  GroupTally tally = {};
  Status status = {};
};

InputScan::InputScan(const VisibilityInputs& inputs, const ABMakeParameters& imaging, int threads,
                     const RunIndicators& indicators)
    : inputs_(inputs),
      indicators_(indicators),
      useWeights_(imaging.useVisWeights != 0),
      layout_(imaging),
      reach_(layout_.geometry),
      team_(std::max(threads, 1)),
      buffers_(static_cast<std::size_t>(team_.size())) {}

InputScan::~InputScan() = default;

Status InputScan::open(std::int32_t number) {
  AUVXFile uvx;
  const std::string& name = inputs_.names[number];
  if (uvx.Open(name, AFile::kRead) == 0) return uvx.status();
  const AUVXFqTbl& table = inputs_.tables[number];
  const UvxShape& shape = uvx.shape();
  if (static_cast<int>(shape.ifs) != table.GetIFs() ||
      static_cast<int>(shape.channels) != table.GetChannels() || !inputs_.mixes[number].fits(shape.products))
    return {StatusCode::kBadFormat, "was changed since it was listed", name};
  auto source = std::make_unique<Source>(TallyRules(inputs_, number, shape, useWeights_, layout_, reach_),
                                         indicators_.readingBar, uvx.bytes());
  if (source->file.Open(name, AFile::kRead) == 0) return source->file.status();
  source->number = number;
  source->result.facts.bytes = source->file.remaining();
  source->result.groupBytes = uvx.groupBytes();
  source->result.visibilitiesPerGroup = std::uint64_t{shape.ifs} * shape.channels;
  source->firstGroup = uvx.groupOffset();
  source->groupsEnd = uvx.groupOffset() + uvx.groupCount() * uvx.groupBytes();
  // It was written anew since it was opened a moment ago.
  if (source->groupsEnd > source->result.facts.bytes)
    return {StatusCode::kBadFormat, "ends before it should", name};
  sources_.push_back(std::move(source));
  return {};
}

Status InputScan::fillRound() {
  round_.clear();
  const std::size_t most = buffers_.size() * kPiecesPerMember;
  while (round_.size() < most) {
    if (sources_.empty() || sources_.back()->cut == sources_.back()->result.facts.bytes) {
      if (opened_ == inputs_.count()) break;
      if (Status status = open(opened_); !status.ok()) return status;
      ++opened_;
      continue;
    }
    Source& source = *sources_.back();
    const bool groups = source.cut >= source.firstGroup && source.cut < source.groupsEnd;
    const std::uint64_t end = groups                           ? source.groupsEnd
                              : source.cut < source.firstGroup ? source.firstGroup
                                                               : source.result.facts.bytes;
    std::uint64_t bytes = kPieceBytes;
    if (groups)
      bytes = std::max<std::uint64_t>(kPieceBytes / source.result.groupBytes, 1) * source.result.groupBytes;
    bytes = std::min(bytes, end - source.cut);
    round_.push_back({&source, source.cut, static_cast<std::size_t>(bytes), groups});
    source.cut += bytes;
  }
  return {};
}

void InputScan::readRound() {
  shareOut(team_, round_.size(), [this](std::size_t n, std::size_t member) {
    Piece& piece = round_[n];
    const Source& source = *piece.source;
    std::vector<std::uint8_t>& buffer = buffers_[member];
    if (buffer.size() < piece.bytes) buffer.resize(piece.bytes);
    piece.status = source.file.readAt(piece.begin, buffer.data(), piece.bytes);
    if (!piece.status.ok()) return;
    piece.crc = crc32Of(buffer.data(), piece.bytes);
    for (std::size_t at = 0; piece.groups && at < piece.bytes; at += source.result.groupBytes)
      piece.tally.add(source.rules, buffer.data() + at);
  });
}

Status InputScan::mergeRound(const std::function<void(std::int32_t, const ScannedFile&)>& take) {
  for (Piece& piece : round_) {
    if (!piece.status.ok()) return std::move(piece.status);
    Source& source = *piece.source;
    source.result.facts.crc = crc32Joined(source.result.facts.crc, piece.crc, piece.bytes);
    source.result.tally.merge(piece.tally);
    source.merged += piece.bytes;
    source.progress.SetPos(static_cast<double>(source.merged));
  }
  while (!sources_.empty() && sources_.front()->merged == sources_.front()->result.facts.bytes) {
    take(sources_.front()->number, sources_.front()->result);
    sources_.pop_front();
  }
  return {};
}

Status InputScan::run(const std::function<void(std::int32_t, const ScannedFile&)>& take) {
  AProgress files(indicators_.fileBar, inputs_.count());
  for (;;) {
    if (indicators_.cancelled()) return {StatusCode::kCancelled, "the run was cancelled"};
    if (Status status = fillRound(); !status.ok()) return status;
    if (round_.empty()) break;
    readRound();
    if (Status status = mergeRound(take); !status.ok()) return status;
    files.SetPos(opened_ - static_cast<double>(sources_.size()));
  }
  RunIndicators::resetBar(indicators_.readingBar);
  return {};
}

}  // namespace lumo
