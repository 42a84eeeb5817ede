// SPDX-License-Identifier: GPL-3.0-or-later
// lumo-cli measure and fit: what they print, what they refuse.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Program.h"
#include "analysis/AnalysisSample.h"
#include "core/TextForm.h"
#include "io/ProductNames.h"

namespace lumo {
namespace {

using nlohmann::json;
using test::Program;
using test::Words;

// On maps of 9 x 17 pixels with beams of ten pixels (AnalysisSample.h): the west half holds 8 of 17 columns.
constexpr int kWestPixels = 9 * 8;
constexpr double kBeamPixels = 10.0;
// A header keeps the beam widths as decimal digits of a double, so a flux density is good to some of their
// last places.
constexpr double kRounding = 1e-12;

class MeasureCommandTest : public testing::Test {
 protected:
  int run(const Words& words) {
    const Program program(folder_, words);
    const int status = program.wait();
    out_ = program.out();
    err_ = program.err();
    return status;
  }
  int measure(const Words& more) {
    Words words{"measure", "--folder", folder_.file("maps")};
    words.insert(words.end(), more.begin(), more.end());
    return run(words);
  }
  [[nodiscard]] std::string maps() const { return folder_.file("maps/"); }
  [[nodiscard]] bool told(const std::string& text) const { return err_.find(text) != std::string::npos; }

  /// The products of a run: west 2 Jy per beam with index -0.5, east 4 with index 1, noise of 0.2.
  void writeProducts() {
    std::filesystem::create_directories(maps());
    const auto west = [](std::uint32_t column) { return column < 8; };
    test::writeSample(cleanName(maps(), "MFS", 0), 5e9,
                      [&](std::uint32_t, std::uint32_t column) { return west(column) ? 2.0F : 4.0F; });
    test::writeSample(cleanName(maps(), "MFS", 1), 5e9,
                      [&](std::uint32_t, std::uint32_t column) { return west(column) ? -1.0F : 4.0F; });
    test::writeSample(indexName(maps(), "MFS"), 5e9, test::constant(0.0F));
    // 0.5 everywhere but 1 and 0 in equal numbers: variance 0.25 * 152 / 153.
    test::writeSample(residualName(maps(), "MFS"), 5e9, [](std::uint32_t row, std::uint32_t column) {
      const std::uint32_t i = row * test::kColumns + column;
      return i == 152 ? 0.5F : i % 2 == 0 ? 1.0F : 0.0F;
    });
    test::writeFile(freqRangeName(maps(), "MFS"), "4e9 8e9 2\n");
  }
  /// West half in image coordinates (columns are mirrored), east half in arcseconds about the map's position.
  std::string regions() {
    test::writeFile(folder_.file("areas.reg"),
                    "image\nbox(13.5,5,8,9,0) # text={west}\nfk5\nbox(64.5,38,0.1\",100\",0)\n");
    return folder_.file("areas.reg");
  }

  test::TempFolder folder_;
  std::string out_, err_;
};

std::vector<std::vector<std::string>> csvRows(const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(cell);
  }
  return rows;
}

double number(const std::string& text) {
  double value = 0;
  EXPECT_TRUE(parseDouble(text, value)) << text;
  return value;
}

TEST_F(MeasureCommandTest, JsonHoldsTheFrequenciesAndOneSpectrumForEachArea) {
  writeProducts();
  ASSERT_EQ(measure({"--regions", regions(), "--points", "3", "--format", "json"}), 0) << err_;
  const json object = json::parse(out_);
  EXPECT_EQ(object.size(), 2u);
  EXPECT_EQ(object["frequencies_hz"], json({4e9, 6e9, 8e9}));
  ASSERT_EQ(object["areas"].size(), 2u);
  const json& west = object["areas"][0];
  EXPECT_EQ(west.size(), 5u);
  EXPECT_EQ(west["area"], 1);
  const double flux = 2.0 * kWestPixels / kBeamPixels;
  EXPECT_NEAR(west["flux"].get<double>(), flux, flux * kRounding);
  EXPECT_EQ(west["index"], -0.5);
  EXPECT_NEAR(west["spectrum"][2].get<double>(), flux / std::sqrt(1.6), flux * kRounding);
  EXPECT_NEAR(west["error"].get<double>(), 0.5 * std::sqrt(0.25 * 152.0 / 153.0), 1e-9);
  // The column at x = 0 alone, 9 pixels of the eastern values.
  EXPECT_NEAR(object["areas"][1]["flux"].get<double>(), 3.6, 3.6 * kRounding);
  EXPECT_EQ(object["areas"][1]["index"], 1.0);
}

TEST_F(MeasureCommandTest, WithoutRegionsTheWholeMapIsTheOneArea) {
  writeProducts();
  ASSERT_EQ(measure({"--format", "json"}), 0) << err_;
  const json object = json::parse(out_);
  EXPECT_EQ(object["frequencies_hz"].size(), 8u);
  ASSERT_EQ(object["areas"].size(), 1u);
  const double flux = (2.0 * kWestPixels + 4.0 * 81) / kBeamPixels;
  EXPECT_NEAR(object["areas"][0]["flux"].get<double>(), flux, flux * kRounding);
  EXPECT_EQ(err_, "");
}

TEST_F(MeasureCommandTest, CsvNamesItsUnitsAndReadsBackToTheSameDoublesAsJson) {
  writeProducts();
  const std::string areas = regions();
  ASSERT_EQ(measure({"--regions", areas, "--points", "3", "--format", "json"}), 0) << err_;
  const json object = json::parse(out_);
  ASSERT_EQ(measure({"--regions", areas, "--points", "3", "--format", "csv"}), 0) << err_;
  const auto rows = csvRows(out_);
  ASSERT_EQ(rows.size(), 7u);
  EXPECT_EQ(rows[0], (Words{"area", "reference_hz", "reference_flux_jy", "index", "frequency_hz", "flux_jy",
                            "error_jy_per_beam"}));
  for (std::size_t i = 0; i < 6; ++i) {
    const json& area = object["areas"][i / 3];
    const Words& row = rows[i + 1];
    EXPECT_EQ(number(row[0]), area["area"]);
    EXPECT_EQ(number(row[1]), 5e9);
    EXPECT_EQ(number(row[2]), area["flux"]);
    EXPECT_EQ(number(row[3]), area["index"]);
    EXPECT_EQ(number(row[4]), object["frequencies_hz"][i % 3]);
    EXPECT_EQ(number(row[5]), area["spectrum"][i % 3]);
    EXPECT_EQ(number(row[6]), area["error"]);
  }
}

TEST_F(MeasureCommandTest, TableShowsNamesUnitsAndTheTextsOfTheTableWindow) {
  writeProducts();
  ASSERT_EQ(measure({"--regions", regions(), "--points", "2"}), 0) << err_;
  for (const char* const text : {"Flux density [Jy]", "1 west  14.4 ", "Mean (1)", "RMS (2)", "4000 [MHz]",
                                 "8000 [MHz]", "[Jy/Beam]", " 0.2492"})
    EXPECT_NE(out_.find(text), std::string::npos) << text << "\n" << out_;
}

TEST_F(MeasureCommandTest, MissingFrequencyFileFallsBackToTheHeaderAndSaysSo) {
  writeProducts();
  std::filesystem::remove(freqRangeName(maps(), "MFS"));
  AMapHeader header = test::sampleHeader(5e9);
  header.bandwidth = 1e9;
  AMatrix<float> map(test::kRows, test::kColumns);
  std::fill_n(map.data(), map.size(), 1.0F);
  ASSERT_TRUE(writeMap(cleanName(maps(), "MFS", 0), header, test::sampleRange(), map).ok());
  ASSERT_EQ(measure({"--points", "2", "--format", "json"}), 0) << err_;
  EXPECT_EQ(json::parse(out_)["frequencies_hz"], json({4.5e9, 5.5e9}));
  EXPECT_TRUE(told("note: ")) << err_;
  EXPECT_TRUE(told("^freqrange.txt is not there")) << err_;
  EXPECT_TRUE(told("4500 to 5500 MHz")) << err_;
}

TEST_F(MeasureCommandTest, FrequencyFileThatMakesNoSenseIsToldWithWhatCountsInstead) {
  writeProducts();
  test::writeFile(freqRangeName(maps(), "MFS"), "8e9 4e9 2\n");
  ASSERT_EQ(measure({"--points", "1", "--format", "json"}), 0) << err_;
  EXPECT_TRUE(told("^freqrange.txt says 8e+09 to 4e+09 Hz")) << err_;
  EXPECT_TRUE(told("the frequencies are those of the header")) << err_;
  EXPECT_EQ(json::parse(out_)["frequencies_hz"], json({5e9}));
}

TEST_F(MeasureCommandTest, MissingProductsAreNamed) {
  EXPECT_EQ(measure({}), 1);
  EXPECT_TRUE(told("there is no such folder")) << err_;
  writeProducts();
  EXPECT_EQ(measure({"--prefix", "OTHER"}), 1);
  EXPECT_TRUE(told("OTHER^cln0.exm: is not there")) << err_;
  std::filesystem::remove(indexName(maps(), "MFS"));
  EXPECT_EQ(measure({"--format", "json"}), 1);
  EXPECT_TRUE(told("a run of order 1 makes no spectral-index map")) << err_;
  EXPECT_EQ(json::parse(out_)["error"]["code"], "not-found");
}

TEST_F(MeasureCommandTest, MissingResidualMapLeavesTheErrorsNull) {
  writeProducts();
  std::filesystem::remove(residualName(maps(), "MFS"));
  ASSERT_EQ(measure({"--format", "json"}), 0) << err_;
  EXPECT_TRUE(json::parse(out_)["areas"][0]["error"].is_null());
  EXPECT_TRUE(told("no errors")) << err_;
  EXPECT_TRUE(told("^residual0.exm")) << err_;
}

TEST_F(MeasureCommandTest, RegionFilesThatCannotBeUsedAreNamed) {
  writeProducts();
  EXPECT_EQ(measure({"--regions", folder_.file("absent.reg")}), 1);
  EXPECT_TRUE(told(folder_.file("absent.reg"))) << err_;
  test::writeFile(folder_.file("none.reg"), "# Region file\nfk5\n");
  EXPECT_EQ(measure({"--regions", folder_.file("none.reg")}), 1);
  EXPECT_TRUE(told("holds no region")) << err_;
  test::writeFile(folder_.file("bad.reg"), "image\npanda(1,2,3)\n");
  EXPECT_EQ(measure({"--regions", folder_.file("bad.reg")}), 1);
  EXPECT_TRUE(told("line 2")) << err_;
}

TEST_F(MeasureCommandTest, AreaOffTheMapIsNullAndSaid) {
  writeProducts();
  test::writeFile(folder_.file("off.reg"), "image\ncircle(100,100,2)\ncircle(13,5,2)\n");
  ASSERT_EQ(measure({"--regions", folder_.file("off.reg"), "--format", "json"}), 0);
  const json areas = json::parse(out_)["areas"];
  EXPECT_TRUE(areas[0]["flux"].is_null());
  EXPECT_TRUE(areas[0]["index"].is_null());
  EXPECT_TRUE(areas[0]["spectrum"][0].is_null());
  EXPECT_EQ(areas[1]["index"], -0.5);
  EXPECT_TRUE(told("area 1 covers no pixel of the map")) << err_;
  EXPECT_FALSE(told("area 2")) << err_;
}

TEST_F(MeasureCommandTest, AreaOfBlankPixelsIsNullAndSaid) {
  writeProducts();
  test::writeSample(cleanName(maps(), "MFS", 0), 5e9, [](std::uint32_t row, std::uint32_t column) {
    if (column >= 8) return 1.0F;
    return row % 2 == 0 ? 0.0F : std::numeric_limits<float>::quiet_NaN();
  });
  ASSERT_EQ(measure({"--regions", regions(), "--format", "json"}), 0);
  EXPECT_TRUE(json::parse(out_)["areas"][0]["flux"].is_null());
  EXPECT_TRUE(told("area 1 west holds no pixel with a value")) << err_;
}

TEST_F(MeasureCommandTest, WrongOptionsExitWithTwo) {
  writeProducts();
  EXPECT_EQ(measure({"--points", "0"}), 2);
  EXPECT_EQ(measure({"--format", "xml"}), 2);
  EXPECT_EQ(run({"measure"}), 2);
  EXPECT_EQ(run({"fit"}), 2);
  EXPECT_EQ(run({"fit", folder_.file("one.exm")}), 2);
}

class FitCommandTest : public MeasureCommandTest {
 protected:
  /// A map of value ν^-0.75 relative to 4 GHz in the west, twice that in the east.
  std::string writeBand(double freq) {
    const std::string path = folder_.file(toStr(static_cast<std::int64_t>(freq * 1e-6)) + ".exm");
    const auto value = static_cast<float>(std::pow(freq / 4e9, -0.75));
    test::writeSample(path, freq, [value](std::uint32_t, std::uint32_t column) {
      return column < 8 ? value : 2.0F * value;
    });
    return path;
  }
};

TEST_F(FitCommandTest, JsonHoldsThePowerLawOfEachArea) {
  const Words maps{writeBand(4e9), writeBand(5e9), writeBand(8e9)};
  ASSERT_EQ(run({"fit", maps[0], maps[1], maps[2], "--regions", regions(), "--format", "json"}), 0) << err_;
  const json object = json::parse(out_);
  EXPECT_EQ(object.size(), 2u);
  EXPECT_EQ(object["frequencies_hz"], json({4e9, 5e9, 8e9}));
  ASSERT_EQ(object["areas"].size(), 2u);
  const json& west = object["areas"][0];
  EXPECT_EQ(west.size(), 6u);
  EXPECT_EQ(west["area"], 1);
  // Maps, flux densities and frequency ratios are of single precision.
  EXPECT_NEAR(west["alpha"].get<double>(), -0.75, 1e-6);
  EXPECT_NEAR(west["amplitude"].get<double>(), kWestPixels / kBeamPixels, 1e-5);
  EXPECT_NEAR(west["flux"][2].get<double>(), 7.2 * std::pow(2.0, -0.75), 1e-5);
  EXPECT_NEAR(west["fitted"][1].get<double>(), 7.2 * std::pow(1.25, -0.75), 1e-5);
  EXPECT_NEAR(west["deviation"][0].get<double>(), 0.0, 1e-12);
}

TEST_F(FitCommandTest, ImageCoordinatesAreThePixelsOfEachMapAndSkyCoordinatesTheSameSky) {
  // The second map is the first one moved by two columns (one arcsecond) to the east of its position.
  const float spot = 5.0F;
  const auto write = [&](const std::string& name, double freq, std::uint32_t at, double shift) {
    AMatrix<float> map(test::kRows, test::kColumns);
    map(4, at) = spot;
    TMinMax range = test::sampleRange();
    range.xMin += shift;
    range.xMax += shift;
    ASSERT_TRUE(writeMap(folder_.file(name), test::sampleHeader(freq), range, map).ok());
  };
  write("a.exm", 4e9, 10, 0.0);  // x = 1
  write("b.exm", 8e9, 8, 1.0);   // x = 1 again
  // Column 10 is FITS column 7 of 17; no such pixel of the second map has a value.
  test::writeFile(folder_.file("image.reg"), "image\nbox(7,5,1,1,0)\n");
  ASSERT_EQ(run({"fit", folder_.file("a.exm"), folder_.file("b.exm"), "--regions", folder_.file("image.reg"),
                 "--format", "json"}),
            0);
  json area = json::parse(out_)["areas"][0];
  EXPECT_NEAR(area["flux"][0].get<double>(), spot / kBeamPixels, 1e-6);
  EXPECT_TRUE(area["flux"][1].is_null());
  EXPECT_TRUE(area["alpha"].is_null());
  EXPECT_TRUE(told("b.exm: area 1 holds no pixel with a value")) << err_;
  const double ra = 64.5 + 1.0 / 3600.0 / std::cos(38.0 * kPi / 180.0);
  test::writeFile(folder_.file("sky.reg"), "fk5\ncircle(" + valToStr(ra) + ",38,0.2\")\n");
  ASSERT_EQ(run({"fit", folder_.file("a.exm"), folder_.file("b.exm"), "--regions", folder_.file("sky.reg"),
                 "--format", "json"}),
            0);
  area = json::parse(out_)["areas"][0];
  EXPECT_NEAR(area["flux"][0].get<double>(), spot / kBeamPixels, 1e-6);
  EXPECT_NEAR(area["flux"][1].get<double>(), spot / kBeamPixels, 1e-6);
  EXPECT_NEAR(area["alpha"].get<double>(), 0.0, 1e-6);
  EXPECT_EQ(err_, "");
}

TEST_F(FitCommandTest, CsvReadsBackToTheSameDoublesAsJson) {
  const Words maps{writeBand(4e9), writeBand(8e9)};
  ASSERT_EQ(run({"fit", maps[0], maps[1], "--format", "json"}), 0) << err_;
  const json area = json::parse(out_)["areas"][0];
  ASSERT_EQ(run({"fit", maps[0], maps[1], "--format", "csv"}), 0) << err_;
  const auto rows = csvRows(out_);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], (Words{"area", "alpha", "amplitude_jy", "map", "frequency_hz", "flux_jy", "fitted_jy",
                            "deviation_jy_per_beam"}));
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(rows[i + 1][3], maps[i]);
    EXPECT_EQ(number(rows[i + 1][1]), area["alpha"]);
    EXPECT_EQ(number(rows[i + 1][2]), area["amplitude"]);
    EXPECT_EQ(number(rows[i + 1][5]), area["flux"][i]);
    EXPECT_EQ(number(rows[i + 1][6]), area["fitted"][i]);
    EXPECT_EQ(number(rows[i + 1][7]), area["deviation"][i]);
  }
}

TEST_F(FitCommandTest, TableShowsTheLawAndTheMeasurements) {
  const Words maps{writeBand(4e9), writeBand(8e9)};
  ASSERT_EQ(run({"fit", maps[0], maps[1], "--regions", regions()}), 0) << err_;
  for (const char* const text : {"(frequency / 4000 MHz)^alpha", "Amplitude [Jy]", "1 west  -0.75  7.2",
                                 "Fitted [Jy]", "Deviation [Jy/Beam]", "8000"})
    EXPECT_NE(out_.find(text), std::string::npos) << text << "\n" << out_;
}

TEST_F(FitCommandTest, MapsThatCannotBeFittedAreNamed) {
  const std::string map = writeBand(4e9);
  test::writeFile(folder_.file("text.exm"), "no map");
  EXPECT_EQ(run({"fit", map, folder_.file("text.exm")}), 1);
  EXPECT_TRUE(told(folder_.file("text.exm"))) << err_;
  EXPECT_EQ(run({"fit", map, folder_.file("absent.exm")}), 1);
  EXPECT_TRUE(told(folder_.file("absent.exm"))) << err_;
  std::filesystem::create_symlink(map, folder_.file("link.exm"));
  EXPECT_EQ(run({"fit", map, folder_.file("link.exm")}), 2);
  EXPECT_TRUE(told("given twice")) << err_;
  std::filesystem::copy_file(map, folder_.file("same.exm"));
  EXPECT_EQ(run({"fit", map, folder_.file("same.exm")}), 1);
  EXPECT_TRUE(told("all maps lie at 4000 MHz")) << err_;
}

TEST_F(FitCommandTest, MapsOfDifferentUnitsOrWithoutAFrequencyAreRefused) {
  const std::string map = writeBand(4e9);
  AMatrix<float> values(test::kRows, test::kColumns);
  std::fill_n(values.data(), values.size(), 1.0F);
  AMapHeader header = test::sampleHeader(5e9);
  header.unit = "K";
  ASSERT_TRUE(writeMap(folder_.file("kelvin.exm"), header, test::sampleRange(), values).ok());
  EXPECT_EQ(run({"fit", map, folder_.file("kelvin.exm")}), 1);
  EXPECT_TRUE(told("has the unit 'K', the first map 'Jy/Beam'")) << err_;
  header = test::sampleHeader(std::numeric_limits<double>::quiet_NaN());
  ASSERT_TRUE(writeMap(folder_.file("timeless.exm"), header, test::sampleRange(), values).ok());
  EXPECT_EQ(run({"fit", map, folder_.file("timeless.exm")}), 1);
  EXPECT_TRUE(told("has no frequency in its header")) << err_;
}

TEST_F(FitCommandTest, DiagnosticFileIsWrittenOnlyWhenAskedForAndNeverOverAnInput) {
  const Words maps{writeBand(4e9), writeBand(8e9)};
  const auto filesBefore = std::distance(std::filesystem::directory_iterator(folder_.path()), {});
  ASSERT_EQ(run({"fit", maps[0], maps[1]}), 0) << err_;
  // Besides the program's own two output files nothing came.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), filesBefore + 2);
  ASSERT_EQ(run({"fit", maps[0], maps[1], "--diagnostics", folder_.file("d.txt")}), 0) << err_;
  const std::string text = test::readFile(folder_.file("d.txt"));
  EXPECT_EQ(text.substr(0, 4), "0 1 ");
  EXPECT_NE(text.find("alpha = -0.75"), std::string::npos) << text;
  EXPECT_EQ(run({"fit", maps[0], maps[1], "--diagnostics", maps[1]}), 2);
  EXPECT_TRUE(told("is one of the inputs")) << err_;
}

}  // namespace
}  // namespace lumo
