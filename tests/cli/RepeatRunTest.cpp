// SPDX-License-Identifier: GPL-3.0-or-later
// Doing a run again from what one of its maps tells.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include "Program.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;
using test::Words;
using testing::HasSubstr;

class RepeatRunTest : public testing::Test {
 protected:
  RepeatRunTest() {
    ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
    test::writeFile(folder_.file("sky.json"),
                    R"({"name": "sky", "ra_deg": 10, "dec_deg": 50, "reference_mhz": 5000, "components": [
                       {"name": "c", "type": "point", "east_mas": 1, "north_mas": 2, "flux_jy": 1, "index": -0.5}]})");
    EXPECT_EQ(run({"simulate", "--sky", folder_.file("sky.json"), "--array", "vlba", "--bands",
                   "4800,5000,5200", "--ifs", "2", "--interval", "900", "--out", folder_.file("uvx")}),
              0)
        << err_;
    for (const auto& entry : fs::directory_iterator(folder_.file("uvx"))) inputs_.push_back(entry.path());
    std::sort(inputs_.begin(), inputs_.end());
  }
  ~RepeatRunTest() override { ::unsetenv("SOURCE_DATE_EPOCH"); }

  int run(const Words& words) {
    const test::Program program(folder_, words);
    const int status = program.wait();
    err_ = program.err();
    return status;
  }
  /// A run with parameters far from their defaults, and one of its maps put aside.
  void runOnce() {
    Words words = {"run"};
    words.insert(words.end(), inputs_.begin(), inputs_.end());
    words.insert(words.end(), {"--folder",     folder_.file("maps"),
                               "--prefix",     "A",
                               "--iterations", "60",
                               "--gain",       "0.2",
                               "--half-size",  "16",
                               "--kernel",     "gauss",
                               "--weighting",  "uniform",
                               "--shift",      "-0.001,0.002",
                               "--select",     "2:none",
                               "--index-max",  "2.5",
                               "--reference",  "5001.5"});
    ASSERT_EQ(run(words), 0) << err_;
    fs::copy_file(folder_.file("maps/A^cln1.exm"), folder_.file("kept.exm"));
  }
  [[nodiscard]] std::map<std::string, std::string> products(const std::string& folder) const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_.file(folder)))
      files[entry.path().filename()] = test::readFile(entry.path());
    return files;
  }

  test::TempFolder folder_;
  Words inputs_;
  std::string err_;
};

TEST_F(RepeatRunTest, EveryProductIsTheSameToTheLastBit) {
  runOnce();
  const auto before = products("maps");
  ASSERT_EQ(before.size(), 12u);
  fs::remove_all(folder_.file("maps"));
  ASSERT_EQ(run({"run", "--from", folder_.file("kept.exm"), "--folder", folder_.file("maps")}), 0) << err_;
  EXPECT_EQ(products("maps") == before, true);
}

TEST_F(RepeatRunTest, TheErrorMapIsRepeatedToo) {
  Words words = {"run",         "--folder", folder_.file("maps"), "--iterations", "20",
                 "--half-size", "16",       "--index-error"};
  words.insert(words.end(), inputs_.begin(), inputs_.end());
  ASSERT_EQ(run(words), 0) << err_;
  const auto before = products("maps");
  ASSERT_EQ(before.count("MFS^sindex_err.exm"), 1u);
  fs::copy_file(folder_.file("maps/MFS^dm0.exm"), folder_.file("kept.exm"));
  fs::remove_all(folder_.file("maps"));
  ASSERT_EQ(run({"run", "--from", folder_.file("kept.exm"), "--folder", folder_.file("maps")}), 0) << err_;
  EXPECT_EQ(products("maps") == before, true);
}

TEST_F(RepeatRunTest, InputsThatMovedAreGivenAnew) {
  runOnce();
  Words words = {"run",      "--from", folder_.file("kept.exm"), "--folder", folder_.file("other"),
                 "--prefix", "B"};
  fs::create_directories(folder_.file("moved"));
  for (const std::string& input : inputs_) {
    const std::string moved = folder_.file("moved/" + fs::path(input).filename().string());
    fs::rename(input, moved);
    words.push_back(moved);
  }
  EXPECT_EQ(run({"run", "--from", folder_.file("kept.exm"), "--folder", folder_.file("other")}), 1);
  EXPECT_THAT(err_, HasSubstr(inputs_[0]));
  ASSERT_EQ(run(words), 0) << err_;
  EXPECT_EQ(test::readFile(folder_.file("other/B^freqrange.txt")),
            test::readFile(folder_.file("maps/A^freqrange.txt")));
}

TEST_F(RepeatRunTest, AnInputThatChangedIsNamedAndNothingIsTouched) {
  runOnce();
  std::string bytes = test::readFile(inputs_[1]);
  std::uint64_t groups = 0;
  std::memcpy(&groups, bytes.data() + 24, sizeof groups);
  bytes[groups + 26] = static_cast<char>(bytes[groups + 26] ^ 1);  // the last bit of the first visibility
  test::writeFile(inputs_[1], bytes);
  const auto before = products("maps");
  fs::remove(folder_.file("kept.exm"));
  fs::copy_file(folder_.file("maps/A^dm0.exm"), folder_.file("kept.exm"));
  EXPECT_EQ(run({"run", "--from", folder_.file("kept.exm"), "--folder", folder_.file("maps")}), 1);
  EXPECT_THAT(err_, HasSubstr(inputs_[1] + " (same size, other content)"));
  EXPECT_EQ(products("maps") == before, true);
}

TEST_F(RepeatRunTest, WhatCannotBeRepeatedIsRefused) {
  runOnce();
  const std::string map = folder_.file("kept.exm");
  EXPECT_EQ(run({"run", "--from", map, "--folder", folder_.file("m"), "--gain", "0.1"}), 2);
  EXPECT_THAT(err_, HasSubstr("--gain cannot stand beside --from"));
  EXPECT_EQ(run({"run", "--from", map, "--folder", folder_.file("m"), inputs_[0]}), 2);
  EXPECT_THAT(err_, HasSubstr("had 3 input files"));
  EXPECT_EQ(run({"run", "--from", folder_.file("maps/A^dm0.exm"), "--folder", folder_.file("maps")}), 2);
  EXPECT_THAT(err_, HasSubstr("among the products"));
  EXPECT_EQ(run({"run", "--from", inputs_[0], "--folder", folder_.file("m")}), 1);
  EXPECT_THAT(err_, HasSubstr(inputs_[0]));
  EXPECT_EQ(run({"run", "--folder", folder_.file("m")}), 2);
  EXPECT_THAT(err_, HasSubstr("no files are given"));
  EXPECT_FALSE(fs::exists(folder_.file("m")));
}

}  // namespace
}  // namespace lumo
