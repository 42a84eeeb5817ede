// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "convert/SkyModel.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

constexpr double kPi = std::numbers::pi;
constexpr double kRadianPerMas = kPi / (180.0 * 3600.0 * 1000.0);
constexpr double kReference = 5e9;
// Closed forms are compared at sums of a few products of double precision.
constexpr double kRounding = 1e-12;

std::string model(const std::string& components, const std::string& more = "") {
  return R"({"name":"test","ra_deg":10,"dec_deg":40,"reference_mhz":5000,)" + more + R"("components":[)" +
         components + "]}";
}

SkyModel parsed(const std::string& text) {
  SkyModel sky;
  const Status status = sky.parse(text);
  EXPECT_TRUE(status.ok()) << status.text();
  return sky;
}

std::string refusal(const std::string& text) {
  SkyModel sky;
  const Status status = sky.parse(text);
  EXPECT_FALSE(status.ok()) << text;
  EXPECT_TRUE(sky.components().empty());
  return status.message();
}

constexpr const char* kPoint = R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":2.5,"index":0})";

TEST(SkyModelTest, APointAtThePhaseCentreGivesItsFluxDensityEverywhere) {
  const SkyModel sky = parsed(model(kPoint));
  for (const double u : {0.0, 1e6, -2e8})
    EXPECT_EQ(sky.visibility(u, 3e7, kReference), std::complex<double>(2.5, 0));
}

TEST(SkyModelTest, APointToTheEastHasAPositivePhaseAtPositiveU) {
  const SkyModel sky = parsed(model(R"({"type":"point","east_mas":2,"north_mas":0,"flux_jy":1,"index":0})"));
  const double u = 1e6;
  EXPECT_NEAR(std::arg(sky.visibility(u, 0, kReference)), 2 * kPi * u * 2 * kRadianPerMas, kRounding);
  EXPECT_GT(sky.visibility(u, 0, kReference).imag(), 0.01);
  EXPECT_LT(sky.visibility(-u, 0, kReference).imag(), -0.01);
  EXPECT_EQ(sky.visibility(0, u, kReference).imag(), 0);
}

TEST(SkyModelTest, APointToTheNorthHasAPositivePhaseAtPositiveV) {
  const SkyModel sky = parsed(model(R"({"type":"point","east_mas":0,"north_mas":2,"flux_jy":1,"index":0})"));
  EXPECT_GT(sky.visibility(0, 1e6, kReference).imag(), 0.01);
  EXPECT_EQ(sky.visibility(1e6, 0, kReference).imag(), 0);
}

TEST(SkyModelTest, ACircularGaussianFallsToHalfWhereItsTransformDoes) {
  const SkyModel sky = parsed(model(
      R"({"type":"gaussian","east_mas":0,"north_mas":0,"flux_jy":4,"index":0,"major_mas":1,"minor_mas":1,"pa_deg":0})"));
  // Full widths at half maximum of a Gaussian and its transform: product 4 ln 2 / pi.
  const double half = 4 * std::log(2.0) / kPi / kRadianPerMas / 2;
  EXPECT_NEAR(std::abs(sky.visibility(half, 0, kReference)), 2, 4 * kRounding);
  EXPECT_NEAR(std::abs(sky.visibility(0, half, kReference)), 2, 4 * kRounding);
  EXPECT_EQ(sky.visibility(0, 0, kReference), std::complex<double>(4, 0));
}

TEST(SkyModelTest, AGaussianIsTheTransformOfItsBrightness) {
  const SkyModel sky = parsed(model(
      R"({"type":"gaussian","east_mas":1.5,"north_mas":-0.5,"flux_jy":3,"index":0,"major_mas":4,"minor_mas":1.5,"pa_deg":30})"));
  // The integral of I(l, m) e^(+2 pi i (u l + v m)), summed on a grid; for a Gaussian that is exact to
  // rounding.
  const double step = 0.05, pa = 30 * kPi / 180;
  for (const auto& [u, v] : {std::pair{2e7, 3e7}, std::pair{-4e7, 1e7}, std::pair{0.0, -5e7}}) {
    std::complex<double> sum = 0;
    double norm = 0;
    for (int i = -260; i <= 260; ++i) {
      for (int j = -260; j <= 260; ++j) {
        const double east = i * step, north = j * step;
        const double along = east * std::sin(pa) + north * std::cos(pa);
        const double across = east * std::cos(pa) - north * std::sin(pa);
        const double brightness =
            std::exp(-4 * std::log(2.0) * (along * along / 16 + across * across / 2.25));
        norm += brightness;
        sum += brightness * std::polar(1.0, 2 * kPi * (u * (east + 1.5) + v * (north - 0.5)) * kRadianPerMas);
      }
    }
    const std::complex<double> expected = 3.0 * sum / norm;
    EXPECT_NEAR(std::abs(sky.visibility(u, v, kReference) - expected), 0, 1e-9) << u << " " << v;
  }
}

TEST(SkyModelTest, ThePositionAngleTurnsFromNorthThroughEast) {
  const SkyModel sky = parsed(model(
      R"({"type":"gaussian","east_mas":0,"north_mas":0,"flux_jy":1,"index":0,"major_mas":4,"minor_mas":0,"pa_deg":45})"));
  // Long from south-west to north-east: resolved along u = v, a point across it.
  EXPECT_LT(std::abs(sky.visibility(5e7, 5e7, kReference)), 0.1);
  EXPECT_NEAR(std::abs(sky.visibility(5e7, -5e7, kReference)), 1, 1e-9);
}

TEST(SkyModelTest, APowerLawDoublesWhereItShould) {
  const SkyModel sky =
      parsed(model(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1.5,"index":-0.5})"));
  EXPECT_NEAR(sky.visibility(0, 0, 4 * kReference).real(), 0.75, kRounding);
  EXPECT_NEAR(sky.visibility(0, 0, kReference / 4).real(), 3, kRounding);
  EXPECT_NEAR(sky.visibility(0, 0, kReference).real(), 1.5, kRounding);
}

TEST(SkyModelTest, CurvatureAddsToTheExponentInNaturalLogarithms) {
  const SkyModel sky = parsed(
      model(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":0.2,"curvature":-0.3})"));
  const SkyComponent& component = sky.components().front();
  // At ν = e·ν0 the logarithm is 1, so the exponents simply add.
  const double frequency = std::numbers::e * kReference;
  EXPECT_NEAR(component.flux(frequency, kReference), std::exp(0.2 - 0.3), kRounding);
  const double step = 1e-6;
  const double slope = (std::log(component.flux(frequency * std::exp(step), kReference)) -
                        std::log(component.flux(frequency * std::exp(-step), kReference))) /
                       (2 * step);
  // A central difference of that step keeps about ten digits.
  EXPECT_NEAR(component.indexAt(frequency, kReference), slope, 1e-8);
}

TEST(SkyModelTest, ComponentsAddUp) {
  const SkyModel sky = parsed(
      model(std::string(kPoint) + R"(,{"type":"point","east_mas":1,"north_mas":2,"flux_jy":0.5,"index":0})"));
  const double phase = 2 * kPi * (3e7 * 1 - 1e7 * 2) * kRadianPerMas;
  EXPECT_NEAR(std::abs(sky.visibility(3e7, -1e7, kReference) - (2.5 + std::polar(0.5, phase))), 0, kRounding);
}

TEST(SkyModelTest, AnglesMayBeGivenInArcseconds) {
  const SkyModel sky =
      parsed(model(R"({"type":"point","east_arcsec":0.002,"north_mas":-3,"flux_jy":1,"index":0})"));
  EXPECT_NEAR(sky.components()[0].east / kRadianPerMas, 2, kRounding);
  EXPECT_NEAR(sky.components()[0].north / kRadianPerMas, -3, kRounding);
}

TEST(SkyModelTest, ReadsNamesAndPosition) {
  const SkyModel sky = parsed(model(kPoint));
  EXPECT_EQ(sky.name(), "test");
  EXPECT_EQ(sky.rightAscension(), 10);
  EXPECT_EQ(sky.declination(), 40);
  EXPECT_EQ(sky.referenceFrequency(), 5e9);
}

TEST(SkyModelTest, AnUnknownKeyIsRefusedByName) {
  EXPECT_THAT(refusal(model(kPoint, R"("colour":"blue",)")), HasSubstr("colour"));
  EXPECT_THAT(refusal(model(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":0,"size":1})")),
              HasSubstr("components[0].size"));
  EXPECT_THAT(
      refusal(model(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":0,"major_mas":1})")),
      HasSubstr("components[0].major_mas"));
}

TEST(SkyModelTest, AMissingKeyIsRefusedByName) {
  EXPECT_THAT(refusal(R"({"ra_deg":1,"dec_deg":2,"reference_mhz":3})"), HasSubstr("components"));
  EXPECT_THAT(refusal(model(R"({"type":"point","east_mas":0,"north_mas":0,"index":0})")),
              HasSubstr("components[0].flux_jy"));
  EXPECT_THAT(
      refusal(model(std::string(kPoint) + R"(,{"type":"point","north_mas":0,"flux_jy":1,"index":0})")),
      HasSubstr("components[1].east_mas"));
}

TEST(SkyModelTest, AWrongTypeOrValueIsRefusedByName) {
  EXPECT_THAT(refusal(model(R"({"type":"point","east_mas":"2","north_mas":0,"flux_jy":1,"index":0})")),
              HasSubstr("components[0].east_mas: a number is expected"));
  EXPECT_THAT(refusal(model(R"({"type":"disk","east_mas":2,"north_mas":0,"flux_jy":1,"index":0})")),
              HasSubstr("components[0].type"));
  EXPECT_THAT(refusal(model(R"({"type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":99})")),
              HasSubstr("components[0].index"));
  EXPECT_THAT(
      refusal(model(
          R"({"type":"gaussian","east_mas":0,"north_mas":0,"flux_jy":1,"index":0,"major_mas":1,"minor_mas":2,"pa_deg":0})")),
      HasSubstr("components[0].minor"));
  EXPECT_THAT(refusal(R"({"ra_deg":360,"dec_deg":2,"reference_mhz":3,"components":[]})"),
              HasSubstr("ra_deg"));
  EXPECT_THAT(refusal(R"({"ra_deg":0,"dec_deg":91,"reference_mhz":3,"components":[]})"),
              HasSubstr("dec_deg"));
  EXPECT_THAT(refusal(R"({"ra_deg":0,"dec_deg":1,"reference_mhz":0,"components":[]})"),
              HasSubstr("reference_mhz"));
  EXPECT_THAT(refusal(R"({"ra_deg":0,"dec_deg":1,"reference_mhz":1,"components":[]})"),
              HasSubstr("components"));
  EXPECT_THAT(refusal(model("7")), HasSubstr("components[0]"));
}

TEST(SkyModelTest, AnAngleInBothUnitsIsRefused) {
  EXPECT_THAT(
      refusal(model(R"({"type":"point","east_mas":1,"east_arcsec":1,"north_mas":0,"flux_jy":1,"index":0})")),
      HasSubstr("components[0].east_mas and east_arcsec: both"));
}

TEST(SkyModelTest, ANameThatNoFileCouldBearIsRefused) {
  for (const char* name : {"a/b", "..", "name-of-more-than-16", "tab\\t", "3C<84"})
    EXPECT_THAT(refusal(R"({"name":")" + std::string(name) +
                        R"(","ra_deg":1,"dec_deg":2,"reference_mhz":3,"components":[)" + kPoint + "]}"),
                HasSubstr("name"))
        << name;
}

TEST(SkyModelTest, BrokenJsonIsRefusedWithItsLine) {
  EXPECT_THAT(refusal("{\n\"ra_deg\": 1,\n\"dec_deg\": }"), HasSubstr("line 3"));
  EXPECT_THAT(refusal("[1, 2]"), HasSubstr("object is expected"));
  EXPECT_THAT(refusal(""), HasSubstr("JSON"));
  EXPECT_THAT(refusal(R"({"ra_deg":1e999})"), HasSubstr("JSON"));
}

TEST(SkyModelTest, DeepNestingIsRefusedWithoutExhaustingTheStack) {
  EXPECT_THAT(refusal(std::string(500000, '[')), HasSubstr("more than 8 levels"));
  EXPECT_THAT(refusal(R"({"name":)" + std::string(200000, '[') + std::string(200000, ']') + "}"),
              HasSubstr("more than 8 levels"));
}

TEST(SkyModelTest, AnOversizedListIsRefused) {
  std::string many = kPoint;
  for (std::size_t i = 0; i < SkyModel::kMaxComponents; ++i) many += std::string(",") + kPoint;
  EXPECT_THAT(refusal(model(many)), HasSubstr("components: an array of 1 to 1024"));
  EXPECT_THAT(refusal(std::string(SkyModel::kMaxFileBytes + 1, ' ')), HasSubstr("1 MiB"));
}

TEST(SkyModelTest, LoadsAFileAndNamesItInAFailure) {
  const test::TempFolder folder;
  test::writeFile(folder.file("sky.json"), model(kPoint));
  test::writeFile(folder.file("bad.json"), "{}");
  SkyModel sky;
  ASSERT_TRUE(sky.load(folder.file("sky.json")).ok());
  EXPECT_EQ(sky.components().size(), 1u);
  EXPECT_EQ(sky.load(folder.file("bad.json")).file(), folder.file("bad.json"));
  EXPECT_EQ(sky.load(folder.file("none.json")).code(), StatusCode::kNotFound);
  EXPECT_EQ(sky.name(), "test") << "a failure must leave the model as it was";
}

TEST(SkyModelTest, ListsInsideListsAreRefusedWhereTheyStand) {
  for (const std::size_t depth : {1U, 5U}) {
    const std::string lists = std::string(depth, '[') + std::string(depth, ']');
    EXPECT_THAT(refusal(model(kPoint, "\"more\":" + lists + ",")), HasSubstr("more: is not a known key"))
        << depth;
    EXPECT_THAT(refusal(R"({"ra_deg":)" + lists + "}"), HasSubstr("ra_deg: a number is expected")) << depth;
    EXPECT_THAT(
        refusal(R"({"ra_deg":1,"dec_deg":1,"reference_mhz":1,"components":[{"type":)" + lists + "}]}"),
        HasSubstr("components[0].type: a string is expected"))
        << depth;
  }
}

// Each level would take fifty times its byte in memory.
TEST(SkyModelTest, DeepNestingIsRefusedBeforeItIsBuilt) {
  EXPECT_THAT(refusal(model(kPoint, R"("more":)" + std::string(8, '[') + std::string(8, ']') + ",")),
              HasSubstr("more than 8 levels"));
  EXPECT_THAT(refusal(model(kPoint, R"("more":)" + std::string(7, '[') + std::string(7, ']') + ",")),
              HasSubstr("more: is not a known key"));
  // Brackets inside a text are none, a quote behind a backslash does not end it.
  const SkyModel sky = parsed(
      model(R"({"name":"[[[[[\"[[[[","type":"point","east_mas":0,"north_mas":0,"flux_jy":1,"index":0})"));
  EXPECT_EQ(sky.components()[0].name, "[[[[[\"[[[[");
}

}  // namespace
}  // namespace lumo
