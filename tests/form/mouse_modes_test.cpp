// The four mode buttons and what a press, a move and a release do in each
// mouse mode.
#include <cmath>

#include "form_fixture.h"

namespace quelo::testing {
namespace {

class MouseModes : public FormTest {
 protected:
  // A 20 x 20 scene seen from above, so scene x and y are view x and y.
  MouseModes() {
    form.HorAng(0);
    form.VerAng(90);
    UseRoomBox({-10, 10, -10, 10, 0, 0});
  }
  std::vector<Integer> Buttons() const {
    std::vector<Integer> values;
    for (const auto& b : form.Mouse_Chk) values.push_back(b.Value());
    return values;
  }
  Long Icon() const { return form.FacePbx.MouseIcon(); }
  std::array<Single, 4> Window() const {
    return {form.WinXMin, form.WinXMax, form.WinYMin, form.WinYMax};
  }
  void Drag(Single x0, Single y0, Single x1, Single y1, Integer button = kLeftButton) {
    form.FacePbx_MouseDown(button, 0, x0, y0);
    form.FacePbx_MouseMove(button, 0, x1, y1);
    form.FacePbx_MouseUp(button, 0, x1, y1);
  }
};

TEST_F(MouseModes, EachButtonChoosesItsModeAndCursor) {
  const struct {
    int button;
    Integer mode;
    CursorKind cursor;
  } cases[] = {{0, kModeDrag, CursorKind::kDrag},
               {1, kModeZoomIn, CursorKind::kZoom},
               {2, kModeZoomOut, CursorKind::kCram},
               {3, kModeCenter, CursorKind::kSpot}};
  for (const auto& c : cases) {
    form.Mouse_Chk[static_cast<std::size_t>(c.button)].UserClick();
    EXPECT_EQ(form.MouseMode(), c.mode);
    EXPECT_EQ(Icon(), CursorIconId(c.cursor));
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(form.Mouse_Chk[static_cast<std::size_t>(i)].Value(), i == c.button ? 1 : 0);
    }
  }
}

TEST_F(MouseModes, SwitchingModesDoesNotReenterTheClickHandler) {
  form.Mouse_Chk[0].UserClick();
  // Watch every Click the buttons raise from now on: whether the guard was
  // set, and whether the handler itself changed the mode or a button.
  std::vector<std::string> clicks;
  for (auto& button : form.Mouse_Chk) {
    button.Click = [this, &clicks, handler = button.Click] {
      const bool guard = form.SettingMouseMode;
      const auto mode = form.MouseMode();
      const auto buttons = Buttons();
      handler();
      const bool acted = form.MouseMode() != mode || Buttons() != buttons;
      clicks.push_back(std::string(guard ? "guarded" : "user") + (acted ? " acted" : " idle"));
    };
  }
  form.Mouse_Chk[1].UserClick();  // Zoom In while Drag is down
  EXPECT_EQ(form.MouseMode(), kModeZoomIn);
  EXPECT_EQ(Buttons(), (std::vector<Integer>{0, 1, 0, 0}));
  // The setter's three changes (0 and 1 released, 1 pressed again) come first
  // and do nothing; then the user's click ends having switched the mode.
  EXPECT_EQ(clicks, (std::vector<std::string>{"guarded idle", "guarded idle", "guarded idle",
                                              "user acted"}));
}

TEST_F(MouseModes, CentreModeCentresOnTheLeftClickOnly) {
  form.MouseMode(kModeCenter);
  const Single width = form.WinXMax - form.WinXMin;
  form.FacePbx_MouseUp(kRightButton, 0, 4, 3);
  EXPECT_FLOAT_EQ(CentreX(), 0);

  form.FacePbx_MouseDown(kLeftButton, 0, 4, 3);
  form.FacePbx_MouseMove(kLeftButton, 0, 4, 3);
  EXPECT_FLOAT_EQ(CentreX(), 0);  // press and move do nothing here
  form.FacePbx_MouseUp(kLeftButton, 0, 4, 3);
  EXPECT_FLOAT_EQ(CentreX(), 4);
  EXPECT_FLOAT_EQ(CentreY(), 3);
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, width);
  EXPECT_TRUE(Traced("glCallList(1)"));
}

TEST_F(MouseModes, DragPansByTheOffsetFromTheFixedStartPoint) {
  form.MouseMode(kModeDrag);
  form.FacePbx_MouseDown(kLeftButton, 0, 1, 1);
  EXPECT_EQ(Icon(), CursorIconId(CursorKind::kDragging));
  EXPECT_FLOAT_EQ(form.DragStartX, 1);

  form.FacePbx_MouseMove(kLeftButton, 0, 3, 2);  // the picture follows: window moves by -(2, 1)
  EXPECT_FLOAT_EQ(CentreX(), -2);
  EXPECT_FLOAT_EQ(CentreY(), -1);
  EXPECT_FLOAT_EQ(form.DragStartX, 1);  // never updated during the drag
  form.FacePbx_MouseMove(kRightButton, 0, 9, 9);
  EXPECT_FLOAT_EQ(CentreX(), -2);

  form.FacePbx_MouseUp(kLeftButton, 0, 3, 2);
  EXPECT_EQ(Icon(), CursorIconId(CursorKind::kDrag));

  form.FacePbx_MouseDown(kLeftButton, 0, 0, 0);
  form.FacePbx_MouseUp(kRightButton, 0, 0, 0);  // any button restores the cursor
  EXPECT_EQ(Icon(), CursorIconId(CursorKind::kDrag));
}

TEST_F(MouseModes, RubberBandKeepsTheDrawingAreasShape) {
  form.MouseMode(kModeZoomIn);
  form.FacePbx_MouseDown(kLeftButton, 0, -2, 2);
  const auto swaps = SwapCount();
  form.FacePbx_MouseMove(kLeftButton, 0, 0, 1);
  form.FacePbx_MouseMove(kLeftButton, 0, 1, -1);
  ASSERT_EQ(band.boxes.size(), 2u);
  EXPECT_EQ(SwapCount(), swaps + 2);  // each move first puts the last picture back

  const auto& box = band.boxes.back();
  const double aspect = static_cast<double>(form.FacePbx.Width()) / form.FacePbx.Height();
  EXPECT_NEAR(std::fabs(box[2] - box[0]) / std::fabs(box[3] - box[1]), aspect, 1e-3);
  // It starts at the press, in FacePbx pixels; its height follows the mouse.
  EXPECT_NEAR(box[0], form.FacePbx.ToPixelX(-2), 1e-3);
  EXPECT_NEAR(box[1], form.FacePbx.ToPixelY(2), 1e-3);
  EXPECT_NEAR(box[3], form.FacePbx.ToPixelY(-1), 1e-3);

  // A horizontal move erases the band and draws none.
  form.FacePbx_MouseMove(kLeftButton, 0, 5, 2);
  EXPECT_EQ(band.boxes.size(), 2u);
  EXPECT_EQ(SwapCount(), swaps + 3);
  // Not the left button alone: nothing at all.
  form.FacePbx_MouseMove(kLeftButton | kRightButton, 0, 1, -1);
  EXPECT_EQ(SwapCount(), swaps + 3);
}

TEST_F(MouseModes, ZoomInRectangleIsTheSameWhicheverWayItIsDragged) {
  form.MouseMode(kModeZoomIn);
  const Integer zoom_before = form.Zoom_Scr.Value();
  Drag(-6, 4, 2, -2);
  const auto forward = Window();
  const Integer zoom_forward = form.Zoom_Scr.Value();
  EXPECT_LT(zoom_forward, zoom_before);
  // The rectangle's centre becomes the view's centre.
  EXPECT_NEAR(CentreX(), -2, 1e-5);
  EXPECT_NEAR(CentreY(), 1, 1e-5);

  form.View_FullRoom_Click();
  Drag(2, -2, -6, 4);
  EXPECT_EQ(Window(), forward);
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_forward);
}

TEST_F(MouseModes, ZoomRectangleOfNoSizeOrOtherButtonChangesNothing) {
  for (Integer mode : {kModeZoomIn, kModeZoomOut}) {
    form.MouseMode(mode);
    const auto window = Window();
    const Integer zoom = form.Zoom_Scr.Value();
    gl.Clear();
    Drag(3, 3, 3, 3);   // a click
    Drag(3, 3, 3, -2);  // no width
    Drag(3, 3, -2, 3);  // no height
    Drag(-5, -5, 5, 5, kRightButton);
    EXPECT_EQ(Window(), window);
    EXPECT_EQ(form.Zoom_Scr.Value(), zoom);
    EXPECT_FALSE(Traced("glCallList(1)"));
  }
}

TEST_F(MouseModes, ZoomOutShrinksThePresentViewIntoTheRectangle) {
  form.MouseMode(kModeZoomOut);
  const Integer zoom_before = form.Zoom_Scr.Value();
  const Single width = form.WinXMax - form.WinXMin;
  // A rectangle half as wide as the window, about its centre.
  Drag(-width / 4, -2, width / 4, 2);
  EXPECT_GT(form.Zoom_Scr.Value(), zoom_before);
  EXPECT_NEAR(CentreX(), 0, 1e-4);
  EXPECT_NEAR(CentreY(), 0, 1e-4);
  EXPECT_GT(form.WinXMax - form.WinXMin, 1.9 * width);
}

TEST_F(MouseModes, ZoomOutRectangleAsWideAsTheWindowIsARunTimeError) {
  form.MouseMode(kModeZoomOut);
  // Shifted by one, but exactly as wide: W - (x2 - x1) is 0.
  const Single x0 = form.WinXMin + 1, x1 = form.WinXMax + 1;
  form.FacePbx_MouseDown(kLeftButton, 0, x0, -1);
  const bool ran = RunHandler([&] { form.FacePbx_MouseUp(kLeftButton, 0, x1, 1); });
  EXPECT_FALSE(ran);
  ASSERT_EQ(messages.Texts().size(), 1u);
  EXPECT_EQ(messages.Texts()[0], ErrorText(kErrDivisionByZero));

  // The program goes on: the next command works.
  form.View_FullRoom_Click();
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, 20);
}

}  // namespace
}  // namespace quelo::testing
