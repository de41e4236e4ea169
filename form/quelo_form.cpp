#include "form/quelo_form.h"

#include <cmath>
#include <cstdlib>
#include <exception>
#include <utility>

#include "common/messages.h"
#include "common/runtime_error.h"

namespace quelo {
namespace {

// Single-precision steps that raise instead of giving infinities. Two floats
// combine exactly (or correctly rounded) in double, so one rounding to float
// gives the float result.
Single Add(Single a, Single b) {
  return CheckSingle(static_cast<double>(a) + b);
}
Single Sub(Single a, Single b) {
  return CheckSingle(static_cast<double>(a) - b);
}
Single Mul(Single a, Single b) {
  return CheckSingle(static_cast<double>(a) * b);
}

// The cursor picture of each mouse mode 0..4.
constexpr CursorKind kModeCursor[5] = {CursorKind::kPick, CursorKind::kSpot, CursorKind::kDrag,
                                       CursorKind::kZoom, CursorKind::kCram};
// The button that shows each mode 1..4 pressed (index 0 unused).
constexpr int kModeButton[5] = {-1, 3, 0, 1, 2};

void SetBounds(ControlBounds& b, Long left, Long top, Long width, Long height) {
  b.Left = left;
  b.Top = top;
  b.Width = width;
  b.Height = height;
}

}  // namespace

Quelo_Form::Quelo_Form(FormHost& host, CommonDialog& dialog, BandDrawer& band)
    : CommonDialog1(dialog), host_(host), band_(band) {
  using namespace form_design;
  // Design values the layout does not touch.
  Menu_Pbx.Move(0, 0, kToolbarWidth, kToolbarHeight);
  Menu2_Pbx.Move(0, kToolbarHeight, kToolStripWidth, kToolStripHeight);
  SetBounds(Open_Cbt.Bounds, kToolbarLefts[0], kButtonTop, kButtonWidth, kButtonHeight);
  for (std::size_t i = 0; i < View_Cbt.size(); ++i) {
    SetBounds(View_Cbt[i].Bounds, kToolbarLefts[i + 1], kButtonTop, kButtonWidth, kButtonHeight);
  }
  SetBounds(Spin_Chk.Bounds, kToolbarLefts[6], kButtonTop, kButtonWidth, kButtonHeight);
  Spin_Chk.Caption = "Spin";
  Spin_Chk.ToolTipText = "Spin View";
  const char* mode_captions[4][2] = {{"Drag", "Drag Image by Mouse"},
                                     {"Zoom In", "Zoom In by Mouse"},
                                     {"Zoom Out", "Zoom Out by Mouse"},
                                     {"Center", "Center Image by Mouse"}};
  for (std::size_t i = 0; i < Mouse_Chk.size(); ++i) {
    Mouse_Chk[i].Caption = mode_captions[i][0];
    Mouse_Chk[i].ToolTipText = mode_captions[i][1];
    SetBounds(Mouse_Chk[i].Bounds, 0, kModeButtonTops[i], kButtonWidth, kButtonHeight);
  }
  Zoom_Scr.Bounds.Width = kScrollBarThickness;
  Ver_Scr.Bounds.Width = kScrollBarThickness;
  Hor_Scr.Bounds.Height = kScrollBarThickness;
  Main_StBr.Bounds.Height = kStatusBarHeight;
  Spin_Tmr.Enabled(false);
  Spin_Tmr.Interval(1000);
  FormWidth = kStartWidth * kTwipsPerPixel;
  FormHeight = kStartHeight * kTwipsPerPixel;
  WireEvents();
}

Quelo_Form::~Quelo_Form() = default;

void Quelo_Form::WireEvents() {
  File_OpenGLFile.Click = [this] { File_OpenGLFile_Click(); };
  File_Exit.Click = [this] { File_Exit_Click(); };
  View_3DPerspective.Click = [this] { View_3DPerspective_Click(); };
  View_SideView.Click = [this] { View_SideView_Click(); };
  View_CrossView.Click = [this] { View_CrossView_Click(); };
  View_TopView.Click = [this] { View_TopView_Click(); };
  View_Redraw.Click = [this] { View_Redraw_Click(); };
  View_FullRoom.Click = [this] { View_FullRoom_Click(); };
  View_ZoomIn.Click = [this] { View_ZoomIn_Click(); };
  View_ZoomOut.Click = [this] { View_ZoomOut_Click(); };
  Utils_LightsOn.Click = [this] { Utils_LightsOn_Click(); };
  Utils_AxesOn.Click = [this] { Utils_AxesOn_Click(); };
  Utils_GridsOn.Click = [this] { Utils_GridsOn_Click(); };
  Utils_Spin.Click = [this] { Utils_Spin_Click(); };
  Help_About.Click = [this] { Help_About_Click(); };

  Open_Cbt.Click = [this] { Open_Cbt_Click(); };
  for (std::size_t i = 0; i < View_Cbt.size(); ++i) {
    View_Cbt[i].Click = [this, i] { View_Cbt_Click(static_cast<Integer>(i)); };
  }
  Spin_Chk.Click = [this] { Spin_Chk_Click(); };
  for (std::size_t i = 0; i < Mouse_Chk.size(); ++i) {
    Mouse_Chk[i].Click = [this, i] { Mouse_Chk_Click(static_cast<Integer>(i)); };
  }
  Spin_Tmr.Timer = [this] { Spin_Tmr_Timer(); };

  Hor_Scr.Change = [this] { Hor_Scr_Change(); };
  Hor_Scr.Scroll = [this] { Hor_Scr_Scroll(); };
  Ver_Scr.Change = [this] { Ver_Scr_Change(); };
  Ver_Scr.Scroll = [this] { Ver_Scr_Scroll(); };
  Zoom_Scr.Change = [this] { Zoom_Scr_Change(); };
  Zoom_Scr.Scroll = [this] { Zoom_Scr_Scroll(); };
}

std::vector<MenuLine> Quelo_Form::MenuBar() {
  using S = MenuShortcut;
  return {
      {"File_Menu", "&File", "File_OpenGLFile", &File_OpenGLFile, S::kCtrlO},
      {"File_Menu", "&File", "File_s1", nullptr, S::kNone},
      {"File_Menu", "&File", "File_Exit", &File_Exit, S::kNone},
      {"View_Menu", "&View", "View_3DPerspective", &View_3DPerspective, S::kNone},
      {"View_Menu", "&View", "View_SideView", &View_SideView, S::kNone},
      {"View_Menu", "&View", "View_CrossView", &View_CrossView, S::kNone},
      {"View_Menu", "&View", "View_TopView", &View_TopView, S::kNone},
      {"View_Menu", "&View", "View_Line1", nullptr, S::kNone},
      {"View_Menu", "&View", "View_Redraw", &View_Redraw, S::kNone},
      {"View_Menu", "&View", "View_FullRoom", &View_FullRoom, S::kNone},
      {"View_Menu", "&View", "View_ZoomIn", &View_ZoomIn, S::kF11},
      {"View_Menu", "&View", "View_ZoomOut", &View_ZoomOut, S::kF12},
      {"Utils_Menu", "&Utilities", "Utils_LightsOn", &Utils_LightsOn, S::kNone, true},
      {"Utils_Menu", "&Utilities", "Utils_s0", nullptr, S::kNone},
      {"Utils_Menu", "&Utilities", "Utils_AxesOn", &Utils_AxesOn, S::kNone, true},
      {"Utils_Menu", "&Utilities", "Utils_GridsOn", &Utils_GridsOn, S::kNone, true},
      {"Utils_Menu", "&Utilities", "Utils_s1", nullptr, S::kNone},
      {"Utils_Menu", "&Utilities", "Utils_Spin", &Utils_Spin, S::kNone, true},
      {"Help_Menu", "&Help", "Help_About", &Help_About, S::kNone},
  };
}

// ---- Start-up, layout and shutdown ----------------------------------------------

void Quelo_Form::Form_Load() {
  Form_Resize();
}

void Quelo_Form::Organize() {
  prv_InitGL();
  visible_ = true;
  host_.Show();
}

void Quelo_Form::Form_Resize() {
  if (Busy) return;
  prv_Layout();
  host_.Refresh();
  RenderIt(false, false);
}

void Quelo_Form::prv_Layout() {
  // A minimised window has no client area to share out.
  if (WindowState == 1) return;

  // Held at the minimum first, in twips, so that no size below goes negative.
  const Long h2 = Menu2_Pbx.Height() * kTwipsPerPixel;
  const Long h1 = Menu_Pbx.Height() * kTwipsPerPixel;
  const Long s = Main_StBr.Bounds.Height * kTwipsPerPixel;
  bool held = false;
  if (s + h2 + h1 > FormHeight) {
    FormHeight = h1 + h2 + s;
    held = true;
  }
  if (FormWidth < Menu_Pbx.Width() * kTwipsPerPixel) {
    FormWidth = Menu_Pbx.Width() * kTwipsPerPixel;
    held = true;
  }
  if (held) host_.FormSizeChanged();

  // From here on pixels.
  const Long width = ScaleWidth();
  const Long height = ScaleHeight();
  Cont_Pbx.Move(Menu2_Pbx.Width(), Menu_Pbx.Height(), width - Menu2_Pbx.Width(),
                height - Menu_Pbx.Height() - Main_StBr.Bounds.Height);
  Cont_Pbx.ScaleMode(kScalePixels);
  const Long cont_left = static_cast<Long>(Cont_Pbx.ScaleLeft());
  const Long cont_top = static_cast<Long>(Cont_Pbx.ScaleTop());
  const Long cont_width = static_cast<Long>(Cont_Pbx.ScaleWidth());
  const Long cont_height = static_cast<Long>(Cont_Pbx.ScaleHeight());

  auto& zoom = Zoom_Scr.Bounds;
  zoom.Left = cont_left;
  zoom.Top = cont_top;
  zoom.Height = cont_height - Hor_Scr.Bounds.Height;

  FacePbx.Move(zoom.Left + zoom.Width, cont_top, cont_width - zoom.Width - Ver_Scr.Bounds.Width,
               zoom.Height);

  auto& ver = Ver_Scr.Bounds;
  ver.Left = FacePbx.Left() + FacePbx.Width();
  ver.Top = cont_top;
  ver.Height = cont_height - Hor_Scr.Bounds.Height;

  auto& hor = Hor_Scr.Bounds;
  hor.Left = FacePbx.Left();
  hor.Top = FacePbx.Top() + FacePbx.Height();
  hor.Width = FacePbx.Width();

  // The status bar is aligned to the bottom, as the toolkit would keep it.
  SetBounds(Main_StBr.Bounds, 0, height - Main_StBr.Bounds.Height, width, Main_StBr.Bounds.Height);

  for (auto* bar : {&Zoom_Scr, &Ver_Scr, &Hor_Scr}) {
    if (bar->Mirror) bar->Mirror();
  }
  if (Main_StBr.Mirror) Main_StBr.Mirror();
}

void Quelo_Form::FacePbx_Paint() {
  if (visible_) RenderIt(false, false);
}

void Quelo_Form::Form_Unload() {
  FreeRenderLists();
  FaceGL.auxShutDown();
}

void Quelo_Form::File_Exit_Click() {
  host_.UnloadAllForms();
}

void Quelo_Form::Help_About_Click() {
  host_.ShowInfoBox();
}

// ---- View commands ----------------------------------------------------------------

void Quelo_Form::View_3DPerspective_Click() {
  VerAng(30);
  switch (HorAng()) {
    case 60:
      HorAng(330);
      break;
    case 330:
      HorAng(240);
      break;
    case 240:
      HorAng(150);
      break;
    case 150:
      HorAng(60);
      break;
    default:
      HorAng(60);
      break;
  }
  RenderIt(false, true);
}

void Quelo_Form::View_SideView_Click() {
  VerAng(0);
  HorAng(HorAng() == 90 ? 270 : 90);
  RenderIt(false, true);
}

void Quelo_Form::View_CrossView_Click() {
  VerAng(0);
  HorAng(HorAng() == 0 ? 180 : 0);
  RenderIt(false, true);
}

void Quelo_Form::View_TopView_Click() {
  VerAng(90);
  switch (HorAng()) {
    case 0:
      HorAng(270);
      break;
    case 270:
      HorAng(180);
      break;
    case 180:
      HorAng(90);
      break;
    case 90:
      HorAng(0);
      break;
    default:
      HorAng(0);
      break;
  }
  RenderIt(false, true);
}

void Quelo_Form::View_Redraw_Click() {
  RenderIt(true, true);
}

void Quelo_Form::View_FullRoom_Click() {
  RenderIt(false, true);
}

void Quelo_Form::View_Cbt_Click(Integer Index) {
  // Crosswise on purpose: the "x-View" button looks along x, which is the
  // end view of the menu, and "y-View" the side view.
  switch (Index) {
    case 0:
      View_CrossView_Click();
      break;
    case 1:
      View_SideView_Click();
      break;
    case 2:
      View_TopView_Click();
      break;
    case 3:
      View_3DPerspective_Click();
      break;
    case 4:
      View_FullRoom_Click();
      break;
    default:
      break;
  }
}

void Quelo_Form::View_ZoomIn_Click() {
  const Integer target = IntSub(Zoom_Scr.Value(), Zoom_Scr.LargeChange());
  if (target >= Zoom_Scr.Min()) Zoom_Scr.Value(target);
}

void Quelo_Form::View_ZoomOut_Click() {
  const Integer target = IntAdd(Zoom_Scr.Value(), Zoom_Scr.LargeChange());
  if (target <= Zoom_Scr.Max()) Zoom_Scr.Value(target);
}

void Quelo_Form::Zoom_Scr_Scroll() {
  Zoom_Scr_Change();
}

void Quelo_Form::Hor_Scr_Change() {
  if (!Busy) RenderIt(false, true);
}

void Quelo_Form::Hor_Scr_Scroll() {
  Hor_Scr_Change();
}

void Quelo_Form::Ver_Scr_Change() {
  if (!Busy) RenderIt(false, true);
}

void Quelo_Form::Ver_Scr_Scroll() {
  Ver_Scr_Change();
}

// ---- Spin and toggles ----------------------------------------------------------

void Quelo_Form::Utils_Spin_Click() {
  if (Spin_Tmr.Enabled()) {
    Spin_Chk.Value(0);
    Spin_Tmr.Enabled(false);
    Utils_Spin.Checked(false);
  } else {
    Spin_Chk.Value(1);
    Spin_Tmr.Enabled(true);
    Utils_Spin.Checked(true);
  }
}

void Quelo_Form::Spin_Chk_Click() {
  Utils_Spin_Click();
}

void Quelo_Form::Spin_Tmr_Timer() {
  HorAng(static_cast<Integer>(IntAdd(HorAng(), 5) % 360));
  RenderIt(false, true);
}

void Quelo_Form::Utils_LightsOn_Click() {
  Utils_LightsOn.Checked(!Utils_LightsOn.Checked());
  RenderIt(false, false);
}

void Quelo_Form::Utils_AxesOn_Click() {
  Utils_AxesOn.Checked(!Utils_AxesOn.Checked());
  RenderIt(true, true);
}

void Quelo_Form::Utils_GridsOn_Click() {
  Utils_GridsOn.Checked(!Utils_GridsOn.Checked());
  RenderIt(true, true);
}

// ---- Mouse modes ------------------------------------------------------------------

void Quelo_Form::MouseMode(Integer MM) {
  SettingMouseMode = true;
  for (auto& button : Mouse_Chk) button.Value(0);
  if (MM >= kModeNone && MM <= kModeZoomOut) {
    FacePbx.MousePointer(kPointerCustom);
    FacePbx.MouseIcon(CursorIconId(kModeCursor[MM]));
    if (MM >= kModeCenter) Mouse_Chk[static_cast<std::size_t>(kModeButton[MM])].Value(1);
  }
  mouse_mode_ = MM;
  SettingMouseMode = false;
}

void Quelo_Form::Mouse_Chk_Click(Integer Index) {
  if (SettingMouseMode) return;
  Integer mode = kModeNone;
  switch (Index) {
    case 0:
      mode = kModeDrag;
      break;
    case 1:
      mode = kModeZoomIn;
      break;
    case 2:
      mode = kModeZoomOut;
      break;
    case 3:
      mode = kModeCenter;
      break;
    default:
      break;
  }
  MouseMode(mouse_mode_ != mode ? mode : static_cast<Integer>(kModeNone));
}

void Quelo_Form::FacePbx_MouseDown(Integer Button, Integer /*Shift*/, Single X, Single Y) {
  if (Button != kLeftButton) return;
  if (mouse_mode_ == kModeDrag) {
    DragStartX = X;
    DragStartY = Y;
    FacePbx.MouseIcon(CursorIconId(CursorKind::kDragging));
  } else if (mouse_mode_ == kModeZoomIn || mouse_mode_ == kModeZoomOut) {
    DragStartX = X;
    DragStartY = Y;
  }
}

void Quelo_Form::FacePbx_MouseMove(Integer Button, Integer /*Shift*/, Single X, Single Y) {
  if (Button != kLeftButton) return;
  if (mouse_mode_ == kModeDrag) {
    // The start point stays: after the shift the scale has moved with the
    // scene, so the same scene point is under the cursor again.
    ScaleShiftCenter32(Sub(X, DragStartX), Sub(Y, DragStartY));
    RenderIt(false, false);
  } else if (mouse_mode_ == kModeZoomIn || mouse_mode_ == kModeZoomOut) {
    FaceGL.oglSwapBuffers();  // the last picture again: the old band is gone
    const Single a =
        DivSingle(static_cast<Single>(FacePbx.Width()), static_cast<Single>(FacePbx.Height()));
    const Single dx = Sub(DragStartX, X);
    const Single dy = Sub(DragStartY, Y);
    if (dy == 0) return;
    // The band keeps the drawing area's shape; its width follows its height.
    if (std::fabs(a) != std::fabs(DivSingle(dx, dy))) X = Add(DragStartX, Mul(dy, a));
    band_.DrawBox(FacePbx.ToPixelX(DragStartX), FacePbx.ToPixelY(DragStartY), FacePbx.ToPixelX(X),
                  FacePbx.ToPixelY(Y));
  }
}

void Quelo_Form::FacePbx_MouseUp(Integer Button, Integer /*Shift*/, Single X, Single Y) {
  if (mouse_mode_ == kModeDrag) {
    FacePbx.MouseIcon(CursorIconId(CursorKind::kDrag));
    return;
  }
  if (Button != kLeftButton) return;
  if (mouse_mode_ == kModeCenter) {
    ScaleSetCenter32(X, Y);
    RenderIt(false, false);
    return;
  }
  if (mouse_mode_ != kModeZoomIn && mouse_mode_ != kModeZoomOut) return;

  // The rectangle from the press to the raw release point.
  Single x1 = DragStartX, x2 = X;
  if (x2 < x1) std::swap(x1, x2);
  Single y1 = DragStartY, y2 = Y;
  if (y2 < y1) std::swap(y1, y2);
  if (y1 == y2 || x1 == x2) return;
  const Single s0 = FacePbx.ScaleWidth();

  if (mouse_mode_ == kModeZoomIn) {
    WinXMin = x1;
    WinXMax = x2;
    WinYMin = y1;
    WinYMax = y2;
  } else {
    // c is the fixed point of the scaling by k that carries [x1, x2] onto the
    // present window, so the whole present view shrinks into the rectangle.
    const Single w = Sub(WinXMax, WinXMin);
    Single k = DivSingle(w, Sub(x2, x1));
    Single c = DivSingle(Sub(Mul(x1, WinXMax), Mul(x2, WinXMin)), Add(Sub(w, x2), x1));
    WinXMin = Add(Mul(Sub(WinXMin, c), k), c);
    WinXMax = Add(Mul(Sub(WinXMax, c), k), c);

    const Single h = Sub(WinYMax, WinYMin);
    k = DivSingle(h, Sub(y2, y1));
    c = DivSingle(Sub(Mul(y1, WinYMax), Mul(y2, WinYMin)), Add(Sub(h, y2), y1));
    WinYMin = Add(Mul(Sub(WinYMin, c), k), c);
    WinYMax = Add(Mul(Sub(WinYMax, c), k), c);

    if (WinXMax < WinXMin) std::swap(WinXMin, WinXMax);
    if (WinYMax < WinYMin) std::swap(WinYMin, WinYMax);
  }
  ScaleRoom32();
  // The zoom bar follows the new window width.
  const Single z = GetOrthoZoom();
  const Single s1 = FacePbx.ScaleWidth();
  SetOrthoZoom(Mul(DivSingle(z, s0), s1));
  RenderIt(false, false);
}

// ---- Opening files ------------------------------------------------------------------

std::string Quelo_Form::COM_OpenFileDlg(CommonDialog& CmDlg, Long FileType,
                                        std::string DfltFilename) {
  std::string result;
  try {
    std::string extension;
    std::string kind;
    if (FileType == 0) {
      extension = "qgl";
      kind = "OpenGL";
    }
    CmDlg.Filter("KIVO " + kind + " File (*." + extension + ")|*." + extension);
    CmDlg.Filter(CmDlg.Filter() + "|All files (*.*)|*.*");
    CmDlg.FileName(DfltFilename + "." + extension);
    CmDlg.CancelError(true);
    CmDlg.ShowOpen();
    if (!CmDlg.FileName().empty()) result = CmDlg.FileName();
    return result;
  } catch (const RuntimeError& e) {
    if (e.number() != kErrDialogCancel) MsgBox("Error during OpenFile");
    return result;
  }
}

void Quelo_Form::OpenSceneFile(const std::string& name) {
  SceneFileName = name;
  Main_StBr.PanelText(1, name);
  RenderIt(true, true);
}

void Quelo_Form::prv_OpenFlow() {
  const std::string name = COM_OpenFileDlg(CommonDialog1, 0, "*");
  if (name.empty()) return;
  OpenSceneFile(name);
}

void Quelo_Form::File_OpenGLFile_Click() {
  prv_OpenFlow();
}

void Quelo_Form::Open_Cbt_Click() {
  prv_OpenFlow();
}

// ---- The toolkit boundary ------------------------------------------------------------

bool RunHandler(const std::function<void()>& handler) {
  try {
    handler();
    return true;
  } catch (const RuntimeError& e) {
    Messages().Show(e.what(), "Quelo", MessageIcon::kCritical);
  } catch (const std::exception& e) {
    Messages().Show(e.what(), "Quelo", MessageIcon::kCritical);
  }
  return false;
}

}  // namespace quelo
