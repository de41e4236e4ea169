// The control on a real headless surface (EGL, surfaceless Mesa): the format
// list, the context lifecycle, a display list and text drawn and read back.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <vector>

#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "glctrl/pixel_format.h"
#include "glctrl/surface_egl.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::TempDir;

struct Rgba {
  int r, g, b, a;
  bool operator==(const Rgba&) const = default;
};
std::ostream& operator<<(std::ostream& os, const Rgba& c) {
  return os << "(" << c.r << ", " << c.g << ", " << c.b << ", " << c.a << ")";
}

Rgba At(const EglSurface::Image& image, int x, int y) {  // y from the top
  const auto* p = image.rgba.data() + (static_cast<std::size_t>(y) * image.width + x) * 4;
  return {p[0], p[1], p[2], p[3]};
}

// Pixels of the colour inside the rectangle [x0, x1) x [y0, y1).
int Count(const EglSurface::Image& image, Rgba colour, int x0, int y0, int x1, int y1) {
  int n = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) n += At(image, x, y) == colour;
  }
  return n;
}

class EglTest : public ::testing::Test {
 protected:
  EglTest() { ctrl.SettingsDirectory = dir.path().string(); }
  void SetUp() override { ASSERT_EQ(surface.Error(), "") << "headless rendering needs Mesa's EGL"; }
  void TearDown() override { ctrl.auxShutDown(); }

  // A 2x2 unit square on the whole picture, cleared blue.
  void StartFrame() {
    const GLDispatch& gl = GL();
    gl.glViewport(0, 0, surface.width(), surface.height());
    gl.glMatrixMode(GL_PROJECTION);
    gl.glLoadIdentity();
    gl.glMatrixMode(GL_MODELVIEW);
    gl.glLoadIdentity();
    gl.glClearColor(0, 0, 1, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  }

  TempDir dir;
  EglSurface surface{64, 48};
  OpenGL_Ctrl ctrl;
};

TEST_F(EglTest, FormatOneAndFirstDoubleBufferedAreGoodPlainSoftwareFormats) {
  PIXELFORMATDESCRIPTOR pfd;
  const int count = surface.DescribePixelFormat(1, &pfd);
  ASSERT_GT(count, 1);
  EXPECT_EQ(pfd.nSize, 40);
  EXPECT_EQ(pfd.nVersion, 1);
  // Mesa renders in software: every format carries the generic flag.
  EXPECT_EQ(pfd.dwFlags,
            PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER | PFD_GENERIC_FORMAT);
  EXPECT_EQ(pfd.iPixelType, PFD_TYPE_RGBA);
  EXPECT_EQ(pfd.cColorBits, 24);
  EXPECT_EQ(pfd.cRedBits, 8);
  EXPECT_EQ(pfd.cGreenBits, 8);
  EXPECT_EQ(pfd.cBlueBits, 8);
  EXPECT_EQ(pfd.cRedShift, 16);
  EXPECT_GE(pfd.cDepthBits, 24);
  PIXELFORMATDESCRIPTOR last;
  EXPECT_EQ(surface.DescribePixelFormat(count, &last), count);
  EXPECT_EQ(surface.DescribePixelFormat(count + 1, &last), 0);
  EXPECT_EQ(surface.DescribePixelFormat(0, &last), 0);
  // Without a settings file the choice is format 1.
  EXPECT_EQ(ctrl.prv_ChoosePixelFormat(surface), 1);
}

TEST_F(EglTest, ContextDrawsDisplayListAndTextThatReadBack) {
  ScopedRecordedMessages messages;
  ctrl.ExtHDC(&surface);
  ASSERT_TRUE(ctrl.InitRC());
  ctrl.auxMakeCurrent();
  ctrl.fntPrintAt("HALLO", 0, 0, 0);  // the viewer's one-time start
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(CurrentSurface(), &surface);
  EXPECT_EQ(surface.GetPixelFormat(), 1);
  EXPECT_EQ(ctrl.hglRC(), 0);

  const GLDispatch& gl = GL();
  const GLuint list = gl.glGenLists(1);
  ASSERT_NE(list, 0u);
  gl.glNewList(list, GL_COMPILE);
  gl.glColor3f(1, 0, 0);
  gl.glRectf(-1, 0, 1, 1);  // the top half red
  gl.glEndList();

  StartFrame();
  gl.glCallList(list);
  gl.glColor3f(1, 1, 1);
  ctrl.fntPrintAt("HALLO", -0.9, -0.7, 0);  // white text low on the left
  ctrl.oglSwapBuffers();

  const EglSurface::Image& image = surface.KeptImage();
  ASSERT_EQ(image.width, 64);
  ASSERT_EQ(image.height, 48);
  const Rgba red{255, 0, 0, 255}, blue{0, 0, 255, 255}, white{255, 255, 255, 255};
  // Rows come top-down.
  EXPECT_EQ(At(image, 10, 2), red);
  EXPECT_EQ(At(image, 60, 20), red);
  EXPECT_EQ(At(image, 60, 30), blue);
  // The text starts at x = 3 and its baseline lies at y = 40.8 from the top.
  const int text = Count(image, white, 0, 28, 64, 48);
  EXPECT_GT(text, 30);
  EXPECT_EQ(Count(image, white, 0, 0, 64, 28), 0);
  EXPECT_EQ(Count(image, white, 0, 0, 3, 48), 0);
  EXPECT_EQ(Count(image, white, 0, 42, 64, 48), 0);  // capitals sit on the baseline

  // InitRC again keeps the context and the picture's lists.
  RenderingContext* context = CurrentContext();
  ASSERT_TRUE(ctrl.InitRC());
  EXPECT_EQ(CurrentContext(), context);
  EXPECT_TRUE(gl.glIsList(list));
  EXPECT_TRUE(messages.Texts().empty());

  EXPECT_EQ(ctrl.auxShutDown(), 0);
  EXPECT_EQ(CurrentSurface(), nullptr);
  EXPECT_EQ(CurrentContext(), nullptr);
  EXPECT_EQ(ctrl.ExtHDC(), nullptr);
}

TEST(EglSurfaceErrors, MissingEglGivesMessagesNotACrash) {
  EglSurface surface(16, 16, "libEGL-quelo-missing.so.1");
  EXPECT_NE(surface.Error().find("libEGL-quelo-missing.so.1"), std::string::npos)
      << surface.Error();
  EXPECT_EQ(surface.DescribePixelFormat(1, nullptr), 0);
  OpenGL_Ctrl ctrl;
  TempDir dir;
  ctrl.SettingsDirectory = dir.path().string();
  ctrl.ExtHDC(&surface);
  ScopedRecordedMessages messages;
  EXPECT_FALSE(ctrl.InitRC());
  EXPECT_EQ(messages.Texts(),
            (std::vector<std::string>{"Error in SetDCPixelFormat", "Cannot Create Context"}));
  EXPECT_FALSE(surface.SwapBuffers());
}

}  // namespace
}  // namespace quelo
