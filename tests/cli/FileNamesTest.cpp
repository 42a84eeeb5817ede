// SPDX-License-Identifier: GPL-3.0-or-later
// Any name that the system takes is a name for an input, a work folder, a prefix and a picture.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "Program.h"
#include "convert/UvfitsBuilder.h"
#include "io/MapProduct.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::Words;
using testing::HasSubstr;

class FileNames : public testing::TestWithParam<std::string> {
 protected:
  int run(const Words& words) {
    const test::Program program(folder_, words);
    const int status = program.wait();
    out_ = program.out();
    err_ = program.err();
    return status;
  }
  /// The name, shortened so that with `suffix` it has 255 bytes at most.
  [[nodiscard]] static std::string with(const std::string& suffix) {
    return GetParam().substr(0, 255 - suffix.size()) + suffix;
  }
  /// An observation of a 1 Jy point at two frequencies.
  static std::string uvfits(double hertz) {
    test::UvfitsBuilder builder;
    builder.axis("FREQ").value = hertz;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> place(-1e-3, 1e-3);
    for (int i = 0; i < 60; ++i) builder.add(place(random), place(random), 258, 1, 0, 1);
    return builder.bytes();
  }

  test::TempFolder folder_;
  std::string out_, err_;
};

TEST_P(FileNames, TakesAnObservationFromImportToPicture) {
  const std::string work = folder_.file(GetParam()) + "/";
  Words command{"run"};
  for (const char* const part : {"a", "b"}) {
    const std::string inputs = folder_.file(part) + "/";
    std::filesystem::create_directory(inputs);
    test::writeFile(inputs + with(".uvfits"), uvfits(*part == 'a' ? 5e9 : 6e9));
    ASSERT_EQ(run({"import", inputs + with(".uvfits"), "--out", inputs}), 0) << err_;
    command.push_back(inputs + with(".uvfits").substr(0, with(".uvfits").size() - 7) + ".uvx");
    ASSERT_TRUE(test::exists(command.back())) << command.back();
  }
  // The longest of the products' names.
  const std::string longest = with("^sindex_err.exm");
  const std::string prefix = longest.substr(0, longest.size() - 15);
  command.insert(command.end(), {"--folder", work, "--prefix", prefix, "--half-size", "16", "--iterations",
                                 "5", "--index-error", "--log", folder_.file(with(".tsv"))});
  ASSERT_EQ(run(command), 0) << err_;
  EXPECT_TRUE(test::exists(work + longest));
  EXPECT_TRUE(test::exists(folder_.file(with(".tsv"))));

  const std::string map = work + prefix + "^cln0.exm";
  const std::string regions = folder_.file(with(".reg"));
  test::writeFile(regions, "image\ncircle(8,8,3)\n");
  EXPECT_EQ(run({"info", map, command[1]}), 0) << err_;
  EXPECT_EQ(run({"measure", "--folder", work, "--prefix", prefix, "--regions", regions, "--format", "json"}),
            0)
      << err_;
  EXPECT_EQ(nlohmann::json::parse(out_)["areas"].size(), 1u);
  LoadedMap other;
  ASSERT_TRUE(readMap(map, other).ok());
  other.header.frequency *= 1.25;
  const std::string otherMap = folder_.file(with(".exm"));
  ASSERT_TRUE(writeMap(otherMap, other.header, other.range, *other.matrix).ok());
  EXPECT_EQ(run({"fit", map, otherMap, "--regions", regions, "--diagnostics", folder_.file(with(".txt"))}), 0)
      << err_;
  EXPECT_TRUE(test::exists(folder_.file(with(".txt"))));
  // The history of a map leads back to inputs of any name that is text in one line.
  ASSERT_EQ(run({"run", "--from", map, command[1], command[2], "--folder", folder_.file("again"), "--prefix",
                 prefix}),
            0)
      << err_;
  EXPECT_TRUE(test::exists(folder_.file("again/") + prefix + "^cln0.exm"));
#ifdef LUMO_DRAWS
  for (const char* const kind : {".png", ".svg", ".pdf"}) {
    EXPECT_EQ(run({"plot", map, "--out", folder_.file(with(kind))}), 0) << err_;
    EXPECT_TRUE(test::exists(folder_.file(with(kind))));
  }
  EXPECT_EQ(run({"plot", command[1], "--out", folder_.file(with(".png"))}), 0) << err_;
#endif
}

TEST_P(FileNames, AFailureIsToldInOneLineWithTheName) {
  const std::string path = folder_.file(with(".uvx"));
  test::writeFile(path, "nonsense");
  EXPECT_EQ(run({"run", path, "--folder", folder_.file("maps")}), 1);
  EXPECT_EQ(std::count(err_.begin(), err_.end(), '\n'), 1) << err_;
  EXPECT_THAT(err_, HasSubstr("is shorter than the 128-byte header"));
  EXPECT_EQ(run({"run", path, "--folder", folder_.file("maps"), "--json"}), 1);
  EXPECT_EQ(nlohmann::json::parse(out_)["error"]["code"], "bad-format");
}

INSTANTIATE_TEST_SUITE_P(Any, FileNames,
                         testing::Values("with space  two", " blank at both ends ", "it's \"quoted\"",
                                         "MFS^cln0", "a[1:2]{x}(y)", "~tilde", "Квазар 3C 84°", "back\\slash",
                                         "100%s%n", "*?#;&|$HOME`", "two\nlines\ttab", "-dash", "=a,b:c",
                                         "latin-1 \xe4\xf6\xfc", "\xff\xfe\x80", "a.b.uvx.exm",
                                         std::string(255, 'n')),
                         [](const auto& name) { return "Name" + std::to_string(name.index); });

class FileNameLengths : public FileNames {};

TEST_F(FileNameLengths, APrefixTooLongForAProductIsRefusedBeforeAnythingIsTouched) {
  std::filesystem::create_directory(folder_.file("maps"));
  // "^freqrange.txt" and "^residual0.exm" have 14 bytes, so 241 are left for the prefix.
  const std::string old = folder_.file("maps/") + std::string(242, 'p') + "^bm0.exm";
  test::writeFile(old, "old");
  test::writeFile(folder_.file("a.uvfits"), uvfits(5e9));
  ASSERT_EQ(run({"import", folder_.file("a.uvfits"), "--out", folder_.path()}), 0) << err_;
  const Words command{"run",     folder_.file("a.uvx"), "--folder", folder_.file("maps"), "--order",
                      "1",       "--half-size",         "16",       "--iterations",       "1",
                      "--prefix"};
  Words tooLong = command;
  tooLong.push_back(std::string(242, 'p'));
  EXPECT_EQ(run(tooLong), 1);
  EXPECT_THAT(err_, HasSubstr("256 bytes"));
  EXPECT_THAT(err_, HasSubstr("255"));
  EXPECT_EQ(test::readFile(old), "old");
  Words longest = command;
  longest.push_back(std::string(241, 'p'));
  EXPECT_EQ(run(longest), 0) << err_;
}

TEST_F(FileNameLengths, AnOutputNameTooLongIsRefusedWithBothLengths) {
  test::writeFile(folder_.file("a.uvfits"), uvfits(5e9));
  ASSERT_EQ(run({"import", folder_.file("a.uvfits"), "--out", folder_.path()}), 0) << err_;
  EXPECT_EQ(run({"run", folder_.file("a.uvx"), "--order", "1", "--half-size", "16", "--iterations", "1",
                 "--folder", folder_.path(), "--log", folder_.file(std::string(256, 'l'))}),
            1);
  EXPECT_THAT(err_, HasSubstr("256 bytes"));
}

}  // namespace
}  // namespace lumo
