// The menu and toolbar commands, the scroll bars, spin and the toggles.
#include <vector>

#include "form_fixture.h"

namespace quelo::testing {
namespace {

using Commands = FormTest;

TEST_F(Commands, ViewCommandsStepThroughTheirAnglesOnEachUse) {
  const struct {
    const char* name;
    Integer hor, ver;
    void (Quelo_Form::*command)();
    std::vector<int> hors;  // after each use
    int ver_after;
  } cases[] = {
      {"plan", 0, 0, &Quelo_Form::View_TopView_Click, {270, 180, 90, 0}, 90},
      {"plan off the quarter turns", 45, 0, &Quelo_Form::View_TopView_Click, {0}, 90},
      {"3d", 45, -20, &Quelo_Form::View_3DPerspective_Click, {60, 330, 240, 150, 60}, 30},
      {"side", 10, 30, &Quelo_Form::View_SideView_Click, {90, 270, 90}, 0},
      {"end", 10, 30, &Quelo_Form::View_CrossView_Click, {0, 180, 0}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    form.HorAng(c.hor);
    form.VerAng(c.ver);
    std::vector<int> hors;
    for (std::size_t i = 0; i < c.hors.size(); ++i) {
      (form.*c.command)();
      hors.push_back(form.HorAng());
    }
    EXPECT_EQ(hors, c.hors);
    EXPECT_EQ(form.VerAng(), c.ver_after);
  }
}

TEST_F(Commands, ToolbarViewButtonsAreCrosswiseAndFullResetsTheZoom) {
  // "x-View" looks along x: the end view; "y-View" the side view.
  const struct {
    std::size_t button;
    const char* caption;
    int hor, ver;
  } cases[] = {
      {0, "x-View", 180, 0}, {1, "y-View", 90, 0}, {2, "z-View", 270, 90}, {3, "3D-View", 60, 30}};
  for (const auto& c : cases) {
    EXPECT_EQ(form.View_Cbt[c.button].Caption, c.caption);
    form.HorAng(0);
    form.VerAng(30);
    form.View_Cbt[c.button].UserClick();
    EXPECT_EQ(form.HorAng(), c.hor) << c.caption;
    EXPECT_EQ(form.VerAng(), c.ver) << c.caption;
  }

  UseRoomBox({-10, 10, -4, 4, 0, 3});
  const Integer zoom_one = form.Zoom_Scr.Value();
  form.View_ZoomIn_Click();
  form.View_Cbt[4].UserClick();  // "Full"
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_one);
  form.View_ZoomIn_Click();
  form.View_SideView_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_one);
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, 8);  // the side view: y across
}

TEST_F(Commands, ZoomStepsKeepTheCentreAndAreDroppedWholeAtTheLimits) {
  UseRoomBox({-10, 10, -4, 4, 0, 3});
  form.HorAng(0);
  form.VerAng(90);
  form.View_FullRoom_Click();
  const Single full_width = form.WinXMax - form.WinXMin;
  form.ScaleShiftCenter32(-3, 2);
  gl.Clear();
  form.View_ZoomIn.UserClick();
  EXPECT_FLOAT_EQ(CentreX(), 3);
  EXPECT_FLOAT_EQ(CentreY(), -2);
  EXPECT_NEAR(form.WinXMax - form.WinXMin, full_width * form.GetOrthoZoom(), 1e-4);
  EXPECT_TRUE(Traced("glCallList(1)"));
  form.Zoom_Scr.UserDrag(100);  // the thumb: Scroll runs the same handler
  EXPECT_NEAR(form.WinXMax - form.WinXMin, full_width * form.GetOrthoZoom(), 1e-4);
  EXPECT_FLOAT_EQ(CentreX(), 3);

  const struct {
    Integer from;
    void (Quelo_Form::*command)();
    Integer to;
  } cases[] = {{10, &Quelo_Form::View_ZoomIn_Click, 10},
               {16, &Quelo_Form::View_ZoomIn_Click, 0},
               {250, &Quelo_Form::View_ZoomOut_Click, 250},
               {240, &Quelo_Form::View_ZoomOut_Click, 256}};
  for (const auto& c : cases) {
    form.Zoom_Scr.Value(c.from);
    (form.*c.command)();
    EXPECT_EQ(form.Zoom_Scr.Value(), c.to) << "from " << c.from;
  }
}

TEST_F(Commands, AngleBarsRedrawUnlessTheFormSetsThem) {
  form.Hor_Scr.UserArrow(+1);  // towards Max, which is 0 on the reversed bar
  EXPECT_EQ(form.HorAng(), 59);
  EXPECT_TRUE(Traced("glRotatef(301, 0, 0, 1)"));

  gl.Clear();
  form.Ver_Scr.UserDrag(45);
  EXPECT_TRUE(Traced("glRotatef(-45, 1, 0, 0)"));

  gl.Clear();
  form.HorAng(120);
  form.VerAng(10);
  EXPECT_TRUE(gl.Lines().empty());
}

TEST_F(Commands, SpinTogglesFromMenuAndCheckBoxAndTurnsByFive) {
  form.HorAng(345);
  form.Spin_Tmr.Tick();  // off: nothing
  EXPECT_EQ(form.HorAng(), 345);
  EXPECT_EQ(form.Spin_Tmr.Interval(), 1000);

  form.Utils_Spin.UserClick();
  EXPECT_TRUE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Chk.Value(), 1);
  EXPECT_TRUE(form.Utils_Spin.Checked());
  std::vector<int> angles;
  for (int i = 0; i < 3; ++i) {
    form.Spin_Tmr.Tick();
    angles.push_back(form.HorAng());
  }
  EXPECT_EQ(angles, (std::vector<int>{350, 355, 0}));
  EXPECT_EQ(form.VerAng(), 30);

  form.Spin_Chk.UserClick();
  EXPECT_FALSE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Chk.Value(), 0);
  EXPECT_FALSE(form.Utils_Spin.Checked());
}

TEST_F(Commands, AxesAndGridsRebuildTheListLightsOnlyRedraw) {
  form.Utils_LightsOn.UserClick();
  EXPECT_TRUE(form.Utils_LightsOn.Checked());
  EXPECT_FALSE(Traced("glGenLists(1)"));
  EXPECT_TRUE(Traced("glCallList(1)"));

  for (auto* toggle : {&form.Utils_AxesOn, &form.Utils_GridsOn}) {
    gl.Clear();
    toggle->UserClick();
    EXPECT_TRUE(toggle->Checked());
    EXPECT_TRUE(Traced("glGenLists(1)"));
  }
  form.Utils_GridsOn.UserClick();
  EXPECT_FALSE(form.Utils_GridsOn.Checked());
}

}  // namespace
}  // namespace quelo::testing
