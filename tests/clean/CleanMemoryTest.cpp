// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>

#include "clean/CleanMemory.h"
#include "clean/CleanProblem.h"
#include "clean/TiledCleanEngine.h"

namespace lumo {
namespace {

TEST(CleanMemoryTest, TheEnginesHoldNoMoreThanIsTold) {
  for (const std::int32_t terms : {1, 2, 4})
    for (const std::uint32_t size : {16u, 64u, 256u})
      for (const CleanRounding rounding : {CleanRounding::kEveryProduct, CleanRounding::kOnce}) {
        test::EngineInput input(test::randomProblem(terms, {size, size}, {2 * size, 2 * size}, 1));
        CleanTiling tiling;
        tiling.rounding = rounding;
        TiledCleanEngine engine(input.residuals, input.beams, {.iterations = 100, .gain = 0.01}, tiling);
        const std::atomic<int> stop{0};
        ASSERT_EQ(engine.Run(stop, nullptr), 1);
        const std::uint64_t pixels = std::uint64_t{size} * size;
        const auto n = static_cast<std::uint64_t>(terms);
        const std::uint64_t mapsAndBeams = 4 * (2 * n * pixels + (2 * n - 1) * 4 * pixels);
        EXPECT_LE(engine.workingBytes(), cleanEngineMemory(mapsAndBeams, 1)) << terms << " terms, " << size;
      }
}

TEST(CleanMemoryTest, MapsAndBeamsAreCountedOnceEach) {
  // Two residuals, two components, one restored map and the restoring beam of 4 bytes a pixel; three beams.
  const std::uint64_t maps = std::uint64_t{6} * 4 * 1024;
  const std::uint64_t beams = std::uint64_t{3} * 4 * 4096;
  EXPECT_EQ(cleanMemory(2, 1024, 4096, 1),
            maps + beams + cleanEngineMemory(std::uint64_t{4} * 4 * 1024 + beams, 1));
}

}  // namespace
}  // namespace lumo
