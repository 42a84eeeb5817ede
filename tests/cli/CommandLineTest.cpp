// SPDX-License-Identifier: GPL-3.0-or-later
// The program itself: exit codes, messages, JSON, interrupts.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Program.h"
#include "core/PendingFile.h"
#include "io/MapProduct.h"
#include "io/UvxSample.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::Program;
using test::Words;

class CommandLineTest : public testing::Test {
 protected:
  int run(const Words& words) {
    const Program program(folder_, words);
    const int status = program.wait();
    out_ = program.out();
    err_ = program.err();
    return status;
  }
  /// Two bands of a small sky as files of the folder.
  Words simulated(const std::string& interval = "600", const std::string& channels = "1") {
    test::writeFile(folder_.file("sky.json"),
                    R"({"name": "sky", "ra_deg": 10, "dec_deg": 50, "reference_mhz": 5000, "components": [
                       {"name": "c", "type": "point", "east_mas": 0, "north_mas": 0, "flux_jy": 1, "index": -0.5}]})");
    EXPECT_EQ(
        run({"simulate", "--sky", folder_.file("sky.json"), "--array", "vlba", "--bands", "4800,5200",
             "--ifs", "2", "--channels", channels, "--interval", interval, "--out", folder_.file("uvx")}),
        0)
        << err_;
    Words files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.file("uvx")))
      files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
  }
  int runOn(Words files, const Words& more) {
    files.insert(files.begin(), "run");
    files.insert(files.end(), {"--folder", folder_.file("maps")});
    files.insert(files.end(), more.begin(), more.end());
    return run(files);
  }
  [[nodiscard]] std::vector<std::string> leftovers() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.file("maps")))
      if (entry.path().filename().string().starts_with(PendingFile::kTemporaryPrefix))
        names.push_back(entry.path());
    return names;
  }

  test::TempFolder folder_;
  std::string out_, err_;
};

TEST_F(CommandLineTest, WrongCommandLinesExitWithTwo) {
  EXPECT_EQ(run({}), 2);
  EXPECT_EQ(run({"frobnicate"}), 2);
  EXPECT_EQ(run({"run"}), 2);
  EXPECT_EQ(run({"run", "x.uvx", "--folder", "f", "--gain", "much"}), 2);
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_EQ(run({"--version"}), 0);
  EXPECT_EQ(out_.substr(0, 5), "Lumo ");
}

TEST_F(CommandLineTest, InputThatCannotBeUsedExitsWithOneAndNamesTheFile) {
  test::writeFile(folder_.file("bad.uvx"), "nonsense");
  EXPECT_EQ(runOn({folder_.file("bad.uvx")}, {}), 1);
  EXPECT_NE(err_.find(folder_.file("bad.uvx")), std::string::npos) << err_;
  EXPECT_EQ(run({"info", folder_.file("absent.uvx")}), 1);
  EXPECT_EQ(run({"import", folder_.file("bad.uvx"), "--out", folder_.path()}), 1);
  EXPECT_FALSE(test::exists(folder_.file("maps")));
}

TEST_F(CommandLineTest, RefusedValuesExitWithTwoAndNameTheField) {
  const Words files = simulated();
  const std::vector<std::pair<Words, std::string>> cases = {
      {{"--order", "5"}, "Order"},
      {{"--order", "0"}, "Order"},
      {{"--order", "1", "--index-error"}, "error map of the spectral index needs 2 spectral terms"},
      {{"--iterations", "0"}, "CLEAN Iterations"},
      {{"--gain", "2.5"}, "Gain"},
      {{"--threshold", "1.5"}, "Index threshold"},
      {{"--reference", "9000"}, "Reference"},
      {{"--reference", "soon"}, "--reference"},
      {{"--half-size", "300"}, "halfSizeX"},
      {{"--half-size", "64"}, "halfSizeX"},
      {{"--uniform-box", "3,1", "--weighting", "uniform"}, "uniformBoxU"},
      {{"--uv-limit", "-1"}, "uvLimitU"},
      {{"--kernel", "sinc"}, "--kernel"},
      {{"--shift", "1"}, "--shift"},
      {{"--select", "3:1"}, "--select"},
      {{"--select", "1:77"}, "77"}};
  for (const auto& [options, words] : cases) {
    EXPECT_EQ(runOn(files, options), 2) << options[0] << " " << options[1];
    EXPECT_NE(err_.find(words), std::string::npos) << err_;
  }
  EXPECT_FALSE(test::exists(folder_.file("maps")));
}

TEST_F(CommandLineTest, AnOptionWithoutAValueBehindItsEqualsSignIsEmpty) {
  ASSERT_EQ(runOn(simulated(), {"--order", "1", "--iterations", "1", "--prefix=", "--nonnegative"}), 0)
      << err_;
  EXPECT_TRUE(test::exists(folder_.file("maps/^bm0.exm")));
}

TEST_F(CommandLineTest, AWrongCommandLineIsAJsonErrorToo) {
  EXPECT_EQ(run({"run", "x.uvx", "--folder", "f", "--order", "many", "--json"}), 2);
  EXPECT_EQ(nlohmann::json::parse(out_)["error"]["code"], "invalid-value");
  EXPECT_EQ(run({"run", "x.uvx", "--folder", "f", "--order", "many"}), 2);
  EXPECT_EQ(out_, "");
}

TEST_F(CommandLineTest, EmptyValuesOfOtherOptionsAreRefused) {
  const Words files = simulated();
  for (const Words& options : {Words{"--threshold="}, Words{"--index-min", ""}, Words{"--half-size", ""},
                               Words{"--log="}, Words{"--gain", ""}, Words{"--kernel", ""}}) {
    EXPECT_EQ(runOn(files, options), 2) << options[0];
    EXPECT_NE(err_.find("empty"), std::string::npos) << err_;
  }
  EXPECT_FALSE(test::exists(folder_.file("maps")));
}

TEST_F(CommandLineTest, NoCommandWritesOverItsInputs) {
  const Words files = simulated();
  const std::string sky = test::readFile(folder_.file("sky.json"));
  test::writeFile(folder_.file("uvx/sky_4900.uvx"), sky);
  EXPECT_EQ(run({"simulate", "--sky", folder_.file("uvx/sky_4900.uvx"), "--array", "vlba", "--bands", "4900",
                 "--out", folder_.file("uvx")}),
            1);
  EXPECT_EQ(test::readFile(folder_.file("uvx/sky_4900.uvx")), sky);
  // A product of the run, also one to come, and the map that the run repeats.
  const std::string map = folder_.file("maps/MFS^cln0.exm");
  EXPECT_EQ(runOn(files, {"--iterations", "1", "--log", map}), 2);
  EXPECT_FALSE(test::exists(folder_.file("maps")));
  ASSERT_EQ(runOn(files, {"--iterations", "1"}), 0) << err_;
  const std::string made = test::readFile(map);
  EXPECT_EQ(run({"run", "--from", map, "--folder", folder_.file("again"), "--log", map}), 2);
  EXPECT_EQ(test::readFile(map), made);
}

TEST_F(CommandLineTest, AHistoryDoesNotLeadToAnotherFolder) {
  const Words files = simulated();
  std::filesystem::create_directory(folder_.file("maps"));
  std::filesystem::create_directory(folder_.file("maps/sub"));
  ASSERT_EQ(runOn(files, {"--iterations", "1", "--prefix", "sub/x"}), 0) << err_;
  const std::string map = folder_.file("maps/sub/x^cln0.exm");
  EXPECT_EQ(run({"run", "--from", map, "--folder", folder_.file("again")}), 2);
  EXPECT_NE(err_.find("sub/x, is more than the start of a name"), std::string::npos) << err_;
  EXPECT_FALSE(test::exists(folder_.file("again")));
  EXPECT_EQ(run({"run", "--from", map, "--folder", folder_.file("again"), "--prefix", "x"}), 0) << err_;
}

TEST_F(CommandLineTest, JsonOfARunHasItsKeysAndNothingElseOnStandardOutput) {
  const Words files = simulated();
  ASSERT_EQ(runOn(files, {"--iterations", "20", "--json", "--shift", "-.0005,0.0003"}), 0) << err_;
  const auto json = nlohmann::json::parse(out_);
  EXPECT_EQ(json["iterations"], 20);
  EXPECT_EQ(json["stopped"], false);
  EXPECT_EQ(json["survey"]["number"], 4);
  EXPECT_EQ(json["settings"]["order"], 2);
  EXPECT_EQ(json["settings"]["shift_arcsec"][0], -0.0005);
  EXPECT_FALSE(json.contains("error"));
  const auto& run = json["timing"]["parts"][1];
  EXPECT_EQ(json["phases"]["process"], json["timing"]["seconds"]);
  EXPECT_EQ(json["phases"]["run"], run["seconds"]);
  EXPECT_EQ(json["phases"]["run/check"], run["parts"][0]["seconds"]);
  EXPECT_GT(json["phases"]["run/image/grid/read"], 0.0);
  // 3 beams, 2 dirty maps, residual, 2 x 2 CLEAN maps, frequency range, index map.
  ASSERT_EQ(json["products"].size(), 12u);
  for (const auto& product : json["products"]) {
    EXPECT_EQ(product["written"], true);
    EXPECT_TRUE(test::exists(product["path"])) << product["path"];
  }
  // Half a milliarcsecond to the west and 0.3 to the north lies in the map's middle now.
  LoadedMap map;
  ASSERT_TRUE(readMap(folder_.file("maps/MFS^dm0.exm"), map).ok());
  const std::uint32_t halfColumns = map.matrix->columns() / 2;
  const std::uint32_t halfRows = map.matrix->rows() / 2;
  const double cell = (map.range.xMax - map.range.xMin) / (map.matrix->columns() - 1);
  EXPECT_NEAR(map.range.xMin + halfColumns * cell, -0.0005, 1e-9);
  const double cellY = (map.range.yMax - map.range.yMin) / (map.matrix->rows() - 1);
  EXPECT_NEAR(map.range.yMin + halfRows * cellY, 0.0003, 1e-9);
}

TEST_F(CommandLineTest, JsonOfAFailureHasTheError) {
  EXPECT_EQ(runOn({folder_.file("absent.uvx")}, {"--json"}), 1);
  const auto json = nlohmann::json::parse(out_);
  EXPECT_EQ(json["error"]["code"], "not-found");
  EXPECT_EQ(json["error"]["file"], folder_.file("absent.uvx"));
}

TEST_F(CommandLineTest, SelectingNoneOfAFileLeavesTheOthersWhole) {
  const Words files = simulated();
  ASSERT_EQ(runOn(files, {"--iterations", "1", "--json", "--select", "1:none"}), 0) << err_;
  EXPECT_EQ(nlohmann::json::parse(out_)["survey"]["number"], 2);
  EXPECT_NEAR(nlohmann::json::parse(out_)["survey"]["min_hz"].get<double>(), 5.2e9, 1.0);
}

TEST_F(CommandLineTest, SelectionsOfOneFileAddUpAndMayStandBeforeTheFiles) {
  // Selections 3, 4, 5 and 6 of one IF at 1.5, 1.6, 1.7 and 1.8 GHz, all data in selection 3.
  test::writeSample(folder_.file("many.uvx"), test::sampleContent(1, 2, 4), 6);
  ASSERT_EQ(run({"run", "--select", "1:3,4", "--select", "1:6", folder_.file("many.uvx"), "--folder",
                 folder_.file("maps"), "--half-size", "16", "--iterations", "1", "--order", "1", "--json"}),
            1);
  // The sample's points lie on one line, which no beam fits; the survey comes before.
  const auto json = nlohmann::json::parse(out_);
  EXPECT_EQ(json["survey"]["number"], 3);
  EXPECT_EQ(json["survey"]["min_hz"], 1.5e9);
  EXPECT_EQ(json["survey"]["max_hz"], 1.8e9);
}

TEST_F(CommandLineTest, OneFileUnderTwoNamesIsRefused) {
  const Words files = simulated();
  std::filesystem::create_symlink(files[0], folder_.file("link.uvx"));
  EXPECT_EQ(runOn({files[0], folder_.file("link.uvx")}, {}), 2);
  EXPECT_NE(err_.find("given twice"), std::string::npos) << err_;
}

TEST_F(CommandLineTest, OptionsWithoutEffectAreRefused) {
  for (const Words& options : {Words{"--taper", "gauss"}, Words{"--taper-width", "1e6,1e6"},
                               Words{"--uniform-box", "0,0"}, Words{"--kernel-width", "2,2"}})
    EXPECT_EQ(runOn({folder_.file("absent.uvx")}, options), 2) << options[0];
}

TEST_F(CommandLineTest, JsonOfAFailureKeepsTheSettingsAskedFor) {
  EXPECT_EQ(runOn({folder_.file("absent.uvx")}, {"--json", "--half-size", "16", "--kernel", "hat"}), 1);
  const auto json = nlohmann::json::parse(out_);
  EXPECT_EQ(json["settings"]["half_size"][0], 16);
  EXPECT_EQ(json["settings"]["kernel"], "hat");
  EXPECT_TRUE(json["survey"]["min_hz"].is_null());
  EXPECT_TRUE(json["settings"]["reference_mhz"].is_null());
}

TEST_F(CommandLineTest, EqualFrequenciesAreWarnedOfWhenTheyCannotCarryTheOrder) {
  const Words files = simulated();
  std::filesystem::copy_file(files[0], folder_.file("again.uvx"));
  ASSERT_EQ(runOn({files[0], folder_.file("again.uvx")},
                  {"--iterations", "5", "--order", "4", "--half-size", "16"}),
            0);
  EXPECT_NE(err_.find("cannot tell the spectral terms apart"), std::string::npos) << err_;
}

TEST_F(CommandLineTest, MemoryOfARunDoesNotGrowWithTheInput) {
  // 30 MB and 240 MB of visibilities into the same small maps.
  long resident[2] = {};
  const char* const intervals[] = {"40", "5"};
  for (int i = 0; i < 2; ++i) {
    std::filesystem::remove_all(folder_.file("uvx"));
    const Words files = simulated(intervals[i], "64");
    rusage before{}, after{};
    ::getrusage(RUSAGE_CHILDREN, &before);
    ASSERT_EQ(runOn(files, {"--iterations", "1", "--half-size", "16"}), 0) << err_;
    ::getrusage(RUSAGE_CHILDREN, &after);
    resident[i] = after.ru_maxrss;
  }
  // Kilobytes. The largest of all children so far: the second, eight times larger input must not raise it by
  // more than a tenth of its own size.
  EXPECT_LT(resident[1] - resident[0], 24000);
}

TEST_F(CommandLineTest, SameRunGivesTheSameBytesAgainAndOnAnyNumberOfThreads) {
  const Words files = simulated();
  ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
  ASSERT_EQ(runOn(files, {"--iterations", "50"}), 0) << err_;
  std::vector<std::pair<std::string, std::string>> first;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.file("maps")))
    first.emplace_back(entry.path(), test::readFile(entry.path()));
  ASSERT_EQ(first.size(), 12u);
  for (const char* const threads : {"0", "1", "2", "3", "8"}) {
    ASSERT_EQ(runOn(files, {"--iterations", "50", "--threads", threads}), 0) << err_;
    for (const auto& [path, bytes] : first)
      EXPECT_EQ(test::readFile(path) == bytes, true) << path << ", threads " << threads;
  }
  ::unsetenv("SOURCE_DATE_EPOCH");
}

TEST_F(CommandLineTest, LogTellsEveryIterationAndNeverReplacesAnInput) {
  const Words files = simulated();
  ASSERT_EQ(runOn(files, {"--iterations", "50", "--log", folder_.file("clean.tsv")}), 0) << err_;
  const std::string log = test::readFile(folder_.file("clean.tsv"));
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 51);
  EXPECT_NE(log.find("\n50\t"), std::string::npos) << log;
  const std::string before = test::readFile(files[0]);
  EXPECT_EQ(runOn(files, {"--log", files[0]}), 2);
  EXPECT_EQ(test::readFile(files[0]) == before, true);
  EXPECT_EQ(runOn(files, {"--iterations", "5", "--log", folder_.file("no/folder.tsv")}), 1);
  EXPECT_NE(err_.find("folder.tsv"), std::string::npos) << err_;
}

TEST_F(CommandLineTest, InterruptWhileCleaningStopsAndStillWritesTheProducts) {
  Words words = simulated();
  words.insert(words.begin(), "run");
  words.insert(words.end(), {"--folder", folder_.file("maps"), "--iterations", "1000000"});
  const Program program(folder_, words);
  // The last dirty map marks the end of the imaging.
  while (program.running() && !test::exists(folder_.file("maps/MFS^dm1.exm")))
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  program.interrupt();
  EXPECT_EQ(program.wait(), 0) << program.err();
  EXPECT_NE(program.out().find("CLEAN stopped after"), std::string::npos) << program.out();
  LoadedMap map;
  EXPECT_TRUE(readMap(folder_.file("maps/MFS^cln0.exm"), map).ok());
  EXPECT_TRUE(readMap(folder_.file("maps/MFS^sindex.exm"), map).ok());
  EXPECT_TRUE(leftovers().empty());
}

TEST_F(CommandLineTest, InterruptWhileImagingCancelsAndSaysWhatWasKept) {
  // Enough visibilities for the gridding to be under way when the interrupt comes.
  Words words = simulated("4");
  words.insert(words.begin(), "run");
  words.insert(words.end(), {"--folder", folder_.file("maps"), "--kernel", "gauss", "--kernel-width", "8,8"});
  std::filesystem::create_directories(folder_.file("maps"));
  // An old map is removed when the inputs have passed and the imaging is about to begin.
  test::writeFile(folder_.file("maps/MFS^dm0.exm"), "old");
  const Program program(folder_, words);
  while (program.running() && test::exists(folder_.file("maps/MFS^dm0.exm")))
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  program.interrupt();
  EXPECT_EQ(program.wait(), 1);
  EXPECT_NE(program.err().find("cancelled"), std::string::npos) << program.err();
  EXPECT_NE(program.out().find("no product was written"), std::string::npos) << program.out();
  EXPECT_TRUE(std::filesystem::is_empty(folder_.file("maps")));
}

TEST_F(CommandLineTest, InfoDescribesFilesAndMaps) {
  const Words files = simulated();
  ASSERT_EQ(runOn(files, {"--iterations", "5"}), 0) << err_;
  ASSERT_EQ(run({"info", "--json", files[0], folder_.file("maps/MFS^cln0.exm")}), 0) << err_;
  const auto json = nlohmann::json::parse(out_);
  EXPECT_EQ(json["files"][0]["type"], "uvx");
  EXPECT_EQ(json["files"][0]["bands"].size(), 2u);
  EXPECT_EQ(json["files"][0]["bands"][0]["rejected_share"], 0.0);
  EXPECT_EQ(json["files"][1]["type"], "map");
  EXPECT_EQ(json["files"][1]["columns"], 256);
  EXPECT_EQ(json["files"][1]["source"], "sky");
}

}  // namespace
}  // namespace lumo
