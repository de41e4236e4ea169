// The menu and toolbar commands, the scroll bars, spin and the toggles.
#include <cmath>
#include <vector>

#include "form_fixture.h"

namespace quelo::testing {
namespace {

using Commands = FormTest;

std::vector<int> Repeat(int times, Quelo_Form& form, void (Quelo_Form::*command)()) {
  std::vector<int> angles;
  for (int i = 0; i < times; ++i) {
    (form.*command)();
    angles.push_back(form.HorAng());
  }
  return angles;
}

TEST_F(Commands, PlanViewTurnsInQuarterTurnsFromZero) {
  form.HorAng(0);
  EXPECT_EQ(Repeat(4, form, &Quelo_Form::View_TopView_Click), (std::vector<int>{270, 180, 90, 0}));
  EXPECT_EQ(form.VerAng(), 90);
  form.HorAng(45);
  form.View_TopView_Click();
  EXPECT_EQ(form.HorAng(), 0);
}

TEST_F(Commands, PerspectiveViewWalksRoundTheSceneAtThirtyDegrees) {
  form.HorAng(45);
  form.VerAng(-20);
  form.View_3DPerspective_Click();
  EXPECT_EQ(form.HorAng(), 60);
  EXPECT_EQ(form.VerAng(), 30);
  EXPECT_EQ(Repeat(4, form, &Quelo_Form::View_3DPerspective_Click),
            (std::vector<int>{330, 240, 150, 60}));
}

TEST_F(Commands, SideAndEndViewsLookFromTheOtherSideOnSecondUse) {
  form.HorAng(10);
  form.View_SideView_Click();
  EXPECT_EQ(form.HorAng(), 90);
  EXPECT_EQ(form.VerAng(), 0);
  form.View_SideView_Click();
  EXPECT_EQ(form.HorAng(), 270);
  form.View_CrossView_Click();
  EXPECT_EQ(form.HorAng(), 0);
  form.View_CrossView_Click();
  EXPECT_EQ(form.HorAng(), 180);
}

TEST_F(Commands, ToolbarViewButtonsAreCrosswise) {
  ASSERT_EQ(form.View_Cbt[0].Caption, "x-View");
  form.HorAng(0);
  form.VerAng(30);
  form.View_Cbt[0].UserClick();  // "x-View" runs the end view
  EXPECT_EQ(form.HorAng(), 180);
  EXPECT_EQ(form.VerAng(), 0);

  ASSERT_EQ(form.View_Cbt[1].Caption, "y-View");
  form.HorAng(0);
  form.View_Cbt[1].UserClick();  // "y-View" runs the side view
  EXPECT_EQ(form.HorAng(), 90);

  form.View_Cbt[2].UserClick();
  EXPECT_EQ(form.VerAng(), 90);
  form.View_Cbt[3].UserClick();
  EXPECT_EQ(form.VerAng(), 30);

  const auto h = form.HorAng(), v = form.VerAng();
  form.View_Cbt_Click(7);  // no such button
  EXPECT_EQ(form.HorAng(), h);
  EXPECT_EQ(form.VerAng(), v);
}

TEST_F(Commands, ViewCommandsFitTheWholeSceneAtZoomOne) {
  UseRoomBox({-10, 10, -4, 4, 0, 3});
  const Integer zoom_one = form.Zoom_Scr.Value();
  form.View_ZoomIn_Click();
  form.View_ZoomIn_Click();
  ASSERT_EQ(form.Zoom_Scr.Value(), zoom_one - 32);

  form.View_Cbt[4].UserClick();  // "Full"
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_one);
  form.View_ZoomIn_Click();
  form.View_SideView_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), zoom_one);
  // The full box of the side view: y across, z upwards.
  EXPECT_FLOAT_EQ(form.WinXMax - form.WinXMin, 8);
}

TEST_F(Commands, ZoomStepsAreDroppedWholeAtTheLimits) {
  form.Zoom_Scr.Value(10);
  form.View_ZoomIn_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), 10);
  form.Zoom_Scr.Value(16);
  form.View_ZoomIn_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), 0);

  form.Zoom_Scr.Value(250);
  form.View_ZoomOut_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), 250);
  form.Zoom_Scr.Value(240);
  form.View_ZoomOut_Click();
  EXPECT_EQ(form.Zoom_Scr.Value(), 256);

  // Through the menu items and their shortcuts' items.
  form.View_ZoomIn.UserClick();
  EXPECT_EQ(form.Zoom_Scr.Value(), 240);
}

TEST_F(Commands, ZoomBarKeepsTheCentreAndScalesTheFullBox) {
  UseRoomBox({-10, 10, -4, 4, 0, 3});
  form.HorAng(0);
  form.VerAng(90);
  form.View_FullRoom_Click();
  const Single full_width = form.WinXMax - form.WinXMin;
  form.ScaleShiftCenter32(-3, 2);  // the picture moved: the centre is now (3, -2)
  ASSERT_FLOAT_EQ(CentreX(), 3);
  ASSERT_FLOAT_EQ(CentreY(), -2);

  gl.Clear();
  form.View_ZoomIn_Click();
  EXPECT_FLOAT_EQ(CentreX(), 3);
  EXPECT_FLOAT_EQ(CentreY(), -2);
  EXPECT_NEAR(form.WinXMax - form.WinXMin, full_width * form.GetOrthoZoom(), 1e-4);
  EXPECT_TRUE(Traced("glCallList(1)"));  // and it redrew

  // The thumb dragged: Scroll runs the same handler.
  form.Zoom_Scr.UserDrag(100);
  EXPECT_NEAR(form.WinXMax - form.WinXMin, full_width * form.GetOrthoZoom(), 1e-4);
  EXPECT_FLOAT_EQ(CentreX(), 3);
}

TEST_F(Commands, AngleBarsRedrawUnlessTheFormSetsThem) {
  gl.Clear();
  form.Hor_Scr.UserArrow(+1);  // towards Max, which is 0 on the reversed bar
  EXPECT_EQ(form.HorAng(), 59);
  EXPECT_TRUE(Traced("glRotatef(301, 0, 0, 1)"));

  gl.Clear();
  form.Ver_Scr.UserDrag(45);
  EXPECT_TRUE(Traced("glRotatef(-45, 1, 0, 0)"));

  gl.Clear();
  form.HorAng(120);  // the property sets Busy around the change
  form.VerAng(10);
  EXPECT_TRUE(gl.Lines().empty());
}

TEST_F(Commands, SpinTogglesFromMenuAndCheckBoxAlike) {
  EXPECT_FALSE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Tmr.Interval(), 1000);

  form.Utils_Spin.UserClick();
  EXPECT_TRUE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Chk.Value(), 1);
  EXPECT_TRUE(form.Utils_Spin.Checked());

  form.Spin_Chk.UserClick();  // the box is released by the user
  EXPECT_FALSE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Chk.Value(), 0);
  EXPECT_FALSE(form.Utils_Spin.Checked());

  form.Spin_Chk.UserClick();
  EXPECT_TRUE(form.Spin_Tmr.Enabled());
  EXPECT_TRUE(form.Utils_Spin.Checked());
  form.Utils_Spin.UserClick();
  EXPECT_FALSE(form.Spin_Tmr.Enabled());
  EXPECT_EQ(form.Spin_Chk.Value(), 0);
}

TEST_F(Commands, SpinTicksTurnByFiveAndWrapToZero) {
  form.HorAng(345);
  form.Spin_Tmr.Tick();  // off: nothing
  EXPECT_EQ(form.HorAng(), 345);

  form.Utils_Spin_Click();
  std::vector<int> angles;
  for (int i = 0; i < 3; ++i) {
    form.Spin_Tmr.Tick();
    angles.push_back(form.HorAng());
  }
  EXPECT_EQ(angles, (std::vector<int>{350, 355, 0}));
  EXPECT_EQ(form.VerAng(), 30);
}

TEST_F(Commands, AxesAndGridsRebuildTheListLightsOnlyRedraw) {
  form.Utils_LightsOn.UserClick();
  EXPECT_TRUE(form.Utils_LightsOn.Checked());
  EXPECT_FALSE(Traced("glGenLists(1)"));
  EXPECT_TRUE(Traced("glCallList(1)"));

  gl.Clear();
  form.Utils_AxesOn.UserClick();
  EXPECT_TRUE(form.Utils_AxesOn.Checked());
  EXPECT_TRUE(Traced("glDeleteLists(1, 1)"));
  EXPECT_TRUE(Traced("glGenLists(1)"));

  gl.Clear();
  form.Utils_GridsOn.UserClick();
  form.Utils_GridsOn.UserClick();
  EXPECT_FALSE(form.Utils_GridsOn.Checked());
  EXPECT_TRUE(Traced("glGenLists(1)"));
}

}  // namespace
}  // namespace quelo::testing
