// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>

#include "core/Crc32.h"
#include "core/LittleEndian.h"
#include "io/AUVXFile.h"
#include "io/AUVXFqTbl.h"
#include "io/AUVXGroup.h"
#include "io/AUVXHeader.h"
#include "io/AUVXPosIndex.h"
#include "io/AUVXRead_FqS.h"
#include "io/AUVXSources.h"
#include "io/AUVXVisibility.h"
#include "io/UvxLayout.h"
#include "io/UvxSample.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::sampleContent;
using test::TempFolder;
using test::writeSample;

class AUVXFileTest : public testing::Test {
 protected:
  std::string sample(int groups = 4, const UvxContent& content = sampleContent()) {
    const std::string path = folder_.file("sample.uvx");
    writeSample(path, content, groups);
    return path;
  }
  /// Writes the bytes with a header checksum that matches them.
  std::string withHeader(std::string bytes) {
    storeLittle<std::uint32_t>(bytes.data() + 124, crc32Of(bytes.data(), 124));
    const std::string path = folder_.file("changed.uvx");
    test::writeFile(path, bytes);
    return path;
  }
  static void expectRefused(const std::string& path, const std::string& words) {
    AUVXFile file;
    EXPECT_EQ(file.Open(path, AFile::kRead), 0);
    EXPECT_EQ(file.status().file(), path);
    EXPECT_NE(file.status().message().find(words), std::string::npos) << file.status().message();
  }

  TempFolder folder_;
};

TEST_F(AUVXFileTest, HeaderHasTheDocumentedBytes) {
  const std::string bytes = test::readFile(sample(4));
  EXPECT_EQ(bytes.substr(0, 8), std::string("\x89UVX\r\n\x1a\n"));
  const auto at32 = [&](std::size_t at) { return loadLittle<std::uint32_t>(bytes.data() + at); };
  EXPECT_EQ(at32(8), 1u);
  EXPECT_EQ(at32(12), 128u);
  EXPECT_EQ(loadLittle<std::uint64_t>(bytes.data() + 16), 4u);
  EXPECT_EQ(at32(32), 26u + 12 * 2 * 3 * 2);
  EXPECT_EQ(at32(36), 2u);
  EXPECT_EQ(at32(40), 3u);
  EXPECT_EQ(at32(44), 2u);
  EXPECT_EQ(loadLittle<double>(bytes.data() + 48), 0.0);
  EXPECT_EQ(loadLittle<double>(bytes.data() + 56), 3.0);
  EXPECT_EQ(loadLittle<double>(bytes.data() + 64), -6.0);
  EXPECT_EQ(loadLittle<double>(bytes.data() + 72), 0.0);
  EXPECT_EQ(bytes.substr(92, 16), std::string("JY") + std::string(14, '\0'));
  EXPECT_EQ(at32(124), crc32Of(bytes.data(), 124));
}

TEST_F(AUVXFileTest, TablesReadBackAsWritten) {
  AUVXFile file;
  ASSERT_EQ(file.Open(sample(1, sampleContent(2, 3, 2)), AFile::kRead), 1) << file.status().text();
  const AUVXSources sources(file);
  ASSERT_EQ(sources.count(), 1);
  EXPECT_EQ(sources[0].id, 7);
  EXPECT_EQ(sources[0].name, "0235+164");
  EXPECT_EQ(sources[0].frame, UvxFrame::kIcrs);
  EXPECT_EQ(sources[0].rightAscension, 39.662209);
  EXPECT_EQ(sources.ForID(8), nullptr);
  const AUVXFqTbl table(file, 7);
  EXPECT_EQ(table.GetFreqSels(), 2);
  EXPECT_EQ(table.GetIFs(), 2);
  EXPECT_EQ(table.GetChannels(), 3);
  EXPECT_EQ(table.GetFreqSelID(1), 4);
  EXPECT_EQ(table.GetFreqSelNum(4), 1);
  EXPECT_EQ(table.GetFreqSelNum(9), -1);
  EXPECT_EQ(table.GetFreq(2, 1, 1), 1.5e9 + 1e8 + 1e7 - 2 * 2.5e5);
  EXPECT_EQ(AUVXHeader(file).unit, "JY");
  EXPECT_FALSE(file.GetTable("XX").has_value());
}

TEST_F(AUVXFileTest, ExtentsLeaveOutFlaggedAndNonFiniteGroups) {
  UvxWriter writer;
  const std::string path = folder_.file("flags.uvx");
  ASSERT_TRUE(writer.begin(path, sampleContent(1, 1)).ok());
  const std::vector<AUVXComplex> values(2);
  for (const auto& [u, flag] :
       {std::pair{5.0f, 0}, std::pair{90.0f, 1}, std::pair{std::nanf(""), 0}, std::pair{-2.0f, 0}}) {
    UvxRecord record;
    record.flag = static_cast<std::uint8_t>(flag);
    record.u = u;
    ASSERT_TRUE(writer.append(record, values).ok());
  }
  ASSERT_TRUE(writer.finish().ok());
  AUVXFile file;
  ASSERT_EQ(file.Open(path, AFile::kRead), 1);
  EXPECT_EQ(file.uMin(), -2.0);
  EXPECT_EQ(file.uMax(), 5.0);
}

TEST_F(AUVXFileTest, CopiedGroupsAreThoseOfTheMap) {
  const std::string path = sample(5);
  AUVXFile file;
  ASSERT_NE(file.Open(path, AFile::kRead), 0);
  std::vector<std::uint8_t> copy(std::size_t{3} * file.groupBytes());
  ASSERT_TRUE(file.copyGroups(1, 4, copy.data()).ok());
  EXPECT_EQ(std::memcmp(copy.data(), file.groupAt(1), copy.size()), 0);
  std::filesystem::resize_file(path, file.groupOffset() + std::uint64_t{3} * file.groupBytes());
  EXPECT_FALSE(file.copyGroups(1, 4, copy.data()).ok());
}

TEST_F(AUVXFileTest, ReaderYieldsTheGroupsOfOneSourceAndSelection) {
  const std::string path = folder_.file("mixed.uvx");
  UvxWriter writer;
  ASSERT_TRUE(writer.begin(path, sampleContent(1, 1, 2)).ok());
  // Source, selection, u; the third has no finite u.
  const std::vector<std::tuple<int, int, float>> groups = {
      {7, 3, 1.0f}, {8, 3, 2.0f}, {7, 3, std::numeric_limits<float>::infinity()}, {7, 4, 4.0f}, {7, 3, 5.0f}};
  for (const auto& [source, selection, u] : groups) {
    UvxRecord record;
    record.source = static_cast<std::int16_t>(source);
    record.freqSel = static_cast<std::int8_t>(selection);
    record.u = u;
    ASSERT_TRUE(writer.append(record, std::vector<AUVXComplex>(2, AUVXComplex(u, 0, 1))).ok());
  }
  ASSERT_TRUE(writer.finish().ok());

  AUVXFile file;
  ASSERT_EQ(file.Open(path, AFile::kRead), 1);
  AUVXVisibility visibility(file);
  AUVXGroup group;
  int flag = -1;
  std::vector<double> seen;
  AUVXRead_FqS reader(&file, 7, 3, nullptr);
  while (reader.GetUVGVis(group, visibility, flag) != 0) {
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(visibility(0, 0, 1).Re(), static_cast<float>(group.u()));
    seen.push_back(group.u());
  }
  EXPECT_EQ(seen, (std::vector<double>{1.0, 5.0}));
}

TEST_F(AUVXFileTest, PositionIndexFindsTheGroupsOfOneSource) {
  AUVXFile file;
  ASSERT_EQ(file.Open(sample(3), AFile::kRead), 1);
  AUVXPosIndex index(file, 7, nullptr);
  std::uint64_t position = 99;
  std::vector<double> seen;
  AUVXGroup group;
  while (index.GetIndex(position) != 0) {
    ASSERT_EQ(file.SeekUVGroup(position), 1);
    ASSERT_EQ(group.load(file), 1);
    seen.push_back(group.v());
  }
  EXPECT_EQ(seen, (std::vector<double>{0.0, -2.0, -4.0}));
  EXPECT_EQ(file.SeekUVGroup(3), 0);
  EXPECT_EQ(group.load(file), 0);
  AUVXPosIndex none(file, 6, nullptr);
  EXPECT_EQ(none.GetIndex(position), 0);
}

TEST_F(AUVXFileTest, PositionsCanBeAskedForInPortions) {
  AUVXFile file;
  ASSERT_EQ(file.Open(sample(5), AFile::kRead), 1);
  AUVXPosIndex index(file, 7, nullptr, 1);
  std::vector<std::uint64_t> seen;
  std::uint64_t position = 0;
  for (const std::uint64_t end : {3U, 3U, 99U}) {
    index.limit(end);
    while (index.GetIndex(position) != 0) seen.push_back(position);
    seen.push_back(100);  // the end of a portion
  }
  EXPECT_EQ(seen, (std::vector<std::uint64_t>{1, 2, 100, 100, 3, 4, 100}));
}

TEST_F(AUVXFileTest, VisibilitiesAreOrderedIfChannelProduct) {
  AUVXFile file;
  ASSERT_EQ(file.Open(sample(2), AFile::kRead), 1);
  AUVXVisibility visibility(file);
  ASSERT_EQ(file.SeekUVGroup(1), 1);
  ASSERT_EQ(visibility.load(file), 1);
  for (int i = 0; i < 2; ++i)
    for (int c = 0; c < 3; ++c)
      for (int p = 0; p < 2; ++p)
        EXPECT_EQ(visibility(i, c, p).Re(), 100.0f + static_cast<float>((i * 3 + c) * 2 + p));
}

TEST_F(AUVXFileTest, MissingFileIsNotFound) {
  AUVXFile file;
  EXPECT_EQ(file.Open(folder_.file("absent.uvx"), AFile::kRead), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kNotFound);
  EXPECT_EQ(file.Open(folder_.path(), AFile::kRead), 0);
  EXPECT_EQ(file.status().code(), StatusCode::kReadFailed);
}

TEST_F(AUVXFileTest, OtherFilesAreRefusedBySentence) {
  test::writeFile(folder_.file("empty.uvx"), "");
  expectRefused(folder_.file("empty.uvx"), "shorter than the 128-byte header");
  test::writeFile(folder_.file("text.uvx"), std::string(500, 'x'));
  expectRefused(folder_.file("text.uvx"), "not a UVX file");
}

TEST_F(AUVXFileTest, DamagedHeaderAndTablesFailTheirChecksums) {
  std::string bytes = test::readFile(sample());
  std::string header = bytes;
  header[20] = static_cast<char>(header[20] ^ 1);
  test::writeFile(folder_.file("header.uvx"), header);
  expectRefused(folder_.file("header.uvx"), "damaged header");
  bytes[128 + 4 * (26 + 144) + 5] ^= 1;  // the first table follows the four groups
  test::writeFile(folder_.file("table.uvx"), bytes);
  expectRefused(folder_.file("table.uvx"), "damaged table 'SU'");
}

TEST_F(AUVXFileTest, HostileHeaderCountsAreRefusedBeforeAnythingIsAllocated) {
  const std::string good = test::readFile(sample());
  const auto with64 = [&](std::size_t at, std::uint64_t value) {
    std::string bytes = good;
    storeLittle<std::uint64_t>(bytes.data() + at, value);
    return withHeader(bytes);
  };
  const auto with32 = [&](std::size_t at, std::uint32_t value) {
    std::string bytes = good;
    storeLittle<std::uint32_t>(bytes.data() + at, value);
    return withHeader(bytes);
  };
  expectRefused(with32(8, 2), "version 2");
  expectRefused(with32(12, 64), "header size");
  expectRefused(with64(16, std::numeric_limits<std::uint64_t>::max()), "cut short");
  expectRefused(with64(16, 5000), "cut short");
  expectRefused(with64(24, std::numeric_limits<std::uint64_t>::max() - 3), "cut short");
  expectRefused(with64(24, 0), "cut short");
  expectRefused(with32(32, 0), "groups of 0 bytes");
  expectRefused(with32(36, 0xFFFFFFFFu), "groups of");
  expectRefused(with32(40, 0), "no IF, channel or Stokes product");
  expectRefused(with64(80, std::numeric_limits<std::uint64_t>::max()), "directory");
  expectRefused(with32(88, 0xFFFFFFFFu), "directory");
  expectRefused(with32(88, 0), "no table 'SU'");
  expectRefused(with64(48, 0x7FF8000000000000u), "extent that is not finite");
}

TEST_F(AUVXFileTest, TablesThatDisagreeWithTheShapeAreRefused) {
  // One IF of six channels has the stride of two IFs of three, but not its frequency table.
  std::string bytes = test::readFile(sample());
  storeLittle<std::uint32_t>(bytes.data() + 36, 1);
  storeLittle<std::uint32_t>(bytes.data() + 40, 6);
  expectRefused(withHeader(bytes), "table 'FQ'");
  storeLittle<std::uint32_t>(bytes.data() + 36, 2);
  storeLittle<std::uint32_t>(bytes.data() + 40, 2);
  storeLittle<std::uint32_t>(bytes.data() + 44, 3);
  expectRefused(withHeader(bytes), "Stokes products");
}

TEST_F(AUVXFileTest, RowsWhoseBytesOverflowAreRefused) {
  constexpr std::uint32_t kIfs = 268451840;
  constexpr std::uint32_t kRows = 4294705160;
  constexpr std::uint64_t kTableBytes = 64;
  static_assert((8 + std::uint64_t{16} * kIfs) * kRows == kTableBytes);  // less 2^64
  UvxContent content = sampleContent(1, 1);
  content.shape.products = 1;
  content.products = {-1};
  std::string bytes = test::readFile(sample(0, content));
  storeLittle<std::uint32_t>(bytes.data() + uvx_header::kIfs, kIfs);
  storeLittle<std::uint32_t>(bytes.data() + uvx_header::kGroupBytes, 26 + 12 * kIfs);
  const std::size_t name = bytes.find("FQ");
  ASSERT_NE(name, std::string::npos);
  char* const entry = bytes.data() + name;
  const auto offset = loadLittle<std::uint64_t>(entry + uvx_entry::kOffset);
  ASSERT_LE(offset + kTableBytes, bytes.size());
  storeLittle<std::uint64_t>(entry + uvx_entry::kSize, kTableBytes);
  storeLittle<std::uint32_t>(entry + uvx_entry::kRows, kRows);
  storeLittle<std::uint32_t>(entry + uvx_entry::kCrc, crc32Of(bytes.data() + offset, kTableBytes));
  expectRefused(withHeader(bytes), "table 'FQ' of 64 bytes for 4294705160 rows");
}

TEST_F(AUVXFileTest, WriterRefusesContentItCannotHold) {
  const auto refused = [&](const UvxContent& content) {
    UvxWriter writer;
    return !writer.begin(folder_.file("bad.uvx"), content).ok();
  };
  UvxContent content = sampleContent();
  content.sources.clear();
  EXPECT_TRUE(refused(content));
  content = sampleContent();
  content.selections[0].id = 128;
  EXPECT_TRUE(refused(content));
  content = sampleContent();
  content.selections[0].bands.pop_back();
  EXPECT_TRUE(refused(content));
  content = sampleContent();
  content.selections[0].bands[0].frequency = std::nan("");
  EXPECT_TRUE(refused(content));
  content = sampleContent();
  content.products[0] = 5;
  EXPECT_TRUE(refused(content));
  content = sampleContent();
  content.shape.channels = 0xFFFFFFFFu;
  EXPECT_TRUE(refused(content));
  EXPECT_FALSE(test::exists(folder_.file("bad.uvx")));
}

TEST_F(AUVXFileTest, FileCutAtAnyLengthIsRefused) {
  const std::string bytes = test::readFile(sample());
  const std::string path = folder_.file("cut.uvx");
  for (std::size_t length = 0; length < bytes.size(); length += 7) {
    test::writeFile(path, bytes.substr(0, length));
    AUVXFile file;
    EXPECT_EQ(file.Open(path, AFile::kRead), 0) << length;
    EXPECT_FALSE(file.status().message().empty());
  }
}

TEST_F(AUVXFileTest, RandomDamageNeverHarmsTheReader) {
  const std::string good = test::readFile(sample(5, sampleContent(2, 2, 2)));
  std::mt19937 random(20261121);
  const std::string path = folder_.file("damaged.uvx");
  int opened = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    std::string bytes = good;
    for (int hits = 1 + static_cast<int>(random() % 4); hits > 0; --hits)
      bytes[random() % bytes.size()] = static_cast<char>(random());
    storeLittle<std::uint32_t>(bytes.data() + 124, crc32Of(bytes.data(), 124));
    test::writeFile(path, bytes);
    AUVXFile file;
    if (file.Open(path, AFile::kRead) == 0) continue;
    ++opened;
    AUVXVisibility visibility(file);
    AUVXGroup group;
    int flag = 0;
    int groups = 0;
    const AUVXFqTbl table(file, 7);
    for (int s = 0; s < table.GetFreqSels(); ++s) {
      AUVXRead_FqS reader(&file, 7, table.GetFreqSelID(s), nullptr);
      while (reader.GetUVGVis(group, visibility, flag) != 0) ++groups;
    }
    // Selections of one ID share their groups, so each group may be seen once per selection.
    EXPECT_LE(groups, 5 * table.GetFreqSels());
  }
  // Damage inside the groups is not the reader's to see, so a good part must still open.
  EXPECT_GT(opened, 100);
}

}  // namespace
}  // namespace lumo
