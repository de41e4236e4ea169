// The control on a real headless surface (EGL, surfaceless Mesa): the format
// list, the context lifecycle, a display list and text drawn and read back.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <array>
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

using Rgba = std::array<int, 4>;

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

  TempDir dir;
  EglSurface surface{64, 48};
  OpenGL_Ctrl ctrl;
};

TEST_F(EglTest, FormatOneAndFirstDoubleBufferedAreGoodPlainSoftwareFormats) {
  PIXELFORMATDESCRIPTOR pfd;
  const int count = surface.DescribePixelFormat(1, &pfd);
  ASSERT_GT(count, 1);
  // Mesa renders in software: every format carries the generic flag.
  EXPECT_EQ(pfd.dwFlags,
            PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER | PFD_GENERIC_FORMAT);
  EXPECT_EQ(pfd.iPixelType, PFD_TYPE_RGBA);
  EXPECT_EQ((Rgba{pfd.cRedBits, pfd.cGreenBits, pfd.cBlueBits, pfd.cRedShift}),
            (Rgba{8, 8, 8, 16}));
  EXPECT_EQ(pfd.cColorBits, 24);
  EXPECT_GE(pfd.cDepthBits, 24);
  EXPECT_EQ(surface.DescribePixelFormat(count, &pfd), count);
  EXPECT_EQ(surface.DescribePixelFormat(count + 1, &pfd), 0);
  EXPECT_EQ(surface.DescribePixelFormat(0, &pfd), 0);
  EXPECT_EQ(ctrl.prv_ChoosePixelFormat(surface), 1);  // without a settings file
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

  const GLDispatch& gl = GL();
  const GLuint list = gl.glGenLists(1);
  ASSERT_NE(list, 0u);
  gl.glNewList(list, GL_COMPILE);
  gl.glColor3f(1, 0, 0);
  gl.glRectf(-1, 0, 1, 1);  // the top half red
  gl.glEndList();

  // The identity maps the square from -1 to 1 onto the whole picture.
  gl.glViewport(0, 0, surface.width(), surface.height());
  gl.glClearColor(0, 0, 1, 1);
  gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
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
  EXPECT_GT(Count(image, white, 0, 28, 64, 48), 30);
  EXPECT_EQ(Count(image, white, 0, 0, 64, 28), 0);
  EXPECT_EQ(Count(image, white, 0, 0, 3, 48), 0);
  EXPECT_EQ(Count(image, white, 0, 42, 64, 48), 0);  // capitals sit on the baseline

  // InitRC again keeps the context and the picture's lists.
  ASSERT_TRUE(ctrl.InitRC());
  EXPECT_TRUE(gl.glIsList(list));
  EXPECT_TRUE(messages.Texts().empty());
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
