// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>

#include "clean/ui/CleanGraphs.h"
#include "view/ALineGraph.h"
#include "view/AMultiAxisDlgWnd.h"

namespace lumo {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

class CleanGraphsTest : public testing::Test {
 protected:
  static const ALineGraph& curve(const AMultiAxisDlgWnd& window, std::size_t i) {
    return dynamic_cast<const ALineGraph&>(*window.frame()->graphs()[i]);
  }

  /// Two iterations of gain 0.2: the score is the gain's share g (2 - g) = 0.36 of 9 and of 4.
  const std::vector<CleanProgress> lines_{{1, 0.5, 0.2, true, 3, 4, 0.36 * 9.0, -2.5},
                                          {2, 0.75, 0.2, true, 3, 4, 0.36 * 4.0, 0.0005}};
};

TEST_F(CleanGraphsTest, FluxIsOnALinearAxisAndTheResidualsOnALogarithmicOne) {
  CleanGraphs graphs("Jy/Beam");
  graphs.showRecord(lines_);
  const AMSD2DAxisMulti& flux = *graphs.fluxWindow().frame();
  EXPECT_EQ(flux.scaleX(), AxisScale::kLinear);
  EXPECT_EQ(flux.scaleY(), AxisScale::kLinear);
  EXPECT_EQ(flux.nameOX(), "Iteration");
  EXPECT_EQ(flux.nameOY(), "Total flux [%sJy]");
  const AMSD2DAxisMulti& residual = *graphs.residualWindow().frame();
  EXPECT_EQ(residual.scaleX(), AxisScale::kLinear);
  EXPECT_EQ(residual.scaleY(), AxisScale::kLogarithmic);
  EXPECT_EQ(residual.nameOY(), "Residual [%sJy/Beam]");
  EXPECT_THAT(curve(graphs.fluxWindow(), 0).y(), ElementsAre(0.5, 0.75));
  // Rounding of a product, a quotient and a root.
  EXPECT_THAT(curve(graphs.residualWindow(), 1).y(),
              ElementsAre(DoubleNear(3.0, 1e-14), DoubleNear(2.0, 1e-14)));
  EXPECT_THAT(curve(graphs.residualWindow(), 0).y(), ElementsAre(2.5, 0.0005));
}

TEST_F(CleanGraphsTest, LegendsTellWhereEachCurveHasCome) {
  CleanGraphs graphs("Jy/Beam");
  graphs.showRecord(lines_);
  EXPECT_EQ(curve(graphs.fluxWindow(), 0).legend(), "Total flux [mJy]: 750");
  EXPECT_EQ(curve(graphs.residualWindow(), 0).legend(),
            QString::fromUtf8("Residual of term 0 at the peak [µJy/Beam]: 500"));
  EXPECT_EQ(curve(graphs.residualWindow(), 1).legend(), "Residual of all terms, from the score [Jy/Beam]: 2");
}

TEST_F(CleanGraphsTest, MapsWithoutAUnitHaveAxesWithoutOne) {
  CleanGraphs graphs("");
  graphs.showRecord(lines_);
  EXPECT_EQ(graphs.fluxWindow().frame()->nameOY(), "Total flux");
  EXPECT_EQ(curve(graphs.fluxWindow(), 0).legend(), "Total flux: 0.75");
}

TEST_F(CleanGraphsTest, WithoutIterationsTheGraphsAreEmpty) {
  CleanGraphs graphs("Jy/Beam");
  EXPECT_FALSE(graphs.grab().isNull());
  EXPECT_TRUE(curve(graphs.fluxWindow(), 0).x().empty());
}

TEST_F(CleanGraphsTest, ThePartZoomedIntoStaysWhileTheCurvesGrow) {
  CleanGraphs graphs("Jy/Beam");
  graphs.showRecord(lines_);
  graphs.resize(800, 300);
  ASSERT_FALSE(graphs.grab().isNull());
  graphs.fluxWindow().zoom(2.0);
  const PlotRect flux = graphs.fluxWindow().view().visible();
  std::vector<CleanProgress> more = lines_;
  more.push_back({30, 4.0, 0.2, true, 3, 4, 0.1, 0.1});
  graphs.showRecord(more);
  ASSERT_FALSE(graphs.grab().isNull());
  // The numbers at the axes may have another width now, and with them the panel.
  EXPECT_NEAR((graphs.fluxWindow().view().visible().xMin + graphs.fluxWindow().view().visible().xMax) / 2,
              (flux.xMin + flux.xMax) / 2, 1e-9);
  EXPECT_LT(graphs.fluxWindow().view().visible().xMax, 3.0);
  EXPECT_EQ(graphs.residualWindow().view().visible().xMax, 30.0);
}

}  // namespace
}  // namespace lumo
