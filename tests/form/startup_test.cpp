// Start-up, the layout of the main window, painting and shutdown.
#include "form_fixture.h"

namespace quelo::testing {
namespace {

using Layout = FormTest;

constexpr Long kTw = kTwipsPerPixel;

TEST(Startup, FirstRedrawComesBeforeTheContextAndUnloadShutsItDown) {
  ScopedTracingGL gl;
  FakeSurface surface;
  RecordingHost host;
  RecordingDialog dialog;
  RecordingBand band;
  Quelo_Form form{host, dialog, band};
  form.FacePbx.hDC(&surface);

  form.Form_Load();
  EXPECT_GT(form.FacePbx.Width(), 0);
  gl.Clear();
  form.FacePbx_Paint();  // not visible yet: nothing drawn, no context
  EXPECT_TRUE(gl.Lines().empty());
  EXPECT_TRUE(surface.log.empty());

  form.Organize();
  EXPECT_EQ(host.calls.back(), "Show");
  EXPECT_EQ(surface.contexts_alive(), 1);
  const auto swaps = std::count(surface.log.begin(), surface.log.end(), "SwapBuffers()");
  form.FacePbx_Paint();
  EXPECT_EQ(std::count(surface.log.begin(), surface.log.end(), "SwapBuffers()"), swaps + 1);

  ASSERT_NE(form.RenderList, 0);
  gl.Clear();
  form.Form_Unload();
  EXPECT_EQ(form.RenderList, 0);
  EXPECT_EQ(gl.Lines().front(), "glDeleteLists(1, 1)");
  EXPECT_EQ(surface.contexts_alive(), 0);
}

TEST_F(Layout, FramesTheDrawingAreaWithTheThreeScrollBars) {
  form.FormWidth = 800 * kTw;
  form.FormHeight = 600 * kTw;
  form.Form_Resize();

  // Under the 70-pixel toolbar, right of the 60-pixel mode strip, above the
  // 24-pixel status bar.
  const auto& face = form.FacePbx;
  const auto& zoom = form.Zoom_Scr.Bounds;
  const auto& ver = form.Ver_Scr.Bounds;
  const auto& hor = form.Hor_Scr.Bounds;
  using Box = std::array<Long, 4>;
  EXPECT_EQ((Box{form.Cont_Pbx.Left(), form.Cont_Pbx.Top(), form.Cont_Pbx.Width(),
                 form.Cont_Pbx.Height()}),
            (Box{60, 70, 740, 506}));
  EXPECT_EQ((Box{zoom.Left, zoom.Top, zoom.Width, zoom.Height}), (Box{0, 0, 17, 489}));
  EXPECT_EQ((Box{face.Left(), face.Top(), face.Width(), face.Height()}), (Box{17, 0, 706, 489}));
  EXPECT_EQ((Box{ver.Left, ver.Top, ver.Width, ver.Height}), (Box{723, 0, 17, 489}));
  EXPECT_EQ((Box{hor.Left, hor.Top, hor.Width, hor.Height}), (Box{17, 489, 706, 17}));
  EXPECT_EQ(form.Main_StBr.Bounds.Top, 576);
  EXPECT_EQ(host.calls.back(), "Refresh");
  EXPECT_TRUE(Traced("glViewport(0, 0, 706, 489)"));
}

TEST_F(Layout, ResizeSkipsMinimisedOrBusyWindowsAndKeepsTheViewWidth) {
  const Long width = form.FacePbx.Width();
  form.WindowState = 1;
  form.FormWidth = 0;
  form.FormHeight = 0;
  form.Form_Resize();
  EXPECT_EQ(form.FacePbx.Width(), width);

  form.WindowState = 0;
  form.FormHeight = 700 * kTw;
  form.Busy = true;
  form.FormWidth = 1000 * kTw;
  host.calls.clear();
  gl.Clear();
  form.Form_Resize();
  form.Busy = false;
  EXPECT_EQ(form.FacePbx.Width(), width);
  EXPECT_TRUE(host.calls.empty());
  EXPECT_TRUE(gl.Lines().empty());

  UseRoomBox({-10, 10, -10, 10, 0, 0});
  const Single view_width = form.WinXMax - form.WinXMin;
  form.Form_Resize();
  EXPECT_EQ(form.FacePbx.Width(), 1000 - 60 - 34);
  EXPECT_EQ(form.WinXMax - form.WinXMin, view_width);
  // The user scale takes the new shape (y grows upwards).
  EXPECT_NEAR(form.FacePbx.ScaleWidth() / -form.FacePbx.ScaleHeight(),
              static_cast<double>(form.FacePbx.Width()) / form.FacePbx.Height(), 1e-4);
}

}  // namespace
}  // namespace quelo::testing
