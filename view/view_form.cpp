#include "view/view_form.h"

#include <cmath>

#include "common/runtime_error.h"
#include "sceneload/scene_list.h"

namespace quelo {

namespace {

constexpr double kDegToRad = 0.017453292519943278;
constexpr Single kAxisFrom = -1.0f;
constexpr Single kAxisTo = 10.0f;

// Clears a Busy flag on the way out, also when a run-time error passes through,
// so that one failed redraw does not leave the form deaf to its scroll bars.
class BusyScope {
 public:
  explicit BusyScope(bool& busy) : busy_(busy) { busy_ = true; }
  ~BusyScope() { busy_ = false; }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  bool& busy_;
};

Single SingleDiff(Single a, Single b) {
  return CheckSingle(static_cast<double>(a) - b);
}

}  // namespace

QueloView::QueloView() : Screen(quelo::Screen()) {
  Zoom_Scr.Change = [this] { Zoom_Scr_Change(); };
}

QueloView::~QueloView() = default;

// ---- Angles and zoom ----------------------------------------------------------

void QueloView::HorAng(Integer ha) {
  BusyScope busy(Busy);
  Hor_Scr.Value(ha);
}

void QueloView::VerAng(Integer va) {
  BusyScope busy(Busy);
  Ver_Scr.Value(va);
}

Single QueloView::GetOrthoZoom() {
  const Integer max = Zoom_Scr.Max();
  const Integer min = Zoom_Scr.Min();
  const Integer value = Zoom_Scr.Value();
  const Single t = CheckSingle(DivDouble(IntSub(value, min), IntSub(max, min)));
  const double ln_max = std::log(static_cast<double>(kZoomMax));
  const double ln_min = std::log(static_cast<double>(kZoomMin));
  return CheckSingle(std::exp((ln_max - ln_min) * t + ln_min));
}

Long QueloView::SetOrthoZoom(const Single& z) {
  const double ln_max = std::log(static_cast<double>(kZoomMax));
  const double ln_min = std::log(static_cast<double>(kZoomMin));
  Single t = CheckSingle((LogDouble(z) - ln_min) / (ln_max - ln_min));
  if (t > 1) t = 1;
  if (t < 0) t = 0;
  const Integer min = Zoom_Scr.Min();
  const Integer range = IntSub(Zoom_Scr.Max(), min);
  // Integer times Single plus Integer is Single arithmetic.
  const Single position = static_cast<Single>(range) * t + static_cast<Single>(min);
  Zoom_Scr.Value(CInt(position));
  return 0;
}

// ---- Camera -------------------------------------------------------------------

void QueloView::prv_BuildViewRot() {
  const auto h = static_cast<Single>(Hor_Scr.Value() * kDegToRad);
  const auto v = static_cast<Single>(Ver_Scr.Value() * kDegToRad);
  const double sh = std::sin(h), ch = std::cos(h);
  const double sv = std::sin(v), cv = std::cos(v);
  for (auto& row : ViewRot) {
    for (auto& cell : row) cell = 0;
  }
  ViewRot[1][1] = static_cast<Single>(ch);
  ViewRot[1][2] = static_cast<Single>(sh);
  ViewRot[1][3] = 0;
  ViewRot[2][1] = static_cast<Single>(-sv * sh);
  ViewRot[2][2] = static_cast<Single>(sv * ch);
  ViewRot[2][3] = static_cast<Single>(cv);
  ViewRot[3][1] = static_cast<Single>(cv * sh);
  ViewRot[3][2] = static_cast<Single>(-cv * ch);
  ViewRot[3][3] = static_cast<Single>(sv);
}

void QueloView::prv_RotatePoint(std::array<Single, 3>& P, Single Dir, Long& Status) {
  double r[3] = {0, 0, 0};
  if (Dir == 1) {
    for (int i = 1; i <= 3; ++i) {
      r[i - 1] = static_cast<double>(ViewRot[i][1]) * P[0] +
                 static_cast<double>(ViewRot[i][2]) * P[1] +
                 static_cast<double>(ViewRot[i][3]) * P[2];
    }
  } else if (Dir == -1) {
    for (int i = 1; i <= 3; ++i) {
      r[i - 1] = static_cast<double>(ViewRot[1][i]) * P[0] +
                 static_cast<double>(ViewRot[2][i]) * P[1] +
                 static_cast<double>(ViewRot[3][i]) * P[2];
    }
  }
  // Any other direction deliberately yields the origin.
  for (int i = 0; i < 3; ++i) P[i] = CheckSingle(r[i]);
  Status = 0;
}

void QueloView::prv_CompFullBox(Single& xFMin, Single& xFMax, Single& yFMin, Single& yFMax) {
  xFMin = 1e38f;
  xFMax = -1e38f;
  yFMin = 1e38f;
  yFMax = -1e38f;
  prv_BuildViewRot();
  const Single x0 = RoomBox[0], x1 = RoomBox[1];
  const Single y0 = RoomBox[2], y1 = RoomBox[3];
  const Single z0 = RoomBox[4], z1 = RoomBox[5];
  const std::array<Single, 3> corners[8] = {{x0, y0, z0}, {x1, y0, z0}, {x1, y1, z0}, {x0, y1, z0},
                                            {x1, y1, z1}, {x0, y1, z1}, {x0, y0, z1}, {x1, y0, z1}};
  for (auto corner : corners) {
    Long status = 0;
    prv_RotatePoint(corner, 1, status);
    if (corner[0] < xFMin) xFMin = corner[0];
    if (corner[0] > xFMax) xFMax = corner[0];
    if (corner[1] < yFMin) yFMin = corner[1];
    if (corner[1] > yFMax) yFMax = corner[1];
  }
}

void QueloView::prv_CompViewBox() {
  prv_CompFullBox(WinXMin, WinXMax, WinYMin, WinYMax);
}

void QueloView::ScaleRoom32() {
  FacePbx.ScaleMode(kScaleTwips);
  const Single a = DivSingle(FacePbx.ScaleWidth(), FacePbx.ScaleHeight());

  // An inverted range means "nothing known": fall back to -1..1. A point gets
  // one unit on each side.
  if (WinXMax < WinXMin) {
    WinXMax = 1;
    WinXMin = -1;
  }
  if (WinYMax < WinYMin) {
    WinYMax = 1;
    WinYMin = -1;
  }
  if (WinXMax == WinXMin) {
    WinXMax = CheckSingle(static_cast<double>(WinXMin) + 1);
    WinXMin = CheckSingle(static_cast<double>(WinXMin) - 1);
  }
  if (WinYMax == WinYMin) {
    WinYMax = CheckSingle(static_cast<double>(WinYMin) + 1);
    WinYMin = CheckSingle(static_cast<double>(WinYMin) - 1);
  }

  double cx = (static_cast<double>(WinXMin) + WinXMax) * 0.5;
  double hx = (static_cast<double>(WinXMax) - WinXMin) * 0.5;
  double cy = (static_cast<double>(WinYMin) + WinYMax) * 0.5;
  double hy = (static_cast<double>(WinYMax) - WinYMin) * 0.5;

  // Widen the half-extent that is too small for the drawing area's shape.
  if (a <= DivDouble(hx, hy)) {
    hy = DivDouble(hx, a);
  } else {
    hx = a * hy;
  }

  // Cut the noise of the single-precision rotation, so a redraw at the same
  // view gives the same scale; a window too small to show becomes 10 wide.
  hx = RoundDown(hx, 8);
  if (RoundDown(hx, 4) == 0) hx = 5.0;
  hy = RoundDown(hy, 8);
  if (RoundDown(hy, 4) == 0) hy = 5.0;
  cx = RoundDown(cx, 8);
  cy = RoundDown(cy, 8);

  // A 20 % margin on every side, y growing upwards.
  FacePbx.ScaleLeft(CheckSingle(cx - hx * 1.2));
  FacePbx.ScaleWidth(CheckSingle(hx * 2.4));
  FacePbx.ScaleTop(CheckSingle(hy * 1.2 + cy));
  FacePbx.ScaleHeight(CheckSingle(hy * -2.4));
}

void QueloView::ScaleSetCenter32(Single cx, Single cy) {
  const Single w = SingleDiff(WinXMax, WinXMin);
  WinXMax = CheckSingle(cx + w / 2.0);
  WinXMin = CheckSingle(cx - w / 2.0);
  const Single h = SingleDiff(WinYMax, WinYMin);
  WinYMax = CheckSingle(cy + h / 2.0);
  WinYMin = CheckSingle(cy - h / 2.0);
  ScaleRoom32();
}

void QueloView::ScaleShiftCenter32(Single dx, Single dy) {
  WinXMax = SingleDiff(WinXMax, dx);
  WinXMin = SingleDiff(WinXMin, dx);
  WinYMax = SingleDiff(WinYMax, dy);
  WinYMin = SingleDiff(WinYMin, dy);
  ScaleRoom32();
}

void QueloView::InitView() {
  FacePbx.ScaleMode(kScalePixels);
  FaceGL.auxMakeCurrent();
  FaceGL.oglClearColor(1.0f, 1.0f, 1.0f, 0.0f);
  FaceGL.oglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

  FacePbx.ScaleMode(kScalePixels);
  FaceGL.oglViewport(CLng(FacePbx.ScaleLeft()), CLng(FacePbx.ScaleTop()),
                     CLng(FacePbx.ScaleWidth()), CLng(FacePbx.ScaleHeight()));
  FaceGL.oglLoadIdentity();

  ScaleRoom32();
  const Single left = FacePbx.ScaleLeft();
  const Single top = FacePbx.ScaleTop();
  const Single width = FacePbx.ScaleWidth();
  const Single height = FacePbx.ScaleHeight();  // negative: y grows upwards
  FaceGL.oglOrtho(left, CheckSingle(static_cast<double>(left) + width),
                  CheckSingle(static_cast<double>(top) + height), top, -10000, 10000);

  FaceGL.oglTranslatef(0, 0, 0);
  FaceGL.oglRotatef(IntSub(Ver_Scr.Value(), 90), 1, 0, 0);
  FaceGL.oglRotatef(IntSub(360, Hor_Scr.Value()), 0, 0, 1);
  FaceGL.oglEnable(GL_DEPTH_TEST);
}

void QueloView::prv_InitGL() {
  if (gl_started_) return;
  FacePbx.AutoRedraw(false);
  // The window is shrunk to nothing while the context is made and given back
  // its size afterwards.
  const Long width = FormWidth;
  const Long height = FormHeight;
  FormWidth = 0;
  FormHeight = 0;
  FaceGL.ExtHDC(FacePbx.hDC());
  FaceGL.InitRC();
  FaceGL.auxMakeCurrent();
  // Creates the font lists before any scene text needs them.
  FaceGL.fntPrintAt("HALLO", 0, 0, 0);
  gl_started_ = true;
  FormWidth = width;
  FormHeight = height;
}

// ---- Redraw ---------------------------------------------------------------------

void QueloView::RenderIt(bool&& Reload, bool&& ResetView) {
  bool reload = Reload;
  bool reset_view = ResetView;
  RenderIt(reload, reset_view);
}

void QueloView::RenderIt(bool& Reload, bool& ResetView) {
  for (;;) {
    Single q = 0;
    Screen.MousePointer(kPointerHourglass);

    Single y_min = 0, y_max = 0;  // not needed
    if (!Reload && ResetView) {
      BusyScope busy(Busy);
      prv_CompViewBox();
      SetOrthoZoom(1.0f);
      prv_CompFullBox(FullXRange[0], FullXRange[1], y_min, y_max);
    }

    // How the present zoom relates to the width of the rotated room box, so
    // the zoom bar can follow when the rotation changes that width.
    if (FullXRange[0] != FullXRange[1]) {
      q = CheckSingle(static_cast<double>(SingleDiff(WinXMax, WinXMin)) * GetOrthoZoom() /
                      SingleDiff(FullXRange[1], FullXRange[0]));
    }
    prv_CompFullBox(FullXRange[0], FullXRange[1], y_min, y_max);

    InitView();
    FaceGL.oglDisable(GL_LIGHTING);

    SceneListState scene{RenderList, RoomBox};
    try {
      BuildSceneList(FaceGL, Reload, scene, SceneFileName, Utils_AxesOn.Checked(),
                     Utils_GridsOn.Checked());
    } catch (...) {
      RenderList = scene.RenderList;
      RoomBox = scene.RoomBox;
      throw;
    }
    RenderList = scene.RenderList;
    RoomBox = scene.RoomBox;

    FaceGL.oglCallList(RenderList);
    RenderAxes();
    FaceGL.oglSwapBuffers();
    Screen.MousePointer(kPointerDefault);

    // A reload draws once more as a plain pass (and fits the new scene when
    // asked to).
    if (Reload) {
      Reload = false;
      continue;
    }

    if (q > 0 && FullXRange[0] != FullXRange[1]) {
      const Single z =
          DivSingle(CheckSingle(static_cast<double>(SingleDiff(FullXRange[1], FullXRange[0])) * q),
                    SingleDiff(WinXMax, WinXMin));
      SetOrthoZoom(z);
    }
    return;
  }
}

void QueloView::RenderAxes() {
  FaceGL.oglColor3f(1, 0, 0);
  FaceGL.oglBegin(GL_LINES);
  FaceGL.oglVertex3f(kAxisFrom, 0, 0);
  FaceGL.oglVertex3f(kAxisTo, 0, 0);
  FaceGL.oglEnd();

  FaceGL.oglColor3f(0, 1, 0);
  FaceGL.oglBegin(GL_LINES);
  FaceGL.oglVertex3f(0, kAxisFrom, 0);
  FaceGL.oglVertex3f(0, kAxisTo, 0);
  FaceGL.oglEnd();

  FaceGL.oglColor3f(0, 0, 1);
  FaceGL.oglBegin(GL_LINES);
  FaceGL.oglVertex3f(0, 0, kAxisFrom);
  FaceGL.oglVertex3f(0, 0, kAxisTo);
  FaceGL.oglEnd();
}

Long QueloView::FreeRenderLists() {
  if (RenderList != 0) {
    FaceGL.oglDeleteLists(RenderList, 1);
    RenderList = 0;
  }
  return 0;
}

void QueloView::Zoom_Scr_Change() {
  if (Busy) return;
  const Single cx = CheckSingle((static_cast<double>(WinXMin) + WinXMax) / 2.0);
  const Single cy = CheckSingle((static_cast<double>(WinYMin) + WinYMax) / 2.0);
  prv_CompFullBox(WinXMin, WinXMax, WinYMin, WinYMax);
  ScaleRoom32();

  const Single w = CheckSingle(static_cast<double>(GetOrthoZoom()) * SingleDiff(WinXMax, WinXMin));
  WinXMin = CheckSingle(cx - w / 2.0);
  WinXMax = CheckSingle(cx + w / 2.0);
  const Single h = CheckSingle(static_cast<double>(GetOrthoZoom()) * SingleDiff(WinYMax, WinYMin));
  WinYMin = CheckSingle(cy - h / 2.0);
  WinYMax = CheckSingle(cy + h / 2.0);

  ScaleRoom32();
  RenderIt(false, false);
}

}  // namespace quelo
