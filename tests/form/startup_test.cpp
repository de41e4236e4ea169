// Start-up, the layout of the main window, painting and shutdown.
#include "form_fixture.h"

namespace quelo::testing {
namespace {

using Startup = FormTest;
using Layout = FormTest;

constexpr Long kTw = kTwipsPerPixel;

TEST(StartupOrder, FirstRedrawComesBeforeTheContextAndDrawsNothing) {
  ScopedTracingGL gl;
  FakeSurface surface;
  RecordingHost host;
  RecordingDialog dialog;
  RecordingBand band;
  Quelo_Form form{host, dialog, band};
  form.FacePbx.hDC(&surface);

  form.Form_Load();
  EXPECT_TRUE(surface.log.empty());  // no context yet, no swap reaches the surface
  EXPECT_GT(form.FacePbx.Width(), 0);
  form.FacePbx_Paint();  // not visible yet: nothing
  EXPECT_TRUE(surface.log.empty());

  form.Organize();
  EXPECT_EQ(host.calls.back(), "Show");
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(surface.contexts_alive(), 1);
  const auto swaps = std::count(surface.log.begin(), surface.log.end(), "SwapBuffers()");
  form.FacePbx_Paint();
  EXPECT_EQ(std::count(surface.log.begin(), surface.log.end(), "SwapBuffers()"), swaps + 1);
}

TEST_F(Startup, UnloadFreesTheListAndShutsTheControlDown) {
  ASSERT_NE(form.RenderList, 0);
  gl.Clear();
  form.Form_Unload();
  EXPECT_EQ(form.RenderList, 0);
  EXPECT_TRUE(Traced("glDeleteLists(1, 1)"));
  EXPECT_EQ(surface.contexts_alive(), 0);
  EXPECT_EQ(form.FaceGL.ExtHDC(), nullptr);
}

TEST_F(Layout, FramesTheDrawingAreaWithTheThreeScrollBars) {
  form.FormWidth = 800 * kTw;
  form.FormHeight = 600 * kTw;
  form.Form_Resize();

  // Under the 70-pixel toolbar, right of the 60-pixel mode strip, above the
  // 24-pixel status bar.
  EXPECT_EQ(form.Cont_Pbx.Left(), 60);
  EXPECT_EQ(form.Cont_Pbx.Top(), 70);
  EXPECT_EQ(form.Cont_Pbx.Width(), 740);
  EXPECT_EQ(form.Cont_Pbx.Height(), 506);

  const auto& zoom = form.Zoom_Scr.Bounds;
  const auto& ver = form.Ver_Scr.Bounds;
  const auto& hor = form.Hor_Scr.Bounds;
  EXPECT_EQ((std::array<Long, 4>{zoom.Left, zoom.Top, zoom.Width, zoom.Height}),
            (std::array<Long, 4>{0, 0, 17, 489}));
  EXPECT_EQ((std::array<Long, 4>{form.FacePbx.Left(), form.FacePbx.Top(), form.FacePbx.Width(),
                                 form.FacePbx.Height()}),
            (std::array<Long, 4>{17, 0, 706, 489}));
  EXPECT_EQ((std::array<Long, 4>{ver.Left, ver.Top, ver.Width, ver.Height}),
            (std::array<Long, 4>{723, 0, 17, 489}));
  EXPECT_EQ((std::array<Long, 4>{hor.Left, hor.Top, hor.Width, hor.Height}),
            (std::array<Long, 4>{17, 489, 706, 17}));
  EXPECT_EQ(form.Main_StBr.Bounds.Top, 576);
  EXPECT_EQ(form.Main_StBr.Bounds.Width, 800);

  // The layout ends in a repaint of the form and a redraw.
  EXPECT_EQ(host.calls.back(), "Refresh");
  EXPECT_TRUE(Traced("glViewport(0, 0, 706, 489)"));
}

TEST_F(Layout, MinimisedWindowKeepsEveryControlWhereItWas) {
  const Long width = form.FacePbx.Width();
  const Long height = form.FacePbx.Height();
  form.WindowState = 1;
  form.FormWidth = 0;
  form.FormHeight = 0;
  form.Form_Resize();
  EXPECT_EQ(form.FacePbx.Width(), width);
  EXPECT_EQ(form.FacePbx.Height(), height);
  EXPECT_EQ(host.Count("FormSizeChanged"), 0);

  form.WindowState = 0;
  form.FormWidth = 900 * kTw;
  form.FormHeight = 700 * kTw;
  form.Form_Resize();
  EXPECT_EQ(form.FacePbx.Width(), 900 - 60 - 34);
}

TEST_F(Layout, ResizeWhileBusyDoesNothing) {
  const Long width = form.FacePbx.Width();
  host.calls.clear();
  gl.Clear();
  form.Busy = true;
  form.FormWidth = 1000 * kTw;
  form.Form_Resize();
  form.Busy = false;
  EXPECT_EQ(form.FacePbx.Width(), width);
  EXPECT_TRUE(host.calls.empty());
  EXPECT_TRUE(gl.Lines().empty());
}

TEST_F(Layout, ResizeKeepsTheViewWindowAndRefitsItsShape) {
  UseRoomBox({-10, 10, -10, 10, 0, 0});
  const Single width = form.WinXMax - form.WinXMin;
  form.FormWidth = 1200 * kTw;
  form.Form_Resize();
  EXPECT_EQ(form.WinXMax - form.WinXMin, width);
  // The user scale has the drawing area's shape (y grows upwards).
  EXPECT_NEAR(form.FacePbx.ScaleWidth() / -form.FacePbx.ScaleHeight(),
              static_cast<double>(form.FacePbx.Width()) / form.FacePbx.Height(), 1e-4);
}

}  // namespace
}  // namespace quelo::testing
