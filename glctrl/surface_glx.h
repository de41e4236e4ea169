// GlxSurface: an X window drawn with GLX, for windowed hosts (the viewer's
// FLTK child window).
//
// Formats: the screen's GLX framebuffer configurations that a window can use
// (window drawable, an X visual, RGBA or colour index), in the program's order
// (pixel_format.h). GENERIC_FORMAT marks every format when the renderer is
// software (GLX_MESA_query_renderer says not accelerated), NEED_PALETTE a
// PseudoColor visual, SWAP_COPY/SWAP_EXCHANGE the OML swap method.
//
// An X window has its visual from birth, so the host creates the window after
// the format is known:
//
//   GlxSurface surface(fl_display, fl_screen);
//   const int index = control.prv_ChoosePixelFormat(surface);
//   const auto wv = surface.VisualForFormat(index);          // nullptr visual: no formats
//   Fl_X::make_xid(child, wv.visual, wv.colormap);           // or XCreateWindow
//   surface.AttachWindow(fl_xid(child));
//   control.ExtHDC(&surface);
//   control.InitRC();
//
// SetPixelFormat then fails for a format whose visual is not the window's.
// Before the X window goes away, DetachWindow() (or destroy the surface).
//
// Xlib and GLX are loaded at run time (libX11.so.6, libGLX.so.0): linking
// this surface adds no X libraries to a program; without them Error() says
// so and there are no formats.
#pragma once

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <string>
#include <vector>

#include "glctrl/surface.h"

namespace quelo {

class GlxSurface : public DrawingSurface {
 public:
  // display is not owned and must outlive the surface and its contexts.
  GlxSurface(Display* display, int screen);
  // XOpenDisplay(DISPLAY) through the run-time loaded Xlib, for programs that
  // do not link it; nullptr and a reason when there is none.
  static Display* OpenDisplay(std::string& error);
  static void CloseDisplay(Display* display);
  ~GlxSurface() override;

  struct WindowVisual {
    XVisualInfo* visual = nullptr;  // owned by the surface
    Colormap colormap = 0;          // owned by the surface, made for visual
  };
  // What an X window for format index (1-based) must be created with; a null
  // visual outside the list.
  WindowVisual VisualForFormat(int index);

  // The window to draw on; it replaces any earlier one, whose format is
  // forgotten (a new window takes its format anew).
  void AttachWindow(Window window);
  // Lets go of the window (its GLX drawable is destroyed); the format too.
  void DetachWindow();
  Window window() const { return window_; }
  Display* display() const { return display_; }
  int screen() const { return screen_; }

  // GLX_FBCONFIG_ID and visual id of format index; 0 outside the list.
  int FBConfigId(int index) const;
  VisualID VisualIdOf(int index) const;
  // Whether the renderer reported itself as software.
  bool Software() const { return software_; }

  int DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) override;
  bool SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR& pfd) override;
  int GetPixelFormat() const override { return format_; }
  RenderingContext* CreateContext() override;
  bool SwapBuffers() override;
  // Colour-index (PseudoColor) windows only: a colormap of the window's visual
  // filled with the entries, set on the window.
  PaletteHandle CreatePalette(const LOGPALETTE& palette) override;
  PaletteHandle SelectPalette(PaletteHandle palette, bool background) override;
  int RealizePalette() override;
  std::string Error() const override { return error_; }

 protected:
  bool DoMakeCurrent(RenderingContext* rc) override;
  void DoReleaseCurrent() override;
  bool IsCurrentOnPlatform(const RenderingContext* rc) const override;

 private:
  void ListFormats();
  GLXFBConfig ConfigOf(int index) const;

  Display* display_;
  int screen_;
  bool software_ = false;
  GLXFBConfig* configs_ = nullptr;        // from glXGetFBConfigs
  std::vector<FormatCandidate> formats_;  // native = index into configs_
  std::vector<WindowVisual> visuals_;     // made on request, per format
  Window window_ = 0;
  GLXWindow glx_window_ = 0;
  int format_ = 0;
  std::vector<Colormap> palettes_;
  std::string error_;
};

}  // namespace quelo
