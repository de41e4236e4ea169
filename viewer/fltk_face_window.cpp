#define FL_INTERNALS
#include "viewer/fltk_face_window.h"

#include <FL/Fl.H>
#include <FL/Fl_RGB_Image.H>
#include <FL/x.H>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

#include "common/runtime_error.h"
#include "glctrl/surface_glx.h"

namespace quelo {
namespace {

// The FLTK image of a cursor picture, made once.
const Fl_RGB_Image& CursorImage(CursorKind kind) {
  static std::map<CursorKind, std::unique_ptr<Fl_RGB_Image>> images;
  auto& image = images[kind];
  if (!image) {
    const auto& picture = GetCursorPicture(kind);
    image = std::make_unique<Fl_RGB_Image>(picture.rgba.data(), CursorPicture::kSize,
                                           CursorPicture::kSize, 4);
  }
  return *image;
}

// The button that went down or up, as the handlers count it.
Integer ButtonOfEvent() {
  switch (Fl::event_button()) {
    case FL_LEFT_MOUSE:
      return kLeftButton;
    case FL_RIGHT_MOUSE:
      return kRightButton;
    case FL_MIDDLE_MOUSE:
      return kMiddleButton;
    default:
      return 0;
  }
}

// The buttons held during a move.
Integer ButtonsHeld() {
  const int state = Fl::event_state();
  Integer held = 0;
  if (state & FL_BUTTON1) held |= kLeftButton;
  if (state & FL_BUTTON3) held |= kRightButton;
  if (state & FL_BUTTON2) held |= kMiddleButton;
  return held;
}

Integer ShiftState() {
  const int state = Fl::event_state();
  Integer shift = 0;
  if (state & FL_SHIFT) shift |= 1;
  if (state & FL_CTRL) shift |= 2;
  if (state & FL_ALT) shift |= 4;
  return shift;
}

}  // namespace

FltkFaceWindow::FltkFaceWindow(int x, int y, int w, int h) : Fl_Window(x, y, w, h) {
  end();
  box(FL_NO_BOX);  // GL paints every pixel; nothing to clear first
}

FltkFaceWindow::~FltkFaceWindow() {
  ReleaseSurface();
}

void FltkFaceWindow::show() {
  if (!shown() && form_ != nullptr) {
    fl_open_display();
    surface_ = std::make_unique<GlxSurface>(fl_display, fl_screen);
    // An X window has its visual from birth: take the format the control is
    // going to choose before the window exists.
    int index = 0;
    try {
      index = form_->FaceGL.prv_ChoosePixelFormat(*surface_);
    } catch (const RuntimeError&) {
      index = 0;  // the context set-up reports its own trouble later
    }
    const auto wv = surface_->VisualForFormat(index);
    if (wv.visual != nullptr) {
      Fl_X::make_xid(this, wv.visual, wv.colormap);
    } else {
      Fl_X::make_xid(this);
    }
    surface_->AttachWindow(fl_xid(this));
    form_->FacePbx.hDC(surface_.get());
  }
  Fl_Window::show();
}

void FltkFaceWindow::hide() {
  ReleaseSurface();
  Fl_Window::hide();
}

void FltkFaceWindow::ReleaseSurface() {
  if (gc_ != 0 && fl_display != nullptr) {
    XFreeGC(fl_display, reinterpret_cast<GC>(gc_));
    gc_ = 0;
  }
  if (surface_) surface_->DetachWindow();
}

void FltkFaceWindow::draw() {
  if (form_ == nullptr) return;
  RunHandler([this] { form_->FacePbx_Paint(); });
  if (band_) DrawBand(*band_);  // an expose during a zoom drag
}

void FltkFaceWindow::Forward(int event) {
  auto& box = form_->FacePbx;
  const Single x = box.ToScaleX(Fl::event_x());
  const Single y = box.ToScaleY(Fl::event_y());
  RunHandler([&] {
    switch (event) {
      case FL_PUSH:
        form_->FacePbx_MouseDown(ButtonOfEvent(), ShiftState(), x, y);
        break;
      case FL_RELEASE:
        form_->FacePbx_MouseUp(ButtonOfEvent(), ShiftState(), x, y);
        break;
      default:
        form_->FacePbx_MouseMove(ButtonsHeld(), ShiftState(), x, y);
        break;
    }
  });
}

int FltkFaceWindow::handle(int event) {
  if (form_ == nullptr) return Fl_Window::handle(event);
  switch (event) {
    case FL_PUSH:
      band_.reset();
      Forward(event);
      return 1;
    case FL_DRAG:
    case FL_MOVE:
      Forward(event);
      return 1;
    case FL_RELEASE:
      band_.reset();
      Forward(event);
      return 1;
    case FL_ENTER:
      pointer_inside_ = true;
      UpdateCursor();
      return 1;
    case FL_LEAVE:
      pointer_inside_ = false;
      UpdateCursor();
      return 1;
    default:
      return Fl_Window::handle(event);
  }
}

void FltkFaceWindow::UpdateCursor() {
  Fl_Window* top = top_window();
  if (form_ == nullptr || top == nullptr || !top->shown()) return;
  // A cursor set on a child window is the top-level window's: set it there
  // and put the default back when the mouse leaves the drawing area.
  const auto& box = form_->FacePbx;
  if (Screen().MousePointer() == kPointerHourglass ||
      (pointer_inside_ && box.MousePointer() == kPointerHourglass)) {
    top->cursor(FL_CURSOR_WAIT);
  } else if (pointer_inside_ && box.MousePointer() == kPointerCustom && box.MouseIcon() >= 1 &&
             box.MouseIcon() <= static_cast<Long>(kAllCursorKinds.size())) {
    const auto kind = kAllCursorKinds[static_cast<std::size_t>(box.MouseIcon() - 1)];
    const auto& picture = GetCursorPicture(kind);
    top->cursor(&CursorImage(kind), picture.hot_x, picture.hot_y);
  } else {
    top->cursor(FL_CURSOR_DEFAULT);
  }
}

void FltkFaceWindow::DrawBox(double x1, double y1, double x2, double y2) {
  band_ = Band{x1, y1, x2, y2};
  DrawBand(*band_);
}

void FltkFaceWindow::DrawBand(const Band& band) {
  if (!shown()) return;
  Display* display = fl_display;
  const Window window = fl_xid(this);
  if (gc_ == 0) {
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, window, &attributes);
    const Visual* visual = attributes.visual;
    const unsigned long white = visual->red_mask | visual->green_mask | visual->blue_mask;
    GC gc = XCreateGC(display, window, 0, nullptr);
    XSetForeground(display, gc, 0);
    XSetBackground(display, gc, white != 0 ? white : WhitePixel(display, fl_screen));
    XSetLineAttributes(display, gc, 1, LineDoubleDash, CapButt, JoinMiter);
    XSetGraphicsExposures(display, gc, False);
    gc_ = reinterpret_cast<unsigned long>(gc);
  }
  // X coordinates are 16-bit; a band reaching far outside is cut to a frame
  // just beyond the window.
  auto clip = [](double v, int size) { return std::clamp(v, -2.0, size + 2.0); };
  const double x1 = clip(band.x1, w()), x2 = clip(band.x2, w());
  const double y1 = clip(band.y1, h()), y2 = clip(band.y2, h());
  const auto left = static_cast<int>(std::lround(std::min(x1, x2)));
  const auto top = static_cast<int>(std::lround(std::min(y1, y2)));
  const auto width = static_cast<unsigned>(std::lround(std::fabs(x2 - x1)));
  const auto height = static_cast<unsigned>(std::lround(std::fabs(y2 - y1)));
  XDrawRectangle(display, window, reinterpret_cast<GC>(gc_), left, top, width, height);
  XFlush(display);
}

}  // namespace quelo
