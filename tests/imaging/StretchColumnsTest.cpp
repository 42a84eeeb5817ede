// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "imaging/StretchColumns.h"
#include "io/AUVXComplex.h"
#include "support/TargetGuard.h"

namespace lumo {
namespace {

/// Records of some IFs as a file holds them, one byte apart from any alignment.
struct Records {
  Records(std::size_t records, std::size_t perRecord)
      : ifs(perRecord), bytes(1 + (records * perRecord + 1) * sizeof(AUVXComplex)), values(records) {
    for (std::size_t n = 0; n < records; ++n) values[n] = bytes.data() + 1 + n * ifs * sizeof(AUVXComplex);
  }
  void set(std::size_t record, std::size_t i, const AUVXComplex& value) {
    std::memcpy(bytes.data() + 1 + (record * ifs + i) * sizeof(AUVXComplex), &value, sizeof(value));
  }
  [[nodiscard]] AUVXComplex get(std::size_t record, std::size_t i) const {
    AUVXComplex value;
    std::memcpy(&value, values[record] + i * sizeof(value), sizeof(value));
    return value;
  }

  std::size_t ifs;
  std::vector<std::uint8_t> bytes;
  std::vector<const std::uint8_t*> values;
};

bool sameBits(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

TEST(StretchColumnsTest, PutsEveryNumberOfARecordInItsColumnAndRejectsWhatIsNotUsable) {
  if constexpr (std::endian::native != std::endian::little) GTEST_SKIP() << "for little-endian machines";
  std::mt19937 random(8);
  std::normal_distribution<double> value;
  const double inf = std::numeric_limits<double>::infinity();
  const AUVXComplex odd[] = {{NAN, 1, 1}, {1, NAN, 1}, {1, 1, NAN}, {inf, 1, 1}, {1, -inf, 1},
                             {1, 1, inf}, {1, 1, 0},   {1, 1, -2},  {-0.0, 0, 1}};
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    const test::TargetGuard guard(target);
    for (const std::size_t ifs : {1, 2, 3, 4, 5, 8, 11})
      for (const std::size_t count : {0, 1, 4, 7, 20, 39}) {
        Records records(count, ifs);
        for (std::size_t n = 0; n < count; ++n)
          for (std::size_t i = 0; i < ifs; ++i)
            records.set(n, i,
                        (n + i) % 3 == 0 ? odd[random() % std::size(odd)]
                                         : AUVXComplex(value(random), value(random), 1.5));
        constexpr std::size_t kFirst = 5;
        std::vector<Stretch::Means> means(ifs);
        const std::size_t done = takeColumns(records.values.data(), count, kFirst, ifs, means.data());
        ASSERT_EQ(done, target == HWY_SCALAR ? 0 : count / 4 * 4) << hwy::TargetName(target);
        for (std::size_t i = 0; i < ifs; ++i) {
          const Stretch::Means& m = means[i];
          for (std::size_t n = 0; n < done; ++n) {
            const AUVXComplex expected = records.get(n, i);
            const std::size_t at = kFirst + n;
            ASSERT_TRUE(sameBits(m.re[at], expected.Re()) && sameBits(m.im[at], expected.Im()));
            ASSERT_EQ(m.weight[at], expected.isUsable() ? expected.Weight() : 0.0F)
                << hwy::TargetName(target) << ", record " << n << ", IF " << i;
          }
          EXPECT_EQ(m.weight[kFirst - 1], 0.0F);
          EXPECT_EQ(m.re[kFirst + done], 0.0F);
        }
      }
  }
}

}  // namespace
}  // namespace lumo
