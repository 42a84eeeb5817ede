// SPDX-License-Identifier: GPL-3.0-or-later
// What lumo-cli asks of the system while it works: no file is opened but those that the user named and the
// system's own, no connection, no other program. Seen through strace; the tests skip where it is missing or
// may not look.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "Program.h"
#include "support/RealData.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::Program;
using test::Words;
using ::testing::IsEmpty;

/// A system call by name with the paths among its arguments.
struct Call {
  std::string name;
  std::vector<std::string> paths;  ///< absolute, without links in the folders
  std::string line;
};

std::string resolved(const std::string& path) {
  std::error_code error;
  return std::filesystem::weakly_canonical(path, error).string();
}

/// Reads one line of strace: "123 openat(AT_FDCWD, "a", O_RDONLY) = 3". Empty name where it is no call.
Call parsed(const std::string& line) {
  static const std::regex kName(R"(^\d+ +([a-z_0-9]+)\()");
  static const std::regex kText("\"((?:[^\"\\\\]|\\\\.)*)\"");
  Call call;
  call.line = line;
  std::smatch match;
  if (!std::regex_search(line, match, kName)) return call;
  call.name = match[1];
  for (std::sregex_iterator at(line.begin(), line.end(), kText), end; at != end; ++at)
    call.paths.push_back(resolved((*at)[1]));
  return call;
}

bool isOneOf(const std::string& name, const std::vector<std::string>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool opens(const Call& call) {
  return isOneOf(call.name, {"open", "openat", "openat2", "creat"});
}

bool changesFiles(const Call& call) {
  if (isOneOf(call.name, {"openat2", "creat"})) return true;
  if (opens(call))
    return std::regex_search(call.line, std::regex("O_(WRONLY|RDWR|CREAT|TRUNC|APPEND|TMPFILE)"));
  static const std::regex kChanges(
      "^(mkdir|mknod|rmdir|unlink|rename|link|symlink)(at2?)?$|truncate|chmod|chown|utime|setxattr");
  return std::regex_search(call.name, kChanges);
}

bool connects(const Call& call) {
  return isOneOf(call.name,
                 {"socket", "socketpair", "connect", "bind", "listen", "sendto", "sendmsg", "recvfrom"});
}

/// A new process that is not a thread of this one, or another program in its place.
bool starts(const Call& call) {
  if (isOneOf(call.name, {"fork", "vfork", "execve", "execveat"})) return true;
  return call.name.starts_with("clone") && call.line.find("CLONE_THREAD") == std::string::npos &&
         call.line.find("resumed") == std::string::npos;
}

bool liesIn(const std::string& path, const Words& places) {
  return std::any_of(places.begin(), places.end(), [&](const std::string& place) {
    const std::string whole = resolved(place);
    return path == whole || path.starts_with(whole + "/");
  });
}

class NamedFilesTest : public testing::Test {
 protected:
  void SetUp() override {
    if (std::string(LUMO_STRACE).empty()) GTEST_SKIP() << "strace is not installed";
    test::writeFile(folder_.file("sky.json"),
                    R"({"name": "sky", "ra_deg": 10, "dec_deg": 50, "reference_mhz": 5000, "components": [
                       {"name": "c", "type": "point", "east_mas": 0, "north_mas": 0, "flux_jy": 1, "index": -0.5}]})");
  }

  /// Runs lumo-cli under strace. False, after a skip, where processes may not be traced.
  [[nodiscard]] bool trace(const Words& words) {
    const std::string log = folder_.file("calls.txt");
    // Counters of a coverage build go to a folder of their own; leaks cannot be looked for by two at once.
    Words all{"-f",    "-qq",
              "-s",    "4096",
              "-o",    log,
              "-e",    "trace=%file,%network,%process,ftruncate,fchmod,fchown",
              "-E",    "GCOV_PREFIX=" + folder_.file("counters"),
              "-E",    "ASAN_OPTIONS=detect_leaks=0",
              LUMO_CLI};
    all.insert(all.end(), words.begin(), words.end());
    const Program program(folder_, all, LUMO_STRACE);
    status_ = program.wait();
    err_ = program.err();
    calls_.clear();
    std::istringstream lines(test::exists(log) ? test::readFile(log) : "");
    for (std::string line; std::getline(lines, line);)
      if (Call call = parsed(line); !call.name.empty()) calls_.push_back(std::move(call));
    if (!calls_.empty()) return true;
    sayWhyNothingWasSeen();
    return false;
  }

  /// What the program did beside writing into `written` and reading from there, from `read` and from the
  /// system.
  [[nodiscard]] Words strayCalls(const Words& written, Words read) const {
    const std::string counters = folder_.file("counters");
    for (const std::string& place : written) read.push_back(place);
    for (const char* place : {"/lib", "/lib64", "/usr", "/etc", "/proc", "/sys", "/dev"})
      read.emplace_back(place);
    Words stray;
    int programs = 0;
    for (const Call& call : calls_) {
      // The first is the start of lumo-cli itself.
      const bool another = starts(call) && !(call.name == "execve" && programs++ == 0);
      const auto outside = [&](const Words& places) {
        return std::any_of(call.paths.begin(), call.paths.end(), [&](const std::string& path) {
          return !liesIn(path, places) && !liesIn(path, {counters});
        });
      };
      if (another || connects(call) || (changesFiles(call) && outside(written)) ||
          (opens(call) && outside(read)))
        stray.push_back(call.line);
    }
    return stray;
  }
  [[nodiscard]] std::size_t changes() const {
    return static_cast<std::size_t>(std::count_if(calls_.begin(), calls_.end(), changesFiles));
  }
  /// The names of the inputs, made by a simulation that is traced too.
  [[nodiscard]] Words simulated() {
    if (!trace({"simulate", "--sky", folder_.file("sky.json"), "--array", "vlba", "--bands", "4800,5200",
                "--interval", "600", "--out", folder_.file("uvx")}))
      return {};
    Words files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.file("uvx")))
      files.push_back(entry.path());
    return files;
  }

  test::TempFolder folder_;
  std::vector<Call> calls_;
  std::string err_;
  int status_ = 0;

 private:
  void sayWhyNothingWasSeen() const {
    if (err_.find("ptrace") != std::string::npos || err_.find("PTRACE") != std::string::npos)
      GTEST_SKIP() << "processes may not be traced here: " << err_;
    ADD_FAILURE() << "strace saw nothing: " << err_;
  }
};

TEST_F(NamedFilesTest, ASimulationReadsItsModelAndWritesIntoItsFolder) {
  const Words files = simulated();
  if (IsSkipped()) return;
  ASSERT_EQ(files.size(), 2u) << err_;
  EXPECT_THAT(strayCalls({folder_.file("uvx")}, {folder_.file("sky.json")}), IsEmpty());
  // The watch is not blind: the files and their folder are among the changes, and stray where they are not
  // named.
  EXPECT_GE(changes(), 3u);
  EXPECT_GE(strayCalls({}, {folder_.path()}).size(), 3u);
  EXPECT_GE(strayCalls({folder_.file("uvx")}, {}).size(), 1u);
}

TEST_F(NamedFilesTest, ARunReadsItsInputsAndWritesIntoItsFolderAndItsLog) {
  const Words files = simulated();
  if (IsSkipped()) return;
  std::filesystem::create_directory(folder_.file("logs"));
  Words words{"run",          "--folder", folder_.file("maps"), "--log", folder_.file("logs/clean.log"),
              "--iterations", "20",       "--threads",          "2"};
  words.insert(words.end(), files.begin(), files.end());
  ASSERT_TRUE(trace(words));
  ASSERT_EQ(status_, 0) << err_;
  EXPECT_THAT(strayCalls({folder_.file("maps"), folder_.file("logs")}, files), IsEmpty());
  EXPECT_GE(changes(), 13u);  // twelve products and the log
}

TEST_F(NamedFilesTest, LookingAtFilesAndMeasuringMapsChangesNothing) {
  const Words files = simulated();
  if (IsSkipped()) return;
  Words words{"run", "--folder", folder_.file("maps"), "--iterations", "20"};
  words.insert(words.end(), files.begin(), files.end());
  ASSERT_TRUE(trace(words));
  ASSERT_EQ(status_, 0) << err_;
  ASSERT_TRUE(trace({"info", files[0], folder_.file("maps/MFS^cln0.exm")}));
  EXPECT_EQ(status_, 0) << err_;
  EXPECT_THAT(strayCalls({}, {files[0], folder_.file("maps")}), IsEmpty());
  ASSERT_TRUE(trace({"measure", "--folder", folder_.file("maps")}));
  EXPECT_EQ(status_, 0) << err_;
  EXPECT_THAT(strayCalls({}, {folder_.file("maps")}), IsEmpty());
}

TEST_F(NamedFilesTest, AnImportReadsItsInputAndWritesIntoItsFolder) {
  LUMO_NEEDS_REAL_DATA();
  const std::string input = test::realDataFolder() + "vlba-j0414-1996/vis_multichan.vis";
  if (!trace({"import", input, "--out", folder_.file("imported")})) return;
  ASSERT_EQ(status_, 0) << err_;
  EXPECT_THAT(strayCalls({folder_.file("imported")}, {input}), IsEmpty());
  EXPECT_GE(changes(), 2u);
}

#if LUMO_MS
TEST_F(NamedFilesTest, AnImportLeavesAMeasurementSetAlone) {
  LUMO_NEEDS_REAL_DATA();
  const std::string input = test::realDataFolder() + "lofar-3c48-2013-ms/lofar-3c48-regular.ms";
  // casacore opens the lock files for writing, too, but does not write to them.
  Words written{folder_.file("imported")};
  std::vector<std::filesystem::file_time_type> times;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(input)) {
    if (entry.path().filename() == "table.lock") written.push_back(entry.path());
    times.push_back(entry.last_write_time());
  }
  if (!trace({"import", input, "--out", folder_.file("imported")})) return;
  ASSERT_EQ(status_, 0) << err_;
  EXPECT_THAT(strayCalls(written, {input}), IsEmpty());
  std::vector<std::filesystem::file_time_type> after;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(input))
    after.push_back(entry.last_write_time());
  EXPECT_EQ(after, times);
}
#endif

}  // namespace
}  // namespace lumo
