// The control on real FLTK child windows drawn with GLX (needs an X display), made
// with the visual of the chosen format as the viewer makes its drawing surface.
#include <gtest/gtest.h>

#define FL_INTERNALS
#include <FL/Fl.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "glctrl/surface_glx.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::TempDir;

// A child window whose X window gets the visual of a GLX format.
class SurfaceWindow : public Fl_Window {
 public:
  SurfaceWindow(int x, int y, int w, int h) : Fl_Window(x, y, w, h) { end(); }
  void UseVisual(GlxSurface::WindowVisual visual) { visual_ = visual; }
  void show() override {
    if (!shown() && visual_.visual != nullptr) {
      Fl_X::make_xid(this, visual_.visual, visual_.colormap);
    }
    Fl_Window::show();
  }
  void draw() override {}  // GL draws here, not FLTK

 private:
  GlxSurface::WindowVisual visual_;
};

// The colour of the middle pixel of a 100x100 X window, as the server has it.
unsigned long MiddlePixel(Window window) {
  XSync(fl_display, False);
  XImage* image = XGetImage(fl_display, window, 50, 50, 1, 1, AllPlanes, ZPixmap);
  if (image == nullptr) return 0xDEAD;
  const unsigned long pixel = XGetPixel(image, 0, 0) & 0xFFFFFF;
  XDestroyImage(image);
  return pixel;
}

// Clears the current 100x100 window to a colour and shows it.
void FillAndSwap(OpenGL_Ctrl& ctrl, float r, float g, float b) {
  GL().glViewport(0, 0, 100, 100);
  GL().glClearColor(r, g, b, 1);
  GL().glClear(GL_COLOR_BUFFER_BIT);
  ctrl.oglSwapBuffers();
}

class GlxTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!XOpenDisplayWorks()) {
      const char* required = std::getenv("QUELO_REQUIRE_DISPLAY");
      if (required != nullptr && std::string(required) == "1") {
        FAIL() << "no usable X display, and QUELO_REQUIRE_DISPLAY=1";
      }
      GTEST_SKIP() << "no X display";
    }
    fl_open_display();
    ctrl.SettingsDirectory = dir.path().string();
    // Window tests of other processes may share the display: a place of this
    // process's own keeps the pixels read back from being covered.
    const int slot = static_cast<int>(getpid() % 24);
    top = std::make_unique<Fl_Window>(640 + slot % 3 * 210, 40 + slot / 3 * 120, 200, 100,
                                      "quelo glx test");
    first = new SurfaceWindow(0, 0, 100, 100);
    second = new SurfaceWindow(100, 0, 100, 100);
    top->end();
    surface = std::make_unique<GlxSurface>(fl_display, fl_screen);
    ASSERT_EQ(surface->Error(), "");
  }
  void TearDown() override {
    if (!top) return;
    ctrl.auxShutDown();
    // The GLX drawables go before their X windows.
    other.reset();
    surface.reset();
    top->hide();
    top.reset();
    Fl::check();
  }

  static bool XOpenDisplayWorks() {
    for (int attempt = 0; attempt < 5; ++attempt) {
      if (Display* d = XOpenDisplay(nullptr)) {
        XCloseDisplay(d);
        return true;
      }
      usleep(100000);
    }
    return false;
  }

  // Shows the windows with the visual of format index, waiting until they are on screen.
  void ShowWith(int index) {
    first->UseVisual(surface->VisualForFormat(index));
    second->UseVisual(surface->VisualForFormat(index));
    top->show();
    for (int i = 0; i < 200 && !(first->visible_r() && second->visible_r()); ++i) Fl::wait(0.01);
    XRaiseWindow(fl_display, fl_xid(top.get()));
    XSync(fl_display, False);
    Fl::check();
  }

  TempDir dir;
  OpenGL_Ctrl ctrl;
  std::unique_ptr<Fl_Window> top;
  SurfaceWindow* first = nullptr;  // owned by top
  SurfaceWindow* second = nullptr;
  std::unique_ptr<GlxSurface> surface, other;
};

TEST_F(GlxTest, ChildWindowsShareTheContextOfTheChosenConfiguration) {
  PIXELFORMATDESCRIPTOR pfd;
  ASSERT_GT(surface->DescribePixelFormat(1, &pfd), 1);
  // Format 1 has 8 bits a channel, and is generic when GLX renders in software.
  EXPECT_EQ(pfd.dwFlags & PFD_GENERIC_FORMAT, surface->Software() ? PFD_GENERIC_FORMAT : 0u);
  EXPECT_EQ(pfd.cRedBits, 8);

  const int index = ctrl.prv_ChoosePixelFormat(*surface);
  ShowWith(index);
  surface->AttachWindow(fl_xid(first));
  ScopedRecordedMessages messages;
  ctrl.ExtHDC(surface.get());
  ASSERT_TRUE(ctrl.InitRC());
  EXPECT_EQ(surface->GetPixelFormat(), index);
  EXPECT_EQ(CurrentSurface(), surface.get());
  int config = 0;  // the configuration GLX really uses
  glXQueryContext(fl_display, glXGetCurrentContext(), GLX_FBCONFIG_ID, &config);
  EXPECT_EQ(config, surface->FBConfigId(index));
  ctrl.fntPrintAt("HALLO", 0, 0, 0);
  FillAndSwap(ctrl, 1, 0, 0);
  EXPECT_EQ(MiddlePixel(fl_xid(first)), 0xFF0000u);

  // Another device context: the same context is made current there.
  RenderingContext* context = CurrentContext();
  other = std::make_unique<GlxSurface>(fl_display, fl_screen);
  other->AttachWindow(fl_xid(second));
  ctrl.ExtHDC(other.get());
  ctrl.auxMakeCurrent();
  EXPECT_EQ(CurrentSurface(), other.get());
  EXPECT_EQ(CurrentContext(), context);
  EXPECT_EQ(other->GetPixelFormat(), index);
  FillAndSwap(ctrl, 0, 1, 0);
  EXPECT_EQ(MiddlePixel(fl_xid(second)), 0x00FF00u);
  EXPECT_EQ(MiddlePixel(fl_xid(first)), 0xFF0000u);
  EXPECT_TRUE(messages.Texts().empty());

  EXPECT_EQ(ctrl.auxShutDown(), 0);
  EXPECT_EQ(glXGetCurrentContext(), nullptr);
}

TEST_F(GlxTest, WindowWithAnotherVisualRefusesTheFormat) {
  // The window is made for format 1, but the file pins another visual.
  const VisualID first_visual = surface->VisualIdOf(1);
  int pinned = 2;
  while (surface->VisualIdOf(pinned) == first_visual) ++pinned;
  testing::WriteAll(dir.File("KIVOhogl.ini"),
                    {0, 0, 0, 0, static_cast<unsigned char>(pinned), 0, 0, 0});
  ShowWith(1);
  surface->AttachWindow(fl_xid(first));
  ctrl.ExtHDC(surface.get());
  ScopedRecordedMessages messages;
  EXPECT_FALSE(ctrl.InitRC());
  EXPECT_EQ(messages.Texts(),
            (std::vector<std::string>{"Error in SetDCPixelFormat", "Cannot Create Context"}));
  EXPECT_NE(surface->Error(), "");
}

}  // namespace
}  // namespace quelo
