// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "view/A2_3DAxis.h"

namespace lumo {
namespace {

TEST(A2_3DAxisTest, ItsExtentHoldsAllGraphs) {
  A2_3DAxis axis;
  EXPECT_EQ(axis.extent(), PlotRect{});
  axis.addGraph(std::make_unique<AColorsGraph>()).SetParameters(AMatrix<float>(2, 2), {0, 1, 0, 1, 0, 1});
  axis.addGraph(std::make_unique<AColorsGraph>()).SetParameters(AMatrix<float>(2, 2), {-4, -3, 5, 6, 0, 1});
  EXPECT_EQ(axis.extent(), (PlotRect{-4.5, 1.5, -0.5, 6.5}));
}

TEST(A2_3DAxisTest, TheFirstColourGraphHasTheColourScale) {
  A2_3DAxis axis;
  EXPECT_EQ(axis.colours(), nullptr);
  AColorsGraph& first = axis.addGraph(std::make_unique<AColorsGraph>());
  axis.addGraph(std::make_unique<AColorsGraph>());
  EXPECT_EQ(axis.colours(), &first);
}

TEST(A2_3DAxisTest, TheUnitNamesTheValuesUnlessAnotherNameIsSet) {
  A2_3DAxis axis;
  EXPECT_EQ(axis.nameOZ(), "");
  axis.addGraph(std::make_unique<AColorsGraph>()).setUnit("Jy/beam");
  EXPECT_EQ(axis.nameOZ(), "[%sJy/beam]");
  axis.setNameOZ("Flux [%sJy]");
  EXPECT_EQ(axis.nameOZ(), "Flux [%sJy]");
}

}  // namespace
}  // namespace lumo
