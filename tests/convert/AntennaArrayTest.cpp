// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numbers>

#include "convert/AntennaArray.h"
#include "support/TempFolder.h"

namespace lumo {
namespace {

using ::testing::HasSubstr;

constexpr double kDegree = std::numbers::pi / 180;

double distance(const EarthVector& a, const EarthVector& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

std::pair<double, double> shortestAndLongest(const AntennaArray& array) {
  double shortest = 1e30, longest = 0;
  for (std::size_t i = 0; i < array.antennas().size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double length = distance(array.position(i), array.position(j));
      shortest = std::min(shortest, length);
      longest = std::max(longest, length);
    }
  }
  return {shortest, longest};
}

std::string refusal(const std::string& text) {
  AntennaArray array;
  const Status status = array.parse(text);
  EXPECT_FALSE(status.ok()) << text;
  EXPECT_TRUE(array.antennas().empty());
  return status.message();
}

TEST(AntennaArrayTest, TheVlbaStationsStandAtTheirPublishedPlaces) {
  // West longitude, north latitude (degrees) and height (metres) as the observatory's station list gives
  // them.
  struct Place {
    double west, north, height;
  };
  const std::map<std::string, Place> places = {
      {"SC", {64.5836, 17.7566, -15}},   {"HN", {71.9866, 42.9336, 296}},   {"NL", {91.5741, 41.7714, 222}},
      {"FD", {103.9448, 30.6350, 1606}}, {"LA", {106.2456, 35.7751, 1962}}, {"PT", {108.1192, 34.3010, 2365}},
      {"KP", {111.6124, 31.9563, 1902}}, {"OV", {118.2770, 37.2316, 1196}}, {"BR", {119.6833, 48.1312, 250}},
      {"MK", {155.4555, 19.8014, 3763}}};
  const AntennaArray array = AntennaArray::vlba();
  ASSERT_EQ(array.antennas().size(), places.size());
  for (std::size_t i = 0; i < array.antennas().size(); ++i) {
    const Place& place = places.at(array.antennas()[i].name);
    const EarthVector expected = fromGeodetic(place.north * kDegree, -place.west * kDegree, place.height);
    // The list's angles are rounded to 1e-4 degrees (11 m) and its ellipsoid differs by metres.
    EXPECT_LT(distance(array.position(i), expected), 50) << array.antennas()[i].name;
    EXPECT_EQ(array.antennas()[i].id, static_cast<int>(i) + 1);
  }
}

TEST(AntennaArrayTest, TheVlbaSpans8611Kilometres) {
  const auto [shortest, longest] = shortestAndLongest(AntennaArray::vlba());
  EXPECT_NEAR(longest, 8611e3, 2e3);  // Mauna Kea to St. Croix
  EXPECT_NEAR(shortest, 236e3, 1e3);  // Los Alamos to Pie Town
}

TEST(AntennaArrayTest, TheVlaHasTheSizeOfItsAConfiguration) {
  const AntennaArray array = AntennaArray::vla();
  ASSERT_EQ(array.antennas().size(), 27u);
  const auto [shortest, longest] = shortestAndLongest(array);
  EXPECT_NEAR(longest, 36.4e3, 0.4e3);
  EXPECT_GT(shortest, 500);
  EXPECT_LT(shortest, 1000);
}

TEST(AntennaArrayTest, TheVlaArmsPointNorthSouthEastAndSouthWest) {
  const AntennaArray array = AntennaArray::vla();
  const EarthVector centre = fromGeodetic(34.0788 * kDegree, -107.6177 * kDegree, 2115);
  const double longitude = -107.6177 * kDegree;
  const std::map<char, double> azimuths = {{'N', 355}, {'E', 115}, {'W', 236}};
  for (std::size_t i = 0; i < array.antennas().size(); ++i) {
    const EarthVector offset = array.position(i) - centre;
    const double east = -std::sin(longitude) * offset.x + std::cos(longitude) * offset.y;
    const double north = offset.z / std::cos(34.0788 * kDegree);
    double azimuth = std::atan2(east, north) / kDegree;
    if (azimuth < 0) azimuth += 360;
    EXPECT_NEAR(azimuth, azimuths.at(array.antennas()[i].name[0]), 1e-6) << array.antennas()[i].name;
    // In the plane of the centre's horizon, so no height.
    const EarthVector up = zenith(centre);
    EXPECT_NEAR(offset.x * up.x + offset.y * up.y + offset.z * up.z, 0, 1) << array.antennas()[i].name;
  }
}

TEST(AntennaArrayTest, ReadsAFileWithComments) {
  const test::TempFolder folder;
  test::writeFile(folder.file("pair.txt"),
                  "# two telescopes\n\nA1 4033947 486990 4900431 # Effelsberg\r\n\tB2  3822626.0 "
                  "-154105.3 5086486.0\n");
  AntennaArray array;
  ASSERT_TRUE(array.select(folder.file("pair.txt")).ok());
  EXPECT_EQ(array.name(), "pair.txt");
  ASSERT_EQ(array.antennas().size(), 2u);
  EXPECT_EQ(array.antennas()[0].name, "A1");
  EXPECT_EQ(array.antennas()[1].id, 2);
  EXPECT_EQ(array.position(1).y, -154105.3);
}

TEST(AntennaArrayTest, SelectsTheBuiltInArraysByName) {
  AntennaArray array;
  ASSERT_TRUE(array.select("vla").ok());
  EXPECT_EQ(array.name(), "VLA");
  ASSERT_TRUE(array.select("vlba").ok());
  EXPECT_EQ(array.name(), "VLBA");
  EXPECT_EQ(array.select("/no/such/array.txt").code(), StatusCode::kNotFound);
  EXPECT_EQ(array.name(), "VLBA");
}

TEST(AntennaArrayTest, ABadLineIsRefusedWithItsNumber) {
  const std::string good = "A 6378137 0 0\n";
  EXPECT_THAT(refusal(good + "B 6378137 0\n"), HasSubstr("line 2: three coordinates"));
  EXPECT_THAT(refusal(good + "\nB 1 2 x\n"), HasSubstr("line 3"));
  EXPECT_THAT(refusal(good + "B 6378137 0 0 25\n"), HasSubstr("follows"));
  EXPECT_THAT(refusal(good + good), HasSubstr("second antenna"));
  EXPECT_THAT(refusal(good + "B 100 200 0\n"), HasSubstr("Earth's centre"));
  EXPECT_THAT(refusal(good + "B nan 0 0\n"), HasSubstr("Earth's centre"));
  EXPECT_THAT(refusal(good + "name-of-more-than-16 6378137 0 0\n"), HasSubstr("16 bytes"));
  EXPECT_THAT(refusal(good), HasSubstr("two antennas"));
  EXPECT_THAT(refusal(""), HasSubstr("two antennas"));
}

TEST(AntennaArrayTest, MoreThan255AntennasAreRefused) {
  std::string text;
  for (int i = 0; i < 255; ++i) {
    const std::string number = std::to_string(i);
    text.append("A").append(number).append(" 6378137 0 ").append(number).append("\n");
  }
  AntennaArray array;
  EXPECT_TRUE(array.parse(text).ok());
  EXPECT_THAT(refusal(text + "last 6378137 0 999"), HasSubstr("255"));
}

}  // namespace
}  // namespace lumo
