// EglSurface: a headless drawing surface for the command-line renderer,
// thumbnails and tests. It draws into an EGL pbuffer of a fixed size on Mesa's
// surfaceless platform (no display, no X libraries), with desktop OpenGL.
//
// Formats: the display's EGL configs that desktop OpenGL can render to a
// pbuffer with, in the program's order (pixel_format.h). Each carries
// DRAW_TO_WINDOW (the pbuffer is this surface's window), SUPPORT_OPENGL and
// DOUBLEBUFFER (the pbuffer is the back buffer, the kept image the front), and
// GENERIC_FORMAT when the device is a software renderer.
//
// EGL is loaded at run time: without it, or without a surfaceless display or
// desktop OpenGL, the surface offers no formats and Error() says why.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "glctrl/surface.h"

namespace quelo {

struct EglLibrary;

class EglSurface : public DrawingSurface {
 public:
  // A picture of width x height pixels (both at least 1). egl_library is the
  // EGL library to load; tests name a missing one.
  EglSurface(int width, int height, const std::string& egl_library = "libEGL.so.1");
  ~EglSurface() override;

  int DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) override;
  bool SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR& pfd) override;
  int GetPixelFormat() const override { return format_; }
  RenderingContext* CreateContext() override;
  // Reads the pbuffer into the kept image; false when this surface is not
  // current.
  bool SwapBuffers() override;
  std::string Error() const override { return error_; }

  int width() const { return width_; }
  int height() const { return height_; }
  // EGL_CONFIG_ID of format index (1-based); 0 outside the list.
  int ConfigId(int index) const;

  // The picture as of the last swap: rows top-down, 4 bytes a pixel (R, G, B,
  // A; A is 255 for formats without alpha). Empty before the first swap.
  struct Image {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgba;
  };
  const Image& KeptImage() const { return image_; }

 protected:
  bool DoMakeCurrent(RenderingContext* rc) override;
  void DoReleaseCurrent() override;
  bool IsCurrentOnPlatform(const RenderingContext* rc) const override;

 private:
  EglLibrary* egl_ = nullptr;  // process-wide, never unloaded
  int width_;
  int height_;
  int format_ = 0;
  void* pbuffer_ = nullptr;  // EGLSurface
  std::string error_;
  Image image_;
};

}  // namespace quelo
