#include "view/controls.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/runtime_error.h"

namespace quelo {
namespace {

using quelo::testing::ErrorOf;

TEST(ScrollBarModel, ChangeFiresForANewValueInsideTheRangeEvenOnAReversedBar) {
  ScrollBarModel bar(0, 256, 4, 16, 256);
  ScrollBarModel hor(360, 0, 1, 1, 60);
  int changes = 0;
  bar.Change = [&] { ++changes; };
  hor.Change = [&] { ++changes; };
  for (auto* b : {&bar, &hor}) {
    EXPECT_EQ(ErrorOf([&] { b->Value(361); }), kErrInvalidPropertyValue);
    EXPECT_EQ(ErrorOf([&] { b->Value(-1); }), kErrInvalidPropertyValue);
  }
  EXPECT_EQ(changes, 0);
  bar.Value(200);
  bar.Value(200);
  hor.Value(360);
  EXPECT_EQ(changes, 2);

  hor.Value(60);
  hor.UserArrow(+1);  // the right arrow goes towards Max = 0
  EXPECT_EQ(hor.Value(), 59);
  hor.UserTrough(-1);
  EXPECT_EQ(hor.Value(), 60);
  hor.Value(0);
  changes = 0;
  hor.UserArrow(+1);  // held at the end: no change, no event
  EXPECT_EQ(hor.Value(), 0);
  EXPECT_EQ(changes, 0);
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

TEST(PictureBoxModel, UserScaleIsKeptAndMapsPixelsBothWays) {
  PictureBoxModel box;
  box.Move(0, 0, 400, 200);
  box.ScaleLeft(-12);
  box.ScaleWidth(24);
  box.ScaleTop(6);
  box.ScaleHeight(-12);
  EXPECT_EQ(box.ScaleMode(), kScaleUser);
  EXPECT_FLOAT_EQ(box.ToScaleX(200), 0);
  EXPECT_FLOAT_EQ(box.ToScaleY(200), -6);
  EXPECT_DOUBLE_EQ(box.ToPixelX(12), 400);
  EXPECT_DOUBLE_EQ(box.ToPixelY(0), 100);
  box.Height(100);  // user scale survives a resize
  EXPECT_EQ(box.ScaleHeight(), -12);
  EXPECT_EQ(ErrorOf([&] { box.ScaleWidth(0); }), kErrInvalidPropertyValue);
}

}  // namespace
}  // namespace quelo
