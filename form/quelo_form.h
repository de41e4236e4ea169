// Quelo_Form: the main window's logic over the models of its controls.
//
// The form owns every control model and every event handler: start-up and
// layout, the menu and toolbar commands, the scroll bars, the spin timer, the
// mouse modes and the open flow. It knows no toolkit: the FLTK window
// (fltk_main_window.h) mirrors the models and forwards user input to them, and
// asks the form nothing else. What the form needs from its window goes through
// three small interfaces: FormHost (show, repaint, unload, about box, size
// held at its minimum), CommonDialog (the open dialog) and BandDrawer (the
// rubber band of the zoom modes).
//
// Units: the form's FormWidth/FormHeight are twips (15 per pixel) of the area
// under the menu bar; every control's Left/Top/Width/Height are pixels of its
// container; mouse positions arrive in FacePbx's user scale, i.e. scene units.
//
// Run-time errors: handlers leave overflow (6), division by zero (11) and the
// like uncaught; the toolkit boundary
// (RunHandler) shows them in a message box and the program goes on.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "common/numbers.h"
#include "form/common_dialog.h"
#include "form/cursor_pictures.h"
#include "view/controls.h"
#include "view/view_form.h"

namespace quelo {

// A push button: a caption, a tooltip and a Click event.
class CommandButtonModel {
 public:
  CommandButtonModel() = default;
  CommandButtonModel(std::string caption, std::string tooltip)
      : Caption(std::move(caption)), ToolTipText(std::move(tooltip)) {}
  void UserClick() {
    if (Click) Click();
  }
  std::string Caption;
  std::string ToolTipText;
  ControlBounds Bounds;
  std::function<void()> Click;
};

// What the form asks of the window that shows it. The defaults do nothing,
// so that tests override only what they watch.
class FormHost {
 public:
  virtual ~FormHost() = default;
  // Organize's Show: the window appears (modeless).
  virtual void Show() {}
  // The form's own repaint, between the layout and the redraw of Form_Resize.
  virtual void Refresh() {}
  // The layout held FormWidth/FormHeight at the minimum: the window must take
  // that size.
  virtual void FormSizeChanged() {}
  // File > Exit: every loaded form is unloaded (the host runs Form_Unload of
  // the main form), which ends the program.
  virtual void UnloadAllForms() {}
  // Help > About: the about box InfoBox, modeless.
  virtual void ShowInfoBox() {}
};

// Draws the rubber band of the zoom modes on FacePbx, over the last rendered
// picture. Coordinates are FacePbx pixels (0, 0 top left); the corners may
// come in any order. The next swap of the picture erases it.
class BandDrawer {
 public:
  virtual ~BandDrawer() = default;
  virtual void DrawBox(double x1, double y1, double x2, double y2) = 0;
};

// Mouse modes (MouseMode).
enum MouseModeKind : Integer {
  kModeNone = 0,
  kModeCenter = 1,
  kModeDrag = 2,
  kModeZoomIn = 3,
  kModeZoomOut = 4,
};

// Mouse buttons as the handlers receive them.
enum MouseButtonCode : Integer {
  kLeftButton = 1,
  kRightButton = 2,
  kMiddleButton = 4,
};

// The id under which FacePbx.MouseIcon names a cursor picture (0 = none).
constexpr Long CursorIconId(CursorKind kind) {
  return static_cast<Long>(kind) + 1;
}

// Keyboard shortcuts of the menu.
enum class MenuShortcut { kNone, kCtrlO, kF11, kF12 };

// One line of the menu bar, in display order. A line without an item is a
// separator; `menu` names the top-level menu it belongs to.
struct MenuLine {
  const char* menu;          // "File_Menu"
  const char* menu_caption;  // "&File"
  const char* name;          // "File_OpenGLFile", or "File_s1" for a separator
  MenuItemModel* item;       // null for a separator
  MenuShortcut shortcut;
  bool check_mark = false;  // shows a check mark (the toggles and Spin)
};

// Design sizes of the form, in pixels (twips / 15).
namespace form_design {
constexpr Long kScrollBarThickness = 17;  // 255 twips
constexpr Long kButtonWidth = 60;         // 900 twips
constexpr Long kButtonHeight = 53;        // 800 twips
constexpr Long kButtonTop = 8;            // 120 twips
// Open_Cbt, View_Cbt(0..4), then Spin_Chk (lefts 0, 1080, ..., 5040, 6120 twips).
constexpr std::array<Long, 7> kToolbarLefts = {0, 72, 136, 200, 264, 336, 408};
// Mouse_Chk(0..3) (tops 0, 840, 1680, 2520 twips).
constexpr std::array<Long, 4> kModeButtonTops = {0, 56, 112, 168};
constexpr Long kToolbarWidth = 470;   // Menu_Pbx: room for all seven buttons
constexpr Long kToolbarHeight = 70;   // Menu_Pbx
constexpr Long kToolStripWidth = 60;  // Menu2_Pbx
constexpr Long kToolStripHeight = 222;
constexpr Long kStatusBarHeight = 24;
// The window's first size (the area under the menu bar).
constexpr Long kStartWidth = 820;
constexpr Long kStartHeight = 620;
}  // namespace form_design

class Quelo_Form : public QueloView {
 public:
  Quelo_Form(FormHost& host, CommonDialog& dialog, BandDrawer& band);
  ~Quelo_Form() override;

  // ---- Controls (besides the view's scroll bars, FacePbx and toggles) ------
  PictureBoxModel Menu_Pbx;   // the toolbar strip
  PictureBoxModel Menu2_Pbx;  // the mode-button strip
  PictureBoxModel Cont_Pbx;   // holds the scroll bars and FacePbx
  CommandButtonModel Open_Cbt{"Open", "Open KIVO OpenGL File"};
  std::array<CommandButtonModel, 5> View_Cbt{{{"x-View", "Side View"},
                                              {"y-View", "End View"},
                                              {"z-View", "Plan View"},
                                              {"3D-View", "Perspective View"},
                                              {"Full", "Full View"}}};
  CheckButtonModel Spin_Chk;
  std::array<CheckButtonModel, 4> Mouse_Chk;  // Drag, Zoom In, Zoom Out, Center
  StatusBarModel Main_StBr{1};
  TimerModel Spin_Tmr;
  CommonDialog& CommonDialog1;

  MenuItemModel File_OpenGLFile{"&Open KIVO OpenGL File"};
  MenuItemModel File_Exit{"E&xit"};
  MenuItemModel View_3DPerspective{"&3D Perspective"};
  MenuItemModel View_SideView{"Side View (&x)"};
  MenuItemModel View_CrossView{"End View (&y)"};
  MenuItemModel View_TopView{"Plan View (&z)"};
  MenuItemModel View_Redraw{"Re&draw"};
  MenuItemModel View_FullRoom{"&Full View"};
  MenuItemModel View_ZoomIn{"Zoom &In"};
  MenuItemModel View_ZoomOut{"Zoom &Out"};
  MenuItemModel Utils_Spin{"&Spin"};
  MenuItemModel Help_About{"&About"};
  // Utils_LightsOn, Utils_AxesOn, Utils_GridsOn belong to the view.

  // The menu bar in display order.
  std::vector<MenuLine> MenuBar();

  // ---- The form itself ------------------------------------------------------
  // 0 normal, 1 minimised, 2 maximised; the host keeps it current.
  Integer WindowState = 0;
  bool Visible() const { return visible_; }
  // The area under the menu bar in pixels (FormWidth/FormHeight are twips).
  Long ScaleWidth() const { return FormWidth / kTwipsPerPixel; }
  Long ScaleHeight() const { return FormHeight / kTwipsPerPixel; }

  // ---- Start-up and shutdown --------------------------------------------------
  void Form_Load();
  // GL start-up, then Show.
  void Organize();
  void Form_Resize();
  void FacePbx_Paint();
  void Form_Unload();
  void File_Exit_Click();
  void Help_About_Click();

  // ---- Commands ---------------------------------------------------------------
  void File_OpenGLFile_Click();
  void Open_Cbt_Click();
  void View_3DPerspective_Click();
  void View_SideView_Click();
  void View_CrossView_Click();
  void View_TopView_Click();
  void View_Redraw_Click();
  void View_FullRoom_Click();
  void View_ZoomIn_Click();
  void View_ZoomOut_Click();
  // 0 end view, 1 side view (crosswise: "x-View" is the end view), 2 plan,
  // 3 3D, 4 full; other indexes nothing.
  void View_Cbt_Click(Integer Index);
  void Utils_LightsOn_Click();
  void Utils_AxesOn_Click();
  void Utils_GridsOn_Click();
  void Utils_Spin_Click();
  void Spin_Chk_Click();
  void Spin_Tmr_Timer();
  void Hor_Scr_Change();
  void Hor_Scr_Scroll();
  void Ver_Scr_Change();
  void Ver_Scr_Scroll();
  void Zoom_Scr_Scroll();
  // Zoom_Scr_Change is the view's.

  // ---- Mouse modes ------------------------------------------------------------
  Integer MouseMode() const { return mouse_mode_; }
  void MouseMode(Integer MM);
  bool SettingMouseMode = false;
  Single DragStartX = 0, DragStartY = 0;
  void Mouse_Chk_Click(Integer Index);
  // Button: 1 left, 2 right, 4 middle (a held set while moving); Shift unused;
  // X, Y in FacePbx's scale.
  void FacePbx_MouseDown(Integer Button, Integer Shift, Single X, Single Y);
  void FacePbx_MouseMove(Integer Button, Integer Shift, Single X, Single Y);
  void FacePbx_MouseUp(Integer Button, Integer Shift, Single X, Single Y);

  // ---- Opening files ----------------------------------------------------------
  // The chosen path, or "" after a cancel (silent) or a failure of the dialog
  // ("Error during OpenFile"). FileType 0 is the scene file.
  std::string COM_OpenFileDlg(CommonDialog& CmDlg, Long FileType, std::string DfltFilename);
  // What the open flow does with a chosen path; also the start with a path
  // on the command line.
  void OpenSceneFile(const std::string& name);

 private:
  void prv_Layout();
  void prv_OpenFlow();
  void WireEvents();

  FormHost& host_;
  BandDrawer& band_;
  Integer mouse_mode_ = kModeNone;
  bool visible_ = false;
};

// The toolkit boundary: runs one event handler; a run-time error (or any
// other exception) that it leaves unhandled is shown in a message box and the
// program goes on. Returns false when something was caught.
bool RunHandler(const std::function<void()>& handler);

}  // namespace quelo
