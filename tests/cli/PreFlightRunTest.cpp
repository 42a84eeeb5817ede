// SPDX-License-Identifier: GPL-3.0-or-later
// What `run` tells of its memory and its time, against what the system says of the process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "Program.h"
#include "core/PhaseTimer.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using nlohmann::json;
using test::Words;

// A build whose memory is not that of the program.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kOwnMemory = false;
#else
constexpr bool kOwnMemory = true;
#endif

class PreFlightRunTest : public testing::Test {
 protected:
  PreFlightRunTest() {
    test::writeFile(folder_.file("sky.json"),
                    R"({"name": "sky", "ra_deg": 10, "dec_deg": 50, "reference_mhz": 5000, "components": [
                       {"name": "c", "type": "point", "east_mas": 1, "north_mas": 2, "flux_jy": 1, "index": -0.5}]})");
  }
  void simulate(const Words& options) {
    Words words = {"simulate", "--sky", folder_.file("sky.json"), "--array",
                   "vlba",     "--out", folder_.file("uvx")};
    words.insert(words.end(), options.begin(), options.end());
    const test::Program program(folder_, words);
    ASSERT_EQ(program.wait(), 0) << program.err();
  }
  /// The object that a run prints.
  json run(const Words& options) {
    Words words = {"run", "--folder", folder_.file("maps"), "--json"};
    for (const auto& entry : std::filesystem::directory_iterator(folder_.file("uvx")))
      words.push_back(entry.path());
    words.insert(words.end(), options.begin(), options.end());
    const Stopwatch watch;
    const test::Program program(folder_, words);
    peak_ = 0;
    const int status = program.wait(&peak_);
    seconds_ = watch.seconds();
    err_ = program.err();
    EXPECT_EQ(status, 0) << err_;
    return json::parse(program.out());
  }

  test::TempFolder folder_;
  std::uint64_t peak_ = 0;  ///< largest resident size of the last run, bytes
  double seconds_ = 0;      ///< of the last run, seen from outside
  std::string err_;
};

TEST_F(PreFlightRunTest, TheMemoryToldIsNotExceededAndNotFarFromThePeak) {
  if (!kOwnMemory) GTEST_SKIP() << "a sanitizer keeps memory of its own";
  simulate({"--bands", "4800,5000", "--ifs", "4", "--channels", "4", "--interval", "30"});
  struct Case {
    const char* size;
    const char* order;
    const char* threads;
    Words more;
  };
  const Case cases[] = {{"256", "1", "1", {}},
                        {"256", "4", "2", {}},
                        {"512", "2", "1", {}},
                        {"512", "3", "2", {"--weighting", "uniform"}},
                        {"512", "2", "2", {"--kernel", "gauss", "--kernel-width", "3,3"}},
                        {"1024", "1", "2", {}},
                        {"1024", "2", "1", {"--uv-limit", "1"}},
                        {"1024", "3", "2", {"--fast-clean", "--index-error"}}};
  for (const Case& c : cases) {
    Words words = {"--half-size", c.size, "--order", c.order, "--threads", c.threads, "--iterations", "20"};
    words.insert(words.end(), c.more.begin(), c.more.end());
    const json told = run(words)["preflight"]["memory"];
    const double ratio = told["peak_bytes"].get<double>() / static_cast<double>(peak_);
    const std::string which = std::string(c.size) + ", order " + c.order + ", " + c.threads + " threads";
    RecordProperty(which, std::to_string(ratio));
    EXPECT_GE(ratio, 1.0) << which << ": " << told << " against " << peak_;
    // Too high where the data leave pages of the spectral grids untouched, where lower frequencies cover
    // fewer tiles than the highest, where the C library gives back what it may keep, and by what is left of
    // the 8 MB for code that is first used during the run.
    EXPECT_LE(ratio, 1.7) << which << ": " << told << " against " << peak_;
  }
}

TEST_F(PreFlightRunTest, ALimitOnTheProcessRefusesWhatCannotFit) {
  if (!kOwnMemory) GTEST_SKIP() << "a sanitizer reserves more than any limit";
  simulate({"--bands", "5000", "--ifs", "2", "--interval", "600"});
  Words words = {"run",     "--folder", folder_.file("maps"), folder_.file("uvx/sky_5000.uvx"),
                 "--order", "2",        "--half-size"};
  words.push_back("1024");
  // 1024 x 1024 pixels, two terms: five grids and an image of 2048 x 1025 x 16 bytes are 201 MB.
  const test::Program refused(folder_, words, LUMO_CLI, 100);
  EXPECT_EQ(refused.wait(), 1);
  EXPECT_THAT(refused.err(), testing::HasSubstr("need 20"));
  EXPECT_THAT(refused.err(),
              testing::HasSubstr("(this process's limit on its data (ulimit -d)); lower the map size"));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.file("maps")));
  words.back() = "256";
  const test::Program done(folder_, words, LUMO_CLI, 100);
  EXPECT_EQ(done.wait(), 0) << done.err();
}

double sumOfParts(const json& phase) {
  double sum = 0;
  for (const json& part : phase["parts"])
    if (part["name"] != "other") sum += part["seconds"].get<double>();
  return sum;
}

TEST_F(PreFlightRunTest, ThePhasesAccountForTheTimeOfTheProcess) {
  simulate({"--bands", "4800,5000", "--ifs", "4", "--channels", "8", "--interval", "30"});
  const json process = run({"--half-size", "1024", "--order", "2", "--iterations", "300"})["timing"];
  const double seconds = process["seconds"];
  EXPECT_EQ(process["name"], "process");
  EXPECT_EQ(process["share"], 1);
  // The system counts the start of a process in steps of 10 ms.
  EXPECT_LE(seconds, seconds_ + 0.011);
  // Outside it: forking, printing, giving back memory.
  EXPECT_GE(seconds, 0.8 * seconds_);
  // What no phase accounts for is below 3 % at either level, and inside imaging and CLEAN.
  EXPECT_GE(sumOfParts(process), 0.97 * seconds) << process;
  ASSERT_EQ(process["parts"][1]["name"], "run");
  const json& whole = process["parts"][1];
  EXPECT_GE(sumOfParts(whole) + seconds - whole["seconds"].get<double>(), 0.97 * seconds) << whole;
  for (const json& part : whole["parts"]) {
    if (!part.contains("parts")) continue;
    EXPECT_GE(sumOfParts(part) + 0.03 * seconds, part["seconds"].get<double>()) << part;
    EXPECT_LE(sumOfParts(part), part["seconds"].get<double>() + 1e-9) << part;
  }
}

}  // namespace
}  // namespace lumo
