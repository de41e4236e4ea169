// The view maths and the redraw, driven through the control models and the
// tracing GL table: no display, no context.
#include "view/view_form.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "support/fake_surface.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using quelo::testing::ErrorOf;

long Count(const std::vector<std::string>& lines, const std::string& prefix) {
  return std::count_if(lines.begin(), lines.end(),
                       [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
}

// A one-view scene: the edges of the box (0..40, 0..2, 0..1) as lines, and
// the scene's own x axis to 50 in block 0.
void WriteBoxScene(const std::string& path) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  w.AddInfoChunk(1, 1, SceneInfo{});
  w.BeginGlChunk(1, 1);
  WriteBlockBeginRecord(*f, 0);
  WriteBeginRecord(*f, GL_LINES);
  WriteVertex3fRecord(*f, 0, 0, 0);
  WriteVertex3fRecord(*f, 50, 0, 0);
  WriteEndRecord(*f);
  WriteBlockEndRecord(*f, 0);
  WriteBeginRecord(*f, GL_LINES);
  WriteVertex3fRecord(*f, 0, 0, 0);
  WriteVertex3fRecord(*f, 40, 2, 1);
  WriteEndRecord(*f);
  w.EndGlChunk();
  w.Finish();
}

class ViewTest : public ::testing::Test {
 protected:
  void SetUp() override { view.FacePbx.Move(0, 0, 800, 600); }

  void SetWindow(Single x0, Single x1, Single y0, Single y1) {
    view.WinXMin = x0;
    view.WinXMax = x1;
    view.WinYMin = y0;
    view.WinYMax = y1;
  }
  // The visible rectangle, to within float rounding of the rotations.
  void ExpectWindow(double x0, double x1, double y0, double y1) {
    EXPECT_NEAR(view.WinXMin, x0, 1e-5);
    EXPECT_NEAR(view.WinXMax, x1, 1e-5);
    EXPECT_NEAR(view.WinYMin, y0, 1e-5);
    EXPECT_NEAR(view.WinYMax, y1, 1e-5);
  }

  QueloView view;
};

TEST_F(ViewTest, ZoomBarIsGeometricAndSetOrthoZoomInvertsItWithinTheEnds) {
  view.Zoom_Scr.Value(0);
  EXPECT_FLOAT_EQ(view.GetOrthoZoom(), 0.00216f);
  view.Zoom_Scr.Value(256);
  EXPECT_FLOAT_EQ(view.GetOrthoZoom(), 5.4f);
  view.Zoom_Scr.Value(128);
  EXPECT_NEAR(view.GetOrthoZoom(), std::sqrt(0.00216 * 5.4), 1e-6);
  for (int v = 0; v <= 256; ++v) {
    view.Zoom_Scr.Value(static_cast<Integer>(v));
    view.SetOrthoZoom(view.GetOrthoZoom());
    ASSERT_EQ(view.Zoom_Scr.Value(), v);
  }
  view.SetOrthoZoom(100.0f);
  EXPECT_EQ(view.Zoom_Scr.Value(), 256);
  view.SetOrthoZoom(0.0001f);
  EXPECT_EQ(view.Zoom_Scr.Value(), 0);
  view.SetOrthoZoom(1.0f);
  EXPECT_EQ(view.Zoom_Scr.Value(), 201);  // 256 * ln(1 / 0.00216) / ln(2500)
}

TEST_F(ViewTest, AngleSettersHoldBusyWhileTheBarMoves) {
  std::vector<bool> busy_seen;
  view.Hor_Scr.Change = [&] { busy_seen.push_back(view.Busy); };
  view.Ver_Scr.Change = [&] { busy_seen.push_back(view.Busy); };
  view.HorAng(90);
  view.VerAng(-90);
  EXPECT_EQ(busy_seen, (std::vector<bool>{true, true}));
  EXPECT_EQ(ErrorOf([&] { view.VerAng(91); }), kErrInvalidPropertyValue);
  EXPECT_FALSE(view.Busy);  // an error does not leave the form deaf
}

TEST_F(ViewTest, RotationInvertsByItsTransposeAndTurnsTheRoomIntoTheFullBox) {
  view.HorAng(0);
  view.VerAng(0);
  view.prv_BuildViewRot();
  std::array<Single, 3> p{2, 3, 4};
  Long status = 7;
  view.prv_RotatePoint(p, 1, status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(p, (std::array<Single, 3>{2, 4, -3}));
  view.HorAng(60);
  view.VerAng(30);
  view.prv_BuildViewRot();
  EXPECT_NEAR(view.ViewRot[1][2], std::sqrt(3.0) / 2, 1e-6);
  EXPECT_NEAR(view.ViewRot[2][3], std::sqrt(3.0) / 2, 1e-6);
  p = {-7, 2.5f, 11};
  view.prv_RotatePoint(p, 1, status);
  view.prv_RotatePoint(p, -1, status);
  EXPECT_NEAR(p[0], -7, 1e-5);
  EXPECT_NEAR(p[1], 2.5, 1e-5);
  EXPECT_NEAR(p[2], 11, 1e-5);

  view.RoomBox = {-2, 5, -1, 1, 0, 3};
  view.HorAng(90);  // a quarter turn shows the y extent across
  view.VerAng(0);
  view.prv_CompViewBox();
  ExpectWindow(-1, 1, 0, 3);
  view.HorAng(0);  // looking down: x and y
  view.VerAng(90);
  view.prv_CompViewBox();
  ExpectWindow(-2, 5, -1, 1);
}

TEST_F(ViewTest, FittingWidensTheShortSideAddsTheMarginAndFollowsTheCentre) {
  SetWindow(0, 0, 0, 0);  // a point gets one unit each way
  view.ScaleRoom32();
  ExpectWindow(-1, 1, -1, 1);
  // 800 x 600 widens x to 4/3, then the 20 % margin; y grows upwards.
  EXPECT_EQ(view.FacePbx.ScaleMode(), kScaleUser);
  EXPECT_NEAR(view.FacePbx.ScaleLeft(), -1.6, 1e-6);
  EXPECT_NEAR(view.FacePbx.ScaleWidth(), 3.2, 1e-6);
  EXPECT_NEAR(view.FacePbx.ScaleTop(), 1.2, 1e-6);
  EXPECT_NEAR(view.FacePbx.ScaleHeight(), -2.4, 1e-6);

  SetWindow(-1, 1, -10, 10);  // too tall: x widened to 4/3 x 10
  view.ScaleRoom32();
  EXPECT_NEAR(view.FacePbx.ScaleWidth(), 2.4 * 10 * 4 / 3, 1e-4);
  EXPECT_NEAR(view.FacePbx.ScaleHeight(), -24, 1e-5);
  SetWindow(-10, 10, -1, 1);  // too wide: y widened to 10 / (4/3)
  view.ScaleRoom32();
  EXPECT_NEAR(view.FacePbx.ScaleWidth(), 24, 1e-5);
  EXPECT_NEAR(view.FacePbx.ScaleHeight(), -2.4 * 7.5, 1e-5);
  EXPECT_NEAR(view.FacePbx.ToScaleY(0), 9, 1e-5);  // mouse positions in scene units

  SetWindow(-1, 1, -2, 2);
  view.ScaleSetCenter32(10, 20);
  ExpectWindow(9, 11, 18, 22);
  EXPECT_NEAR(view.FacePbx.ToScaleX(400), 10, 1e-4);
  view.ScaleShiftCenter32(1, -2);  // the window moves against the offset
  ExpectWindow(8, 10, 20, 24);
  EXPECT_NEAR(view.FacePbx.ToScaleY(300), 22, 1e-4);
}

TEST_F(ViewTest, InitViewSetsViewportProjectionAndRotationInOrder) {
  SetWindow(-10, 10, -1, 1);
  ScopedTracingGL trace;
  view.InitView();
  EXPECT_EQ(trace.Lines(), (std::vector<std::string>{
                               "glClearColor(1, 1, 1, 0)",
                               "glClear(GL_DEPTH_BUFFER_BIT|GL_COLOR_BUFFER_BIT)",
                               "glViewport(0, 0, 800, 600)",
                               "glLoadIdentity()",
                               "glOrtho(-12, 12, -9, 9, -10000, 10000)",
                               "glTranslatef(0, 0, 0)",
                               "glRotatef(-60, 1, 0, 0)",
                               "glRotatef(300, 0, 0, 1)",
                               "glEnable(GL_DEPTH_TEST)",
                           }));
}

TEST_F(ViewTest, ResetFitsTheTurnedSceneAtZoomOneAndTheBarFollowsLaterTurns) {
  view.RoomBox = {0, 100, 0, 2, 0, 1};
  view.HorAng(150);
  view.VerAng(10);
  SetWindow(1, 2, 1, 2);
  view.Zoom_Scr.Value(40);
  ScopedTracingGL trace;
  view.RenderIt(false, true);
  EXPECT_EQ(view.Zoom_Scr.Value(), 201);
  EXPECT_FALSE(view.Busy);
  Single x0, x1, y0, y1;
  view.prv_CompFullBox(x0, x1, y0, y1);
  EXPECT_FLOAT_EQ(view.WinXMin, x0);
  EXPECT_FLOAT_EQ(view.WinXMax, x1);
  EXPECT_NEAR(view.FacePbx.ScaleWidth(), std::max(1.2 * (x1 - x0), 1.2 * (y1 - y0) * 4 / 3), 1e-4);

  view.HorAng(0);
  view.VerAng(0);
  view.RenderIt(false, true);
  view.HorAng(90);
  view.RenderIt(false, false);
  // From the side the box is 2 wide instead of 100: the zoom shrinks by 50,
  // the square root of the bar's range, so by half its 256 steps.
  EXPECT_NEAR(double{view.FullXRange[1]} - view.FullXRange[0], 2, 1e-4);
  EXPECT_EQ(view.Zoom_Scr.Value(), 201 - 128);
  EXPECT_NEAR(view.WinXMax - view.WinXMin, 2 * view.GetOrthoZoom(), 1e-4);

  int zoom_changes = 0;  // a plain redraw at the same angles leaves the bar
  view.Zoom_Scr.Change = [&] { ++zoom_changes; };
  view.RenderIt(false, false);
  EXPECT_EQ(zoom_changes, 0);
}

TEST_F(ViewTest, ReloadReadsTheFileWithTheMenuSwitchesAPlainRedrawCallsTheList) {
  testing::TempDir dir;
  view.SceneFileName = dir.File("box.qgl");
  WriteBoxScene(view.SceneFileName);
  view.HorAng(0);
  view.VerAng(0);
  ScopedTracingGL trace;
  view.RenderIt(true, true);
  // The scene's own axes are off: the box alone makes the room.
  EXPECT_EQ(view.RoomBox, (std::array<Single, 6>{0, 40, 0, 2, 0, 1}));
  ExpectWindow(0, 40, 0, 1);
  EXPECT_EQ(view.Zoom_Scr.Value(), 201);
  view.Utils_AxesOn.Checked(true);
  view.RenderIt(true, true);
  EXPECT_EQ(view.RoomBox[1], 50);
  EXPECT_EQ(Count(trace.Lines(), "glNewList("), 2);
  EXPECT_EQ(Count(trace.Lines(), "glDeleteLists(1, 1)"), 1);

  std::filesystem::remove(view.SceneFileName);  // a plain redraw does not read it
  trace.Clear();
  view.RenderIt(false, false);
  const std::vector<std::string> lines = trace.Lines();
  const auto first = std::find(lines.begin(), lines.end(), "glDisable(GL_LIGHTING)");
  ASSERT_NE(first, lines.end());
  std::vector<std::string> expected{"glCallList(" + std::to_string(view.RenderList) + ")"};
  {
    ScopedTracingGL axes;
    view.RenderAxes();
    for (const auto& l : axes.Lines()) expected.push_back(l);
  }
  // The swap of a control without a surface reaches no GL call.
  EXPECT_EQ(std::vector<std::string>(first + 1, lines.end()), expected);
}

TEST_F(ViewTest, GlStartRunsOnceOnTheDrawingAreasSurface) {
  FakeSurface surface;
  view.FacePbx.hDC(&surface);
  view.FacePbx.AutoRedraw(true);
  ScopedTracingGL trace;
  view.prv_InitGL();
  EXPECT_EQ(view.FaceGL.ExtHDC(), &surface);
  EXPECT_FALSE(view.FacePbx.AutoRedraw());
  EXPECT_EQ(std::count(surface.log.begin(), surface.log.end(), "CreateContext()"), 1);
  // The font lists exist before any scene text: "HALLO" was drawn.
  EXPECT_NE(view.FaceGL.FontListBase, 0);
  EXPECT_EQ(Count(trace.Lines(), "glRasterPos3f(0, 0, 0)"), 1);

  const auto log_size = surface.log.size();
  trace.Clear();
  view.prv_InitGL();
  EXPECT_EQ(surface.log.size(), log_size);
  EXPECT_TRUE(trace.Lines().empty());
  view.FaceGL.auxShutDown();
}

}  // namespace
}  // namespace quelo
