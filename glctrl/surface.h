// DrawingSurface: the "device context" a host hands the control as ExtHDC.
//
// A surface numbers its pixel formats from 1 and describes each as a
// PIXELFORMATDESCRIPTOR, takes one of them, makes rendering contexts, makes
// them current on itself, swaps, takes a palette and names the font that text
// is drawn with. Implementations: GlxSurface (an X window, surface_glx.h),
// EglSurface (headless, surface_egl.h) and the test doubles.
//
// Contexts: a RenderingContext made by one surface can be made current on any
// surface of the same kind and display whose format is compatible; making a
// context of another kind current fails. Everything runs on one thread.
#pragma once

#include <cstdint>
#include <string>

#include "glctrl/pixel_format.h"

namespace quelo {

// A platform rendering context. Deleting it (DeleteContext) releases it first
// when it is current.
class RenderingContext {
 public:
  virtual ~RenderingContext() = default;
};

// 0 for none.
using PaletteHandle = std::uintptr_t;

// The font of a surface: a fontconfig name, or the path of a font file when it
// begins with "/", at a size in points (96 dots per inch).
struct SurfaceFont {
  std::string name = "DejaVu Sans";
  double points = 10;
};

class DrawingSurface {
 public:
  DrawingSurface() = default;
  virtual ~DrawingSurface();  // stops being the current surface first
  DrawingSurface(const DrawingSurface&) = delete;
  DrawingSurface& operator=(const DrawingSurface&) = delete;

  // Fills *pfd (when not null) with format index (1-based) and returns the
  // number of formats; returns 0 and leaves *pfd alone when index is outside
  // 1..count or the surface has no formats.
  virtual int DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) = 0;
  // Takes format index. A surface takes one format for its life: setting the
  // format it already has succeeds, any other fails. pfd is informational.
  virtual bool SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR& pfd) = 0;
  // The format taken, 0 while none.
  virtual int GetPixelFormat() const = 0;

  // A new context for the surface's format; nullptr when none can be made
  // (no format set, platform failure).
  virtual RenderingContext* CreateContext() = 0;
  // Makes rc current on this surface; nullptr releases the current context.
  bool MakeCurrent(RenderingContext* rc);
  // Shows the picture drawn since the last swap.
  virtual bool SwapBuffers() = 0;

  // The palette hooks of a need-palette format; surfaces without colour-index
  // visuals refuse (CreatePalette returns 0).
  virtual PaletteHandle CreatePalette(const LOGPALETTE& palette);
  virtual PaletteHandle SelectPalette(PaletteHandle palette, bool background);
  virtual int RealizePalette();

  const SurfaceFont& Font() const { return font_; }
  void SetFont(SurfaceFont font) { font_ = std::move(font); }

  // Why the surface offers no formats or failed last, for messages; empty when
  // nothing went wrong.
  virtual std::string Error() const { return {}; }

 protected:
  virtual bool DoMakeCurrent(RenderingContext* rc) = 0;
  // Releases whatever context this surface made current.
  virtual void DoReleaseCurrent() = 0;
  // Whether rc is still current on this surface as far as the platform knows
  // (someone else may have made another context current since).
  virtual bool IsCurrentOnPlatform(const RenderingContext* rc) const = 0;

 private:
  friend DrawingSurface* CurrentSurface();
  friend bool MakeNoneCurrent();
  friend bool DeleteContext(RenderingContext* rc);
  SurfaceFont font_;
};

// The surface whose context is current on this thread, nullptr when none.
DrawingSurface* CurrentSurface();
// The context current on this thread, nullptr when none.
RenderingContext* CurrentContext();
// Releases the current context, whatever surface holds it.
bool MakeNoneCurrent();
// Deletes rc (released first when current); false for nullptr.
bool DeleteContext(RenderingContext* rc);

// Whether a blank-separated extension list (EGL, GLX) names `word` whole.
bool ExtensionListHas(const char* list, const char* word);

}  // namespace quelo
