// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QMouseEvent>
#include <algorithm>

#include "gui/AreaDialogFixture.h"
#include "gui/GuiScript.h"

namespace lumo {
namespace {

using AreaEditingTest = test::AreaDialogFixture;

TEST_F(AreaEditingTest, ARectangleIsDrawnFromCornerToCorner) {
  open();
  choose("rectangle");
  drag({10.0, 5.0}, {-8.0, -7.0});
  const std::vector<AreaShape> areas = confirmed();
  ASSERT_EQ(areas.size(), 1U);
  EXPECT_EQ(areas[0].kind, AreaKind::kRectangle);
  expectPoint(areas[0].centre, 1.0, -1.0);
  EXPECT_NEAR(areas[0].sizeX, 18.0, test::kPlaceRounding);
  EXPECT_NEAR(areas[0].sizeY, 12.0, test::kPlaceRounding);
  EXPECT_EQ(areas[0].rotation, 0.0);
}

TEST_F(AreaEditingTest, AnEllipseFillsTheBoxThatIsDrawn) {
  open();
  choose("ellipse");
  drag({20.0, 12.0}, {10.0, 18.0});
  const std::vector<AreaShape> areas = confirmed();
  ASSERT_EQ(areas.size(), 1U);
  EXPECT_EQ(areas[0].kind, AreaKind::kEllipse);
  expectPoint(areas[0].centre, 15.0, 15.0);
  EXPECT_NEAR(areas[0].sizeX, 5.0, test::kPlaceRounding);
  EXPECT_NEAR(areas[0].sizeY, 3.0, test::kPlaceRounding);
}

TEST_F(AreaEditingTest, ACircleIsDrawnFromItsCentre) {
  open();
  choose("circle");
  drag({-20.0, 10.0}, {-17.0, 6.0});
  const std::vector<AreaShape> areas = confirmed();
  ASSERT_EQ(areas.size(), 1U);
  EXPECT_EQ(areas[0].kind, AreaKind::kCircle);
  expectPoint(areas[0].centre, -20.0, 10.0);
  EXPECT_NEAR(areas[0].sizeX, 5.0, test::kPlaceRounding);
}

TEST_F(AreaEditingTest, APolygonIsClickedAndClosedWithADoubleClick) {
  open();
  choose("polygon");
  click(0.0, 0.0);
  click(12.0, 1.0);
  click(9.0, 14.0);
  test::doubleClick(plot(), at(9.0, 14.0));
  test::release(plot(), at(9.0, 14.0));
  const std::vector<AreaShape> areas = confirmed();
  ASSERT_EQ(areas.size(), 1U);
  ASSERT_EQ(areas[0].vertices.size(), 3U);
  expectPoint(areas[0].vertices[0], 0.0, 0.0);
  expectPoint(areas[0].vertices[1], 12.0, 1.0);
  expectPoint(areas[0].vertices[2], 9.0, 14.0);
}

TEST_F(AreaEditingTest, EnterClosesAPolygonAndNotTheDialog) {
  open();
  choose("polygon");
  click(0.0, 0.0);
  click(12.0, 1.0);
  plot().setFocus();
  test::pressKey(*dialog_, Qt::Key_Return);
  EXPECT_TRUE(shapes().empty());  // two vertices make no area yet
  click(9.0, 14.0);
  test::pressKey(*dialog_, Qt::Key_Return);
  EXPECT_EQ(shapes().size(), 1U);
  EXPECT_TRUE(dialog_->isVisible());
  test::pressKey(*dialog_, Qt::Key_Return);
  EXPECT_FALSE(dialog_->isVisible());
  EXPECT_EQ(dialog_->settings().areas.shapes().size(), 1U);
}

TEST_F(AreaEditingTest, EscapeGivesThePolygonUpBeforeTheDialog) {
  open();
  choose("polygon");
  click(0.0, 0.0);
  click(12.0, 1.0);
  plot().setFocus();
  test::pressKey(*dialog_, Qt::Key_Escape);
  EXPECT_FALSE(editor().busy());
  EXPECT_TRUE(dialog_->isVisible());
  test::pressKey(*dialog_, Qt::Key_Escape);
  EXPECT_FALSE(dialog_->isVisible());
  EXPECT_EQ(dialog_->result(), QDialog::Rejected);
}

TEST_F(AreaEditingTest, APolygonUnderWayIsKeptByOk) {
  open();
  choose("polygon");
  click(0.0, 0.0);
  click(12.0, 1.0);
  click(9.0, 14.0);
  EXPECT_EQ(confirmed().size(), 1U);
}

TEST_F(AreaEditingTest, AnAreaIsSelectedMovedPulledAndTurned) {
  AreaSettings settings;
  settings.areas.add(AreaShape::rectangle({0.0, 0.0}, 20.0, 10.0));
  open(settings);
  choose("select");
  drag({3.0, 1.0}, {8.0, -2.0});
  ASSERT_EQ(editor().selected(), 0U);
  expectPoint(shapes()[0].centre, 5.0, -3.0);
  // The eastern side, which is on the left: the western one stays at x = -5.
  EXPECT_LT(at(15.0, -3.0).x(), at(-5.0, -3.0).x());
  drag({15.0, -3.0}, {19.0, 4.0});
  expectPoint(shapes()[0].centre, 7.0, -3.0);
  EXPECT_NEAR(shapes()[0].sizeX, 24.0, test::kPlaceRounding);
  EXPECT_NEAR(shapes()[0].sizeY, 10.0, test::kPlaceRounding);
  // A quarter turn from north to east, against the sense from east to north.
  const double reach = 5.0 + AreaEditor::kRotatePixels / plot().view().pixelsPerX();
  drag({7.0, -3.0 + reach}, {7.0 + 12.0, -3.0});
  EXPECT_NEAR(shapes()[0].rotation, -90.0, test::kPlaceRounding);
  expectPoint(confirmed()[0].centre, 7.0, -3.0);
}

TEST_F(AreaEditingTest, KeysUndoRedoDeleteAndNudge) {
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({10.0, 10.0}, 6.0));
  open(settings);
  choose("select");
  click(10.0, 10.0);
  test::key(plot(), Qt::Key_Right);  // to the west by a cell
  test::key(plot(), Qt::Key_Up, Qt::ShiftModifier);
  expectPoint(shapes()[0].centre, 9.5, 15.0);
  test::key(plot(), Qt::Key_Delete);
  EXPECT_TRUE(shapes().empty());
  const auto back = [this] { test::key(plot(), Qt::Key_Z, Qt::ControlModifier); };
  back();
  ASSERT_EQ(shapes().size(), 1U);
  back();
  expectPoint(shapes()[0].centre, 9.5, 10.0);
  test::key(plot(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  expectPoint(shapes()[0].centre, 9.5, 15.0);
  back();
  back();
  expectPoint(shapes()[0].centre, 10.0, 10.0);
  EXPECT_FALSE(child<QToolButton>("area.undo").isEnabled());
  child<QToolButton>("area.redo").click();
  expectPoint(shapes()[0].centre, 9.5, 10.0);
}

TEST_F(AreaEditingTest, UndoWorksFromTheDialogsButtonsToo) {
  open();
  choose("circle");
  drag({0.0, 0.0}, {5.0, 0.0});
  ASSERT_EQ(shapes().size(), 1U);
  test::key(button("Cancel"), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_TRUE(shapes().empty());
}

TEST_F(AreaEditingTest, VerticesAreInsertedMovedAndDeleted) {
  AreaSettings settings;
  settings.areas.add(AreaShape::polygon({{-20, -20}, {20, -20}, {20, 20}, {-20, 20}}));
  open(settings);
  choose("select");
  click(0.0, 0.0);
  drag({0.0, 20.0}, {0.0, 30.0});  // the handle in the middle of the northern side
  ASSERT_EQ(shapes()[0].vertices.size(), 5U);
  expectPoint(shapes()[0].vertices[3], 0.0, 30.0);
  test::doubleClick(plot(), at(20.0, -10.0));
  ASSERT_EQ(shapes()[0].vertices.size(), 6U);
  expectPoint(shapes()[0].vertices[2], 20.0, -10.0);
  click(-20.0, -20.0);
  test::key(plot(), Qt::Key_Delete);
  ASSERT_EQ(shapes()[0].vertices.size(), 5U);
  expectPoint(shapes()[0].vertices[0], 20.0, -20.0);
}

TEST_F(AreaEditingTest, WheelAndMiddleButtonMoveTheMapWithADrawingTool) {
  open();
  choose("rectangle");
  const double scale = plot().view().pixelsPerX();
  test::wheel(plot(), at(0.0, 0.0), 240);
  EXPECT_NEAR(plot().view().pixelsPerX(), 1.44 * scale, 1e-9);
  const QPointF before = at(0.0, 0.0);
  QWidget& panel = *plot().childAt(plot().panelRect().center());
  const auto send = [&](QEvent::Type type, const QPointF& where, Qt::MouseButton one) {
    QMouseEvent event(type, panel.mapFrom(&plot(), where), plot().mapToGlobal(where), one, Qt::MiddleButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&panel, &event);
  };
  send(QEvent::MouseButtonPress, before, Qt::MiddleButton);
  send(QEvent::MouseMove, before + QPointF(25.0, 10.0), Qt::NoButton);
  send(QEvent::MouseButtonRelease, before + QPointF(25.0, 10.0), Qt::MiddleButton);
  EXPECT_NEAR(at(0.0, 0.0).x(), before.x() + 25.0, 1e-9);
  EXPECT_NEAR(at(0.0, 0.0).y(), before.y() + 10.0, 1e-9);
  EXPECT_TRUE(shapes().empty());
  // What is drawn now lies where the pointer is on the moved map.
  drag({6.0, 4.0}, {2.0, 1.0});
  ASSERT_EQ(shapes().size(), 1U);
  expectPoint(shapes()[0].centre, 4.0, 2.5);
}

TEST_F(AreaEditingTest, TheMoveToolDragsTheMapAndNoArea) {
  AreaSettings settings;
  settings.areas.add(AreaShape::circle({0.0, 0.0}, 10.0));
  open(settings);
  choose("move");
  const QPointF before = at(0.0, 0.0);
  dragPixels(before, before + QPointF(-30.0, 20.0));
  EXPECT_NEAR(at(0.0, 0.0).x(), before.x() - 30.0, 1e-9);
  EXPECT_EQ(shapes(), settings.areas.shapes());
}

TEST_F(AreaEditingTest, TheCursorTellsWhatAPressWouldDo) {
  AreaSettings settings;
  settings.areas.add(AreaShape::rectangle({0.0, 0.0}, 40.0, 20.0));
  open(settings);
  const QWidget& panel = *plot().childAt(plot().panelRect().center());
  const auto shapeAt = [&](double x, double y) {
    test::move(plot(), at(x, y), false);
    return panel.cursor().shape();
  };
  choose("select");
  EXPECT_EQ(shapeAt(30.0, 30.0), Qt::ArrowCursor);
  EXPECT_EQ(shapeAt(5.0, 3.0), Qt::SizeAllCursor);
  click(5.0, 3.0);
  EXPECT_EQ(shapeAt(20.0, 0.0), Qt::SizeHorCursor);
  EXPECT_EQ(shapeAt(0.0, -10.0), Qt::SizeVerCursor);
  EXPECT_EQ(shapeAt(20.0, 10.0), Qt::SizeFDiagCursor);   // the upper left corner, in the north-east
  EXPECT_EQ(shapeAt(-20.0, 10.0), Qt::SizeBDiagCursor);  // the upper right corner
  choose("circle");
  EXPECT_EQ(shapeAt(5.0, 3.0), Qt::CrossCursor);
  choose("move");
  EXPECT_EQ(shapeAt(5.0, 3.0), Qt::OpenHandCursor);
}

TEST_F(AreaEditingTest, OutlinesStandOutOnLightAndDarkMaps) {
  AreaSettings settings;
  settings.areas.add(AreaShape::rectangle({0.0, 0.0}, 40.0, 30.0));
  for (const ColourMap colours : {ColourMap::kGrey, ColourMap::kInvertedGrey}) {
    open(settings);
    plot().axis()->colours()->setColourMap(colours);
    plot().refresh();
    QApplication::processEvents();
    const QImage image = plot().grab().toImage();
    // Across the western side, 12 arcseconds north of the middle.
    int darkest = 255;
    int lightest = 0;
    for (int offset = -4; offset <= 4; ++offset) {
      const QPoint pixel = at(-20.0, 12.0).toPoint() + QPoint(offset, 0);
      const int grey = qGray(image.pixel(pixel));
      darkest = std::min(darkest, grey);
      lightest = std::max(lightest, grey);
    }
    EXPECT_LT(darkest, 60);
    EXPECT_GT(lightest, 200);
  }
}

}  // namespace
}  // namespace lumo
