// The view part of the main form: view state, camera and the one redraw.
//
// QueloView owns the OpenGL control FaceGL and the models of the controls that
// the view reads: the three scroll bars (the angles and the zoom live in their
// values), the drawing area FacePbx (whose user scale is kept equal to the
// visible rectangle, so mouse positions arrive in scene units), the menu items
// that switch axes, grids and lights, and the screen's mouse pointer. The main
// form derives from it and adds the commands and the mouse modes.
//
// Units: angles in degrees; the visible rectangle and the room box in scene
// units; FacePbx's Width/Height in pixels.
//
// Run-time errors (RuntimeError) that come out to the caller: 6 for overflow
// of the 16-bit angle and zoom-bar differences or of a Single result, 11 for a
// division by zero (a zoom bar with Max = Min, a drawing area of zero size, a
// visible rectangle of zero width when RenderIt rescales the zoom bar), 5 for
// the logarithm of a zoom <= 0, 380 for an angle set outside its bar's range,
// and the file errors of scene loading.
//
// The GL-calling operations (InitView, RenderIt, RenderAxes, FreeRenderLists)
// expect FaceGL's context to exist (prv_InitGL); with the tracing dispatch
// table they run without one.
#pragma once

#include <array>
#include <string>

#include "common/numbers.h"
#include "glctrl/opengl_ctrl.h"
#include "view/controls.h"

namespace quelo {

// Ends of the zoom law: the zoom bar at Min shows ZoomMin times the full
// scene's width, at Max ZoomMax times.
constexpr Single kZoomMin = 0.00216f;
constexpr Single kZoomMax = 5.4f;

// The start angles of the main window.
constexpr Integer kStartHorAng = 60;
constexpr Integer kStartVerAng = 30;

class QueloView {
 public:
  QueloView();
  virtual ~QueloView();
  QueloView(const QueloView&) = delete;
  QueloView& operator=(const QueloView&) = delete;

  // ---- Controls read by the view -------------------------------------------
  OpenGL_Ctrl FaceGL;
  ScrollBarModel Hor_Scr{360, 0, 1, 1, kStartHorAng};  // reversed on purpose
  ScrollBarModel Ver_Scr{-90, 90, 1, 1, kStartVerAng};
  ScrollBarModel Zoom_Scr{0, 256, 4, 16, 256};
  PictureBoxModel FacePbx;
  MenuItemModel Utils_LightsOn{"&Lights On"};
  MenuItemModel Utils_AxesOn{"Show File &Axes"};
  MenuItemModel Utils_GridsOn{"Show File &Grids"};
  ScreenModel& Screen;

  // ---- View state -----------------------------------------------------------
  // The visible rectangle in view-plane coordinates, before the margin.
  Single WinXMin = 0, WinXMax = 0, WinYMin = 0, WinYMax = 0;
  // x min, x max, y min, y max, z min, z max: RoomBox[minmax + 2 * axis].
  std::array<Single, 6> RoomBox{};
  // Rows and columns 1..3 used.
  Single ViewRot[4][4] = {};
  // x range of the whole rotated room box, as last computed: minimum, maximum.
  Single FullXRange[2] = {0, 0};
  Long RenderList = 0;  // display-list name of the scene, 0 when none
  std::string SceneFileName;
  // Set while the form itself writes the angle bars and during the reset in
  // RenderIt; the form's resize and scroll-bar handlers do nothing meanwhile.
  bool Busy = false;

  // The main window's size (twips), which the one-time GL start zeroes and
  // restores; the form's layout owns it otherwise.
  Long FormWidth = 0;
  Long FormHeight = 0;

  // ---- Angles and zoom ------------------------------------------------------
  Integer HorAng() const { return Hor_Scr.Value(); }
  void HorAng(Integer ha);  // with Busy set; the caller redraws
  Integer VerAng() const { return Ver_Scr.Value(); }
  void VerAng(Integer va);
  // The zoom factor of the zoom bar's position, logarithmic between
  // kZoomMin (at Min) and kZoomMax (at Max).
  Single GetOrthoZoom();
  // Moves the zoom bar to the position of z (held at the ends; rounding half
  // to even). Its Change event fires if the position changes. Returns 0.
  Long SetOrthoZoom(const Single& z);

  // ---- Camera -----------------------------------------------------------------
  void prv_BuildViewRot();
  // Dir 1: world to view; -1: view to world; anything else gives (0, 0, 0).
  // Status is always 0.
  void prv_RotatePoint(std::array<Single, 3>& P, Single Dir, Long& Status);
  // The rectangle in the view plane that the rotated room box covers.
  void prv_CompFullBox(Single& xFMin, Single& xFMax, Single& yFMin, Single& yFMax);
  void prv_CompViewBox();  // the visible rectangle becomes the full box
  // Repairs the visible rectangle and makes it, widened to the drawing area's
  // shape and by a 20 % margin, FacePbx's user scale (y upwards).
  void ScaleRoom32();
  void ScaleSetCenter32(Single cx, Single cy);
  void ScaleShiftCenter32(Single dx, Single dy);  // moves the window by (-dx, -dy)
  // Viewport, clear, orthographic projection and view rotation.
  void InitView();
  // One-time GL start: the context on FacePbx's surface and the font lists.
  // Later calls return at once.
  void prv_InitGL();

  // ---- Redraw -------------------------------------------------------------------
  // The single redraw. Reload rebuilds the scene list from SceneFileName (and
  // is set to false); ResetView (without Reload) fits the whole scene at zoom 1.
  void RenderIt(bool& Reload, bool& ResetView);
  void RenderIt(bool&& Reload, bool&& ResetView);
  // The red, green and blue axes from -1 to 10 through the origin.
  void RenderAxes();
  // Deletes the scene list if there is one. Returns 0.
  Long FreeRenderLists();

  // The zoom bar's Change handler. While Busy is clear it sets the visible
  // rectangle to the full scene's size times the zoom factor about the present
  // centre, then redraws (RenderIt(false, false)). The main form may override.
  virtual void Zoom_Scr_Change();

 protected:
  bool gl_started_ = false;

 private:
  void RenderPass(bool& Reload, bool& ResetView, Single& q);
};

}  // namespace quelo
