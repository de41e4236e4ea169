// The control's rendering context: pixel-format choice (with the settings file
// KIVOhogl.ini), palette, context creation, making current and shutdown.
#include <dlfcn.h>

#include "common/messages.h"
#include "common/runtime_error.h"
#include "glctrl/opengl_ctrl.h"
#include "glctrl/pixel_format.h"
#include "glctrl/surface.h"

namespace quelo {

namespace {

// Shared by every control: the descriptor the choice read last, and the
// palette of the last set-up.
PIXELFORMATDESCRIPTOR g_pixel_format_buffer;
PaletteHandle g_palette = 0;

constexpr std::uint32_t kWindowGLDouble =
    PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;

}  // namespace

bool OpenGL_Ctrl::InitRC() {
  try {
    // Loaded so that GL is present before any context exists; never freed,
    // and nothing is looked up through the handle.
    (void)dlopen("libGL.so.1", RTLD_LAZY | RTLD_GLOBAL);
    g_palette = 0;
    SetDCPixelFormat();
    if (rendering_context_ == nullptr && ext_hdc_ != nullptr) {
      rendering_context_ = ext_hdc_->CreateContext();
    }
    if (rendering_context_ != nullptr) {
      if (ext_hdc_ != nullptr) ext_hdc_->MakeCurrent(rendering_context_);
      initialised_ = -1;
      return true;
    }
    MsgBox("Cannot Create Context");
    return false;
  } catch (const RuntimeError&) {
    MsgBox("Error in InitRC");
    return false;
  }
}

void OpenGL_Ctrl::SetDCPixelFormat() {
  try {
    // What the properties ask for. It is filled in and then replaced by the
    // descriptor of the chosen format: the index alone decides.
    PIXELFORMATDESCRIPTOR pfd =
        NewDescriptor((init_flags_ & PFD_GENERIC_FORMAT) ? kWindowGLDouble | PFD_GENERIC_FORMAT
                                                         : kWindowGLDouble);
    if (init_flags_ & PFD_GENERIC_ACCELERATED) pfd.dwFlags |= PFD_GENERIC_ACCELERATED;
    pfd.iPixelType = PFD_TYPE_RGBA;
    switch (init_color_bits_) {
      case 8:
      case 16:
      case 32:
        pfd.cColorBits = static_cast<std::uint8_t>(init_color_bits_);
        break;
      default:
        pfd.cColorBits = 24;
    }
    switch (init_depth_bits_) {
      case 16:
      case 24:
        pfd.cDepthBits = static_cast<std::uint8_t>(init_depth_bits_);
        break;
      default:
        pfd.cDepthBits = 32;
    }

    if (ext_hdc_ == nullptr) Raise(kErrInvalidCall);
    DrawingSurface& dc = *ext_hdc_;
    const Long index = prv_ChoosePixelFormat(dc);
    pfd = g_pixel_format_buffer;

    if (!dc.SetPixelFormat(index, pfd)) Raise(kErrInvalidCall);
    if (dc.DescribePixelFormat(index, &pfd) == 0) Raise(kErrInvalidCall);
    if (!(pfd.dwFlags & PFD_NEED_PALETTE)) return;

    const LOGPALETTE palette = BuildPalette(pfd);
    g_palette = dc.CreatePalette(palette);
    if (g_palette == 0) return;
    dc.SelectPalette(g_palette, false);
    dc.RealizePalette();
  } catch (const RuntimeError&) {
    MsgBox("Error in SetDCPixelFormat");
  }
}

Long OpenGL_Ctrl::prv_ChoosePixelFormat(DrawingSurface& hDC) {
  const PixelFormatSettings settings = ReadPixelFormatSettings(SettingsDirectory);
  const bool prefer_accelerated = settings.PreferAccelerated == -1;
  const Long pinned = settings.PixelFormatIndex;

  g_pixel_format_buffer = PIXELFORMATDESCRIPTOR{};
  const Long count = hDC.DescribePixelFormat(1, &g_pixel_format_buffer);
  // Strictly below the count: the last format cannot be pinned.
  if (pinned >= 1 && pinned < count) return pinned;

  // An index from the file, even an unusable one, counts as a fallback
  // already remembered.
  Long fallback = pinned;
  for (Long i = 1; i <= count; ++i) {
    g_pixel_format_buffer = PIXELFORMATDESCRIPTOR{};
    hDC.DescribePixelFormat(i, &g_pixel_format_buffer);
    const std::uint32_t flags = g_pixel_format_buffer.dwFlags;
    if ((flags & kWindowGLDouble) != kWindowGLDouble) continue;
    const bool generic = flags & PFD_GENERIC_FORMAT;
    const bool accelerated = flags & PFD_GENERIC_ACCELERATED;
    if (generic && !accelerated) {
      if (!prefer_accelerated) return i;
      if (fallback == 0) fallback = i;
    } else if (prefer_accelerated) {
      // Generic accelerated, or an installable client driver.
      return i;
    }
  }
  if (fallback != 0 && fallback < count) return fallback;
  return 1;
}

void OpenGL_Ctrl::auxMakeCurrent() {
  if (CurrentSurface() == ext_hdc_) return;
  SetDCPixelFormat();
  if (ext_hdc_ != nullptr) ext_hdc_->MakeCurrent(rendering_context_);
}

void OpenGL_Ctrl::auxMakeNoneCurrent() {
  MakeNoneCurrent();
}

Long OpenGL_Ctrl::auxShutDown() {
  auxMakeNoneCurrent();
  DeleteContext(rendering_context_);
  rendering_context_ = nullptr;
  ext_hdc_ = nullptr;
  if (initialised_ == -1) initialised_ = 0;
  return 0;
}

void OpenGL_Ctrl::oglSwapBuffers() {
  if (ext_hdc_ != nullptr) ext_hdc_->SwapBuffers();
}

}  // namespace quelo
