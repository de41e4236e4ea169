#include "view/controls.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/runtime_error.h"

namespace quelo {
namespace {

using quelo::testing::ErrorOf;

TEST(ScrollBarModel, ValueChangeFiresChangeOnlyWhenItDiffers) {
  ScrollBarModel bar(0, 256, 4, 16, 256);
  int changes = 0;
  bar.Change = [&] { ++changes; };
  bar.Value(200);
  bar.Value(200);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(bar.Value(), 200);
}

TEST(ScrollBarModel, ValueOutsideTheRangeIsInvalidAndChangesNothing) {
  ScrollBarModel bar(0, 256, 4, 16, 256);
  int changes = 0;
  bar.Change = [&] { ++changes; };
  EXPECT_EQ(ErrorOf([&] { bar.Value(257); }), kErrInvalidPropertyValue);
  EXPECT_EQ(ErrorOf([&] { bar.Value(-1); }), kErrInvalidPropertyValue);
  EXPECT_EQ(bar.Value(), 256);
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(RuntimeError(kErrInvalidPropertyValue).what(), std::string("Invalid property value"));
}

TEST(ScrollBarModel, ReversedBarAcceptsItsRangeAndStepsTowardsMax) {
  ScrollBarModel hor(360, 0, 1, 1, 60);
  hor.Value(0);
  hor.Value(360);
  EXPECT_EQ(ErrorOf([&] { hor.Value(361); }), kErrInvalidPropertyValue);
  EXPECT_EQ(ErrorOf([&] { hor.Value(-1); }), kErrInvalidPropertyValue);
  hor.Value(60);
  hor.UserArrow(+1);  // the right arrow goes towards Max = 0
  EXPECT_EQ(hor.Value(), 59);
  hor.UserTrough(-1);
  EXPECT_EQ(hor.Value(), 60);
  hor.Value(0);
  int changes = 0;
  hor.Change = [&] { ++changes; };
  hor.UserArrow(+1);  // held at the end: no change, no event
  EXPECT_EQ(hor.Value(), 0);
  EXPECT_EQ(changes, 0);
}

TEST(ScrollBarModel, UserStepsAreHeldAtTheEnds) {
  ScrollBarModel zoom(0, 256, 4, 16, 250);
  zoom.UserTrough(+1);
  EXPECT_EQ(zoom.Value(), 256);
  zoom.Value(2);
  zoom.UserArrow(-1);
  EXPECT_EQ(zoom.Value(), 0);
}

TEST(ScrollBarModel, ThumbDragFiresScrollThenOneChangeAtTheRelease) {
  ScrollBarModel bar(-90, 90, 1, 1, 30);
  std::vector<std::string> events;
  bar.Change = [&] { events.push_back("change " + std::to_string(bar.Value())); };
  bar.Scroll = [&] { events.push_back("scroll " + std::to_string(bar.Value())); };
  bar.UserDrag(40);
  bar.UserDrag(95);  // held at Max
  bar.UserDragEnd();
  EXPECT_EQ(events, (std::vector<std::string>{"scroll 40", "scroll 90", "change 90"}));

  events.clear();
  bar.UserDrag(80);
  bar.UserDrag(90);  // back where the drag began
  bar.UserDragEnd();
  EXPECT_EQ(events, (std::vector<std::string>{"scroll 80", "scroll 90"}));
}

TEST(ScrollBarModel, NarrowedRangePullsTheValueIn) {
  ScrollBarModel bar(0, 256, 4, 16, 256);
  int changes = 0;
  bar.Change = [&] { ++changes; };
  bar.Max(100);
  EXPECT_EQ(bar.Value(), 100);
  EXPECT_EQ(changes, 1);
  bar.Min(-5);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(ErrorOf([&] { bar.LargeChange(-1); }), kErrInvalidPropertyValue);
}

TEST(CheckButtonModel, ClickFiresOnEveryChangeOfValue) {
  CheckButtonModel spin;
  int clicks = 0;
  spin.Click = [&] { ++clicks; };
  spin.Value(1);
  spin.Value(1);  // same value: no click
  spin.UserClick();
  EXPECT_EQ(spin.Value(), 0);
  EXPECT_EQ(clicks, 2);
  EXPECT_EQ(ErrorOf([&] { spin.Value(2); }), kErrInvalidPropertyValue);
}

TEST(MenuItemModel, DisabledItemIgnoresClicksAndMirrorSeesEveryChange) {
  MenuItemModel item("Show File &Axes");
  int clicks = 0, mirrored = 0;
  item.Click = [&] { ++clicks; };
  item.Mirror = [&] { ++mirrored; };
  item.UserClick();
  item.Enabled(false);
  item.UserClick();
  item.Checked(true);
  EXPECT_EQ(clicks, 1);
  EXPECT_EQ(mirrored, 2);
  EXPECT_TRUE(item.Checked());
  EXPECT_EQ(item.Caption(), "Show File &Axes");
}

TEST(PictureBoxModel, ScaleFollowsTheMode) {
  PictureBoxModel box;
  box.Move(17, 0, 800, 600);
  box.ScaleMode(kScalePixels);
  EXPECT_EQ(box.ScaleWidth(), 800);
  EXPECT_EQ(box.ScaleHeight(), 600);
  box.ScaleMode(kScaleTwips);
  EXPECT_EQ(box.ScaleLeft(), 0);
  EXPECT_EQ(box.ScaleWidth(), 12000);
  EXPECT_EQ(box.ScaleHeight(), 9000);
  box.Width(400);  // a resize in twips follows
  EXPECT_EQ(box.ScaleWidth(), 6000);
  EXPECT_EQ(ErrorOf([&] { box.ScaleMode(2); }), kErrInvalidPropertyValue);
}

TEST(PictureBoxModel, UserScaleIsKeptAndMapsPixelsBothWays) {
  PictureBoxModel box;
  box.Move(0, 0, 400, 200);
  box.ScaleLeft(-12);
  box.ScaleWidth(24);
  box.ScaleTop(6);
  box.ScaleHeight(-12);
  EXPECT_EQ(box.ScaleMode(), kScaleUser);
  EXPECT_FLOAT_EQ(box.ToScaleX(200), 0);
  EXPECT_FLOAT_EQ(box.ToScaleY(0), 6);
  EXPECT_FLOAT_EQ(box.ToScaleY(200), -6);
  EXPECT_DOUBLE_EQ(box.ToPixelX(12), 400);
  EXPECT_DOUBLE_EQ(box.ToPixelY(0), 100);
  box.Height(100);  // user scale survives a resize
  EXPECT_EQ(box.ScaleHeight(), -12);
  box.ScaleMode(kScaleUser);
  EXPECT_EQ(box.ScaleLeft(), -12);
  EXPECT_EQ(ErrorOf([&] { box.ScaleWidth(0); }), kErrInvalidPropertyValue);
}

TEST(StatusBarModel, PanelsAreNumberedFromOne) {
  StatusBarModel bar(2);
  bar.PanelText(1, "/tmp/a.qgl");
  EXPECT_EQ(bar.PanelText(1), "/tmp/a.qgl");
  EXPECT_EQ(bar.PanelText(2), "");
  EXPECT_EQ(ErrorOf([&] { bar.PanelText(0, "x"); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([&] { (void)bar.PanelText(3); }), kErrSubscript);
}

TEST(TimerModel, TicksOnlyWhileEnabledWithAnInterval) {
  TimerModel timer;
  int ticks = 0;
  timer.Timer = [&] { ++ticks; };
  timer.Interval(1000);
  timer.Tick();
  timer.Enabled(true);
  timer.Tick();
  timer.Interval(0);
  timer.Tick();
  EXPECT_EQ(ticks, 1);
}

TEST(ScreenModel, IsOneForTheApplication) {
  Screen().MousePointer(kPointerHourglass);
  EXPECT_EQ(Screen().MousePointer(), 11);
  Screen().MousePointer(kPointerDefault);
  EXPECT_EQ(&Screen(), &Screen());
}

}  // namespace
}  // namespace quelo
