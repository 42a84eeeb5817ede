// SPDX-License-Identifier: GPL-3.0-or-later
// lumo-cli plot: what comes out as a picture, and what is refused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "Program.h"
#include "analysis/AnalysisSample.h"
#include "io/MapProduct.h"
#include "io/ProductNames.h"
#include "io/UvxSample.h"

namespace lumo {
namespace {

using test::Program;
using test::Words;

class PlotCommandTest : public testing::Test {
 protected:
  PlotCommandTest() {
    // As on a batch machine.
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_RUNTIME_DIR"})
      ::unsetenv(name);
  }
  int run(const Words& words, const char* program = LUMO_CLI) {
    const Program started(folder_, words, program);
    const int status = started.wait();
    out_ = started.out();
    err_ = started.err();
    return status;
  }
  /// Draws an SVG, which holds its texts as they are, and returns it.
  std::string drawn(Words words) {
    words.insert(words.begin(), "plot");
    words.insert(words.end(), {"--out", folder_.file("picture.svg")});
    EXPECT_EQ(run(words), 0) << err_;
    return test::exists(folder_.file("picture.svg")) ? test::readFile(folder_.file("picture.svg")) : "";
  }
  std::string writeBand(const std::string& name, double freq) {
    const std::string path = folder_.file(name);
    const auto value = static_cast<float>(std::pow(freq / 4e9, -0.75));
    test::writeSample(path, freq, test::constant(value));
    return path;
  }
  std::string writeRegions() {
    test::writeFile(folder_.file("areas.reg"), "image\ncircle(9,5,3) # text={middle}\n");
    return folder_.file("areas.reg");
  }
  [[nodiscard]] bool told(const std::string& text) const { return err_.find(text) != std::string::npos; }

  test::TempFolder folder_;
  std::string out_, err_;
};

#ifdef LUMO_DRAWS

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(PlotCommandTest, OneMapIsDrawnWithAxesUnitAndAreas) {
  const std::string map = writeBand("map.exm", 4e9);
  const std::string plain = drawn({map});
  EXPECT_TRUE(holds(plain, "<svg"));
  EXPECT_TRUE(holds(plain, "Right ascent [as]"));
  EXPECT_TRUE(holds(plain, "Declination [as]"));
  EXPECT_TRUE(holds(plain, "Jy/Beam]"));
  EXPECT_FALSE(holds(plain, "middle"));
  EXPECT_TRUE(holds(drawn({map, "--regions", writeRegions()}), "1 middle"));
  EXPECT_EQ(err_, "");
}

/// The products of a run, the spectral index too, record the value range of the first dirty map.
TEST_F(PlotCommandTest, ColoursSpanTheMapsOwnValuesWhateverRangeItRecords) {
  const auto steep = [](std::uint32_t row, std::uint32_t) { return -1.5F + 0.25F * static_cast<float>(row); };
  test::writeSample(folder_.file("index.exm"), 4e9, steep);
  LoadedMap index;
  ASSERT_TRUE(readMap(folder_.file("index.exm"), index).ok());
  index.range.vMin = 40;
  index.range.vMax = 80;
  ASSERT_TRUE(writeMap(folder_.file("index.exm"), index.header, index.range, *index.matrix).ok());
  const std::string picture = drawn({folder_.file("index.exm")});
  EXPECT_TRUE(holds(picture, ">-1.5<"));
  EXPECT_FALSE(holds(picture, ">60<"));
}

TEST_F(PlotCommandTest, ExtensionSaysTheFormat) {
  const std::string map = writeBand("map.exm", 4e9);
  ASSERT_EQ(run({"plot", map, "--out", folder_.file("a.png")}), 0) << err_;
  EXPECT_EQ(test::readFile(folder_.file("a.png")).substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(out_, "wrote " + folder_.file("a.png") + "\n");
  ASSERT_EQ(run({"plot", map, "--out", folder_.file("a.PDF")}), 0) << err_;
  EXPECT_EQ(test::readFile(folder_.file("a.PDF")).substr(0, 5), "%PDF-");
}

TEST_F(PlotCommandTest, SeveralMapsGiveTheSpectraOfAreas) {
  const Words maps{writeBand("a.exm", 4e9), writeBand("b.exm", 8e9)};
  const std::string picture = drawn({maps[0], maps[1], "--regions", writeRegions()});
  EXPECT_TRUE(holds(picture, "Reference freq: 4000[MHz]"));
  EXPECT_TRUE(holds(picture, "Spectral index: -0.75"));
  EXPECT_TRUE(holds(picture, "FLUX ~[Jy] (log scale)"));
  EXPECT_FALSE(holds(drawn({maps[0], maps[1], "--linear-x", "--linear-y"}), "log scale"));
}

TEST_F(PlotCommandTest, FolderOfARunGivesTheSpectraOfItsAreas) {
  const std::string maps = folder_.file("maps/");
  std::filesystem::create_directories(maps);
  test::writeSample(cleanName(maps, "MFS", 0), 5e9, test::constant(2.0F));
  test::writeSample(cleanName(maps, "MFS", 1), 5e9, test::constant(-1.0F));
  test::writeSample(indexName(maps, "MFS"), 5e9, test::constant(-0.5F));
  test::writeSample(residualName(maps, "MFS"), 5e9, test::constant(0.0F));
  test::writeFile(freqRangeName(maps, "MFS"), "4e9 8e9 2\n");
  const std::string picture = drawn({"--folder", maps, "--points", "3"});
  EXPECT_TRUE(holds(picture, "Reference freq: 5000[MHz]"));
  EXPECT_TRUE(holds(picture, "Spectral index: -0.5 "));
  EXPECT_TRUE(holds(picture, "Flux Density ["));
}

TEST_F(PlotCommandTest, VisibilityFilesGiveTheirCoverage) {
  test::writeSample(folder_.file("one.uvx"), test::sampleContent(1, 2, 1), 6);
  test::writeSample(folder_.file("two.uvx"), test::sampleContent(1, 2, 1), 6);
  const std::string picture = drawn({folder_.file("one.uvx"), folder_.file("two.uvx")});
  EXPECT_TRUE(holds(picture, ">U<"));
  EXPECT_TRUE(holds(picture, ">V<"));
}

TEST_F(PlotCommandTest, InstalledModuleIsFoundInTheLibraryFolder) {
  const std::filesystem::path home = std::filesystem::path(LUMO_CLI).parent_path();
  std::filesystem::create_directories(folder_.file("bin"));
  std::filesystem::create_directories(folder_.file("lib/lumo"));
  std::filesystem::copy(LUMO_CLI, folder_.file("bin/lumo-cli"));
  const std::string program = folder_.file("bin/lumo-cli");
  const Words words{"plot", writeBand("map.exm", 4e9), "--out", folder_.file("a.svg")};
  EXPECT_EQ(run(words, program.c_str()), 1);
  EXPECT_TRUE(told("built without drawing")) << err_;
  std::filesystem::copy(home / "lumo_plot.so", folder_.file("lib/lumo/lumo_plot.so"));
  EXPECT_EQ(run(words, program.c_str()), 0) << err_;
  EXPECT_TRUE(test::exists(folder_.file("a.svg")));
}

TEST_F(PlotCommandTest, FailuresNameTheFile) {
  const std::string map = writeBand("map.exm", 4e9);
  test::writeFile(folder_.file("bad.uvx"), "no visibilities");
  test::writeFile(folder_.file("bad.exm"), "no map");
  const std::string out = folder_.file("a.svg");
  for (Words words : {Words{folder_.file("bad.uvx")}, Words{folder_.file("bad.exm")},
                      Words{folder_.file("absent.exm")}, Words{map, folder_.file("bad.exm")}}) {
    const std::string culprit = words.back();
    words.insert(words.begin(), "plot");
    words.insert(words.end(), {"--out", out});
    EXPECT_EQ(run(words), 1) << culprit;
    EXPECT_TRUE(told(culprit)) << err_;
  }
  EXPECT_EQ(run({"plot", map, "--regions", folder_.file("absent.reg"), "--out", out}), 1);
  EXPECT_TRUE(told(folder_.file("absent.reg"))) << err_;
  EXPECT_EQ(run({"plot", map, "--out", folder_.file("absent/a.svg")}), 1);
  EXPECT_TRUE(told(folder_.file("absent/a.svg"))) << err_;
  EXPECT_FALSE(test::exists(out));
}

#else

TEST_F(PlotCommandTest, BuildWithoutTheWindowLibrarySaysSo) {
  EXPECT_EQ(run({"plot", writeBand("map.exm", 4e9), "--out", folder_.file("a.svg")}), 1);
  EXPECT_TRUE(told("built without drawing")) << err_;
}

#endif

TEST_F(PlotCommandTest, WrongCommandLinesExitWithTwo) {
  const std::string map = writeBand("map.exm", 4e9);
  const std::string bytes = test::readFile(map);
  std::filesystem::create_hard_link(map, folder_.file("same.svg"));
  test::writeSample(folder_.file("one.uvx"), test::sampleContent(1, 2, 1), 6);
  const std::string out = folder_.file("a.svg");
  EXPECT_EQ(run({"plot", map}), 2);
  EXPECT_EQ(run({"plot", "--out", out}), 2);
  EXPECT_EQ(run({"plot", map, "--folder", folder_.path(), "--out", out}), 2);
  EXPECT_EQ(run({"plot", map, "--out", folder_.file("a.gif")}), 2);
  EXPECT_TRUE(told(".png, .pdf or .svg")) << err_;
  EXPECT_EQ(run({"plot", map, folder_.file("one.uvx"), "--out", out}), 2);
  EXPECT_TRUE(told("of both kinds")) << err_;
  EXPECT_EQ(run({"plot", folder_.file("one.uvx"), "--regions", writeRegions(), "--out", out}), 2);
  EXPECT_EQ(run({"plot", map, "--linear-x", "--out", out}), 2);
  EXPECT_EQ(run({"plot", map, "--points", "3", "--out", out}), 2);
  EXPECT_EQ(run({"plot", map, "--out", folder_.file("same.svg")}), 2);
  EXPECT_TRUE(told("is one of the inputs")) << err_;
  EXPECT_EQ(test::readFile(map), bytes);
  EXPECT_FALSE(test::exists(out));
}

}  // namespace
}  // namespace lumo
