// SPDX-License-Identifier: GPL-3.0-or-later
// Observations whose numbers make no sense: every command ends, says what is wrong, and marks what has no
// value.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Program.h"
#include "io/MapProduct.h"
#include "io/UvxWriter.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using test::Words;
using testing::HasSubstr;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// What one visibility of the sample is: re, im, weight, and the record's flag and place.
struct Sample {
  float re = 1, im = 0;
  double weight = 1;
  std::uint8_t flag = 0;
  double u = 0, v = 0;  ///< seconds of light travel; given, may be changed
};

class HostileNumbersTest : public testing::Test {
 protected:
  /// A file of 64 records on a spiral and one IF; `change` edits record number n.
  std::string write(const std::string& name, double hertz, const std::function<void(int, Sample&)>& change,
                    int records = 64) {
    UvxContent content;
    content.shape = {1, 1, 1};
    content.unit = "JY";
    content.sources = {{1, "SRC", UvxFrame::kIcrs, 10.0, 50.0, 2000.0}};
    content.selections = {{1, {{hertz, 1e6}}}};
    content.products = {1};
    UvxWriter writer;
    EXPECT_TRUE(writer.begin(folder_.file(name), content).ok());
    for (int n = 0; n < records; ++n) {
      Sample sample;
      const double angle = 2.4 * n;
      sample.u = 1e-3 * (n + 1) / 64 * std::cos(angle);
      sample.v = 1e-3 * (n + 1) / 64 * std::sin(angle);
      change(n, sample);
      UvxRecord record;
      record.flag = sample.flag;
      record.freqSel = 1;
      record.source = 1;
      record.baseline = 258;
      record.u = static_cast<float>(sample.u);
      record.v = static_cast<float>(sample.v);
      const AUVXComplex value(sample.re, sample.im, sample.weight);
      EXPECT_TRUE(writer.append(record, {&value, 1}).ok());
    }
    EXPECT_TRUE(writer.finish().ok());
    return folder_.file(name);
  }
  std::string good(const std::string& name, double hertz) {
    return write(name, hertz, [](int, Sample&) {});
  }
  int run(const Words& words) {
    const test::Program program(folder_, words);
    const int status = program.wait();
    out_ = program.out();
    err_ = program.err();
    return status;
  }
  int image(Words files, const Words& more = {}) {
    files.insert(files.begin(), "run");
    files.insert(files.end(), {"--folder", folder_.file("maps"), "--half-size", "16", "--json"});
    files.insert(files.end(), more.begin(), more.end());
    return run(files);
  }
  [[nodiscard]] LoadedMap map(const std::string& suffix) const {
    LoadedMap loaded;
    const Status status = readMap(folder_.file("maps/MFS^") + suffix + ".exm", loaded);
    EXPECT_TRUE(status.ok()) << status.text();
    return loaded;
  }
  /// Pixels that are not finite; -1 without a map.
  [[nodiscard]] static std::int64_t withoutValue(const LoadedMap& loaded) {
    if (loaded.matrix == nullptr) return -1;
    std::int64_t count = 0;
    for (std::size_t i = 0; i < loaded.matrix->size(); ++i)
      count += std::isfinite(loaded.matrix->data()[i]) ? 0 : 1;
    return count;
  }
  [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out_); }

  test::TempFolder folder_;
  std::string out_, err_;
};

TEST_F(HostileNumbersTest, VisibilitiesThatAreNotFiniteChangeNoBitOfTheMaps) {
  // In the one file they are there, in the other they weigh nothing.
  const auto hostile = [](int n, Sample& sample) {
    const float bad[] = {kNan, kInfinity, -kInfinity};
    if (n % 4 == 1) sample.re = bad[n % 3];
    if (n % 4 == 2) sample.im = bad[n % 3];
  };
  const auto weightless = [](int n, Sample& sample) { sample.weight = n % 4 == 1 || n % 4 == 2 ? 0 : 1; };
  std::vector<LoadedMap> maps;
  for (const auto& change :
       {std::function<void(int, Sample&)>(hostile), std::function<void(int, Sample&)>(weightless)}) {
    ASSERT_EQ(image({write("a.uvx", 5e9, change), write("b.uvx", 6e9, change)}, {"--iterations", "20"}), 0)
        << err_;
    maps.push_back(map("cln_res0"));
  }
  EXPECT_EQ(withoutValue(maps[0]), 0);
  ASSERT_EQ(maps[0].matrix->size(), maps[1].matrix->size());
  for (std::size_t i = 0; i < maps[0].matrix->size(); ++i)
    ASSERT_EQ(maps[0].matrix->data()[i], maps[1].matrix->data()[i]) << i;
}

TEST_F(HostileNumbersTest, PlacesAndWeightsThatAreNotFiniteAreLeftOut) {
  const auto hostile = [](int n, Sample& sample) {
    if (n % 8 == 1) sample.u = kNan;
    if (n % 8 == 3) sample.v = kInfinity;
    if (n % 8 == 5) sample.weight = kNan;
    if (n % 8 == 7) sample.weight = kInfinity;
  };
  ASSERT_EQ(image({write("a.uvx", 5e9, hostile), good("b.uvx", 6e9)}, {"--iterations", "20"}), 0) << err_;
  EXPECT_EQ(withoutValue(map("dm0")), 0);
  EXPECT_EQ(withoutValue(map("cln_res0")), 0);
}

TEST_F(HostileNumbersTest, DataThatAreAllUnusableAreNamedAsTheCause) {
  const std::vector<std::function<void(int, Sample&)>> cases = {
      [](int, Sample& sample) { sample.flag = 1; },
      [](int, Sample& sample) { sample.weight = 0; },
      [](int, Sample& sample) { sample.weight = -1; },
      [](int, Sample& sample) { sample.re = kNan; },
      [](int, Sample& sample) { sample.u = sample.v = kNan; },
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(image({write("a.uvx", 5e9, cases[i]), write("b.uvx", 6e9, cases[i])}), 1) << i << ": " << err_;
    EXPECT_EQ(json()["error"]["code"], "no-data") << i << ": " << out_;
    EXPECT_THAT(err_, testing::ContainsRegex("no (visibility|extent|usable)")) << i;
  }
}

TEST_F(HostileNumbersTest, OneBandWithoutDataIsWarnedOf) {
  const std::string empty = write("a.uvx", 5e9, [](int, Sample& sample) { sample.weight = 0; });
  EXPECT_EQ(image({empty, good("b.uvx", 6e9)}, {"--order", "1", "--iterations", "5"}), 0) << err_;
  EXPECT_THAT(err_, HasSubstr("a.uvx: no visibility of the selection is usable"));
}

TEST_F(HostileNumbersTest, OneVisibilityHasNoBeamAndTheRunSaysSo) {
  const auto oblique = [](int, Sample& sample) { sample.u = sample.v = 1e-3; };
  EXPECT_EQ(image({write("a.uvx", 5e9, oblique, 1)}, {"--order", "1"}), 1);
  EXPECT_THAT(err_, HasSubstr("no extent in one direction"));
}

TEST_F(HostileNumbersTest, TwoVisibilitiesAcrossEachOtherAreImaged) {
  const auto crossed = [](int n, Sample& sample) {
    sample.u = 1e-3;
    sample.v = n == 0 ? 1e-3 : -1e-3;
  };
  ASSERT_EQ(image({write("a.uvx", 5e9, crossed, 2)}, {"--order", "1", "--iterations", "5"}), 0) << err_;
  const LoadedMap dirty = map("dm0");
  EXPECT_EQ(withoutValue(dirty), 0);
  // Two waves of 1 Jy at the phase centre: their mean there is 1, to single precision.
  EXPECT_NEAR((*dirty.matrix)(8, 8), 1.0F, 1e-5F);
}

TEST_F(HostileNumbersTest, AVisibilityAtTheOriginAloneHasNoExtentToImage) {
  const auto origin = [](int, Sample& sample) { sample.u = sample.v = 0; };
  EXPECT_EQ(image({write("a.uvx", 5e9, origin)}, {"--order", "1"}), 1);
  EXPECT_EQ(json()["error"]["code"], "no-data");
  EXPECT_THAT(err_, HasSubstr("no extent"));
}

TEST_F(HostileNumbersTest, FrequenciesThatCannotCarryTheTermsAreWarnedOfAndTheRunEnds) {
  // Two files of one frequency: the beams' matrix of two terms has no inverse.
  EXPECT_EQ(image({good("a.uvx", 5e9), good("b.uvx", 5e9)},
                  {"--order", "2", "--iterations", "50", "--reference", "5000"}),
            0)
      << err_;
  EXPECT_THAT(err_, HasSubstr("order 2 needs as many different frequencies"));
  EXPECT_THAT(err_, HasSubstr("cannot tell the spectral terms apart"));
  EXPECT_EQ(withoutValue(map("dm0")), 0);
  // What cannot be told has no value.
  const LoadedMap index = map("sindex");
  EXPECT_EQ(withoutValue(index), static_cast<std::int64_t>(index.matrix->size()));
}

TEST_F(HostileNumbersTest, AGainOfTwoEndsWithAWarningThatNothingWasCleaned) {
  ASSERT_EQ(image({good("a.uvx", 5e9), good("b.uvx", 6e9)}, {"--gain", "2", "--iterations", "5000"}), 0)
      << err_;
  EXPECT_EQ(json()["iterations"], 5000);
  EXPECT_THAT(err_, HasSubstr("did not lower the residual"));
}

TEST_F(HostileNumbersTest, HugeAndTinyVisibilitiesKeepTheirScale) {
  for (const float flux : {1e-30F, 1e30F}) {
    const auto scaled = [&](int, Sample& sample) { sample.re = flux; };
    ASSERT_EQ(image({write("a.uvx", 5e9, scaled), write("b.uvx", 6e9, scaled)}, {"--iterations", "5"}), 0)
        << err_;
    const LoadedMap dirty = map("dm0");
    // A point at the centre: its peak is its flux density, to single precision.
    EXPECT_NEAR((*dirty.matrix)(8, 8) / flux, 1.0, 1e-5);
  }
}

TEST_F(HostileNumbersTest, MapsWithoutFinitePixelsAreDescribedMeasuredAndFitted) {
  ASSERT_EQ(image({good("a.uvx", 5e9), good("b.uvx", 6e9)}, {"--iterations", "5"}), 0) << err_;
  for (const char* const suffix : {"cln0", "cln1", "cln_res0", "cln_res1"}) {
    LoadedMap broken = map(suffix);
    for (std::size_t i = 0; i < broken.matrix->size(); ++i)
      broken.matrix->data()[i] = i % 2 == 0 ? kNan : kInfinity;
    ASSERT_TRUE(
        writeMap(folder_.file("maps/MFS^") + suffix + ".exm", broken.header, broken.range, *broken.matrix)
            .ok());
  }
  test::writeFile(folder_.file("area.reg"), "image\ncircle(8,8,3)\n");
  EXPECT_EQ(run({"info", "--json", folder_.file("maps/MFS^cln0.exm")}), 0) << err_;
  EXPECT_EQ(json()["files"][0]["type"], "map");
  EXPECT_EQ(run({"measure", "--folder", folder_.file("maps"), "--regions", folder_.file("area.reg"),
                 "--format", "json"}),
            0)
      << err_;
  EXPECT_TRUE(json()["areas"][0]["index"].is_null()) << out_;
  LoadedMap other = map("cln0");
  other.header.frequency *= 1.25;
  ASSERT_TRUE(writeMap(folder_.file("other.exm"), other.header, other.range, *other.matrix).ok());
  EXPECT_EQ(run({"fit", folder_.file("maps/MFS^cln0.exm"), folder_.file("other.exm"), "--regions",
                 folder_.file("area.reg"), "--format", "json"}),
            0)
      << err_;
  EXPECT_TRUE(json()["areas"][0]["alpha"].is_null()) << out_;
}

}  // namespace
}  // namespace lumo
