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
    std::size_t button;
    Integer mode;
    CursorKind cursor;
  } cases[] = {{0, kModeDrag, CursorKind::kDrag},
               {1, kModeZoomIn, CursorKind::kZoom},
               {2, kModeZoomOut, CursorKind::kCram},
               {3, kModeCenter, CursorKind::kSpot}};
  for (const auto& c : cases) {
    SCOPED_TRACE(form.Mouse_Chk[c.button].Caption);
    form.Mouse_Chk[c.button].UserClick();
    EXPECT_EQ(form.MouseMode(), c.mode);
    EXPECT_EQ(Icon(), CursorIconId(c.cursor));
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(form.Mouse_Chk[i].Value(), i == c.button ? 1 : 0) << i;
    }
  }
}

TEST_F(MouseModes, CentreOnALeftClickAndDragFromAFixedStartPoint) {
  form.MouseMode(kModeCenter);
  const Single width = form.WinXMax - form.WinXMin;
  form.FacePbx_MouseUp(kRightButton, 0, 4, 3);
  form.FacePbx_MouseDown(kLeftButton, 0, 4, 3);
  form.FacePbx_MouseMove(kLeftButton, 0, 4, 3);
  EXPECT_FLOAT_EQ(CentreX(), 0);  // only the left release centres
  form.FacePbx_MouseUp(kLeftButton, 0, 4, 3);
  EXPECT_FLOAT_EQ(CentreX(), 4);
  EXPECT_FLOAT_EQ(CentreY(), 3);
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, width);
  EXPECT_TRUE(Traced("glCallList(1)"));

  form.View_FullRoom_Click();
  form.MouseMode(kModeDrag);
  form.FacePbx_MouseDown(kLeftButton, 0, 1, 1);
  EXPECT_EQ(Icon(), CursorIconId(CursorKind::kDragging));
  form.FacePbx_MouseMove(kLeftButton, 0, 3, 2);  // the picture follows: window moves by -(2, 1)
  EXPECT_FLOAT_EQ(CentreX(), -2);
  EXPECT_FLOAT_EQ(CentreY(), -1);
  EXPECT_FLOAT_EQ(form.DragStartX, 1);
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
  // From the press, in FacePbx pixels; the height follows the mouse.
  EXPECT_NEAR(box[0], form.FacePbx.ToPixelX(-2), 1e-3);
  EXPECT_NEAR(box[1], form.FacePbx.ToPixelY(2), 1e-3);
  EXPECT_NEAR(box[3], form.FacePbx.ToPixelY(-1), 1e-3);

  form.FacePbx_MouseMove(kLeftButton, 0, 5, 2);  // horizontal: erased, none drawn
  EXPECT_EQ(band.boxes.size(), 2u);
  EXPECT_EQ(SwapCount(), swaps + 3);
  form.FacePbx_MouseMove(kLeftButton | kRightButton, 0, 1, -1);
  EXPECT_EQ(SwapCount(), swaps + 3);
}

TEST_F(MouseModes, ZoomRectanglesZoomInOrOutAboutTheirCentre) {
  form.MouseMode(kModeZoomIn);
  const Integer zoom_full = form.Zoom_Scr.Value();
  const Single width = form.WinXMax - form.WinXMin;
  Drag(-6, 4, 2, -2);
  const auto forward = Window();
  const Integer zoom_in = form.Zoom_Scr.Value();
  EXPECT_LT(zoom_in, zoom_full);
  EXPECT_NEAR(CentreX(), -2, 1e-5);
  EXPECT_NEAR(CentreY(), 1, 1e-5);
  form.View_FullRoom_Click();
  Drag(2, -2, -6, 4);
  EXPECT_EQ(Window(), forward);
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_in);

  // Zoom out: the whole view shrinks into a rectangle half its width.
  form.View_FullRoom_Click();
  form.MouseMode(kModeZoomOut);
  Drag(-width / 4, -2, width / 4, 2);
  EXPECT_GT(form.Zoom_Scr.Value(), zoom_full);
  EXPECT_NEAR(CentreX(), 0, 1e-4);
  EXPECT_NEAR(CentreY(), 0, 1e-4);
  EXPECT_GT(form.WinXMax - form.WinXMin, 1.9 * width);
}

TEST_F(MouseModes, ZoomRectangleOfNoSizeOrOtherButtonChangesNothing) {
  for (Integer mode : {kModeZoomIn, kModeZoomOut}) {
    form.MouseMode(mode);
    const auto window = Window();
    const Integer zoom = form.Zoom_Scr.Value();
    gl.Clear();
    Drag(3, 3, 3, 3);
    Drag(3, 3, 3, -2);
    Drag(3, 3, -2, 3);
    Drag(-5, -5, 5, 5, kRightButton);
    EXPECT_EQ(Window(), window);
    EXPECT_EQ(form.Zoom_Scr.Value(), zoom);
    EXPECT_FALSE(Traced("glCallList(1)"));
  }
}

TEST_F(MouseModes, ZoomOutRectangleAsWideAsTheWindowIsARunTimeError) {
  form.MouseMode(kModeZoomOut);
  // Shifted by one, but exactly as wide: W - (x2 - x1) is 0.
  form.FacePbx_MouseDown(kLeftButton, 0, form.WinXMin + 1, -1);
  const Single x1 = form.WinXMax + 1;
  EXPECT_FALSE(RunHandler([&] { form.FacePbx_MouseUp(kLeftButton, 0, x1, 1); }));
  EXPECT_EQ(messages.Texts(), (std::vector<std::string>{ErrorText(kErrDivisionByZero)}));

  form.View_FullRoom_Click();  // the program goes on
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, 20);
}

}  // namespace
}  // namespace quelo::testing
