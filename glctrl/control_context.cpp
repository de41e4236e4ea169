#include "glctrl/control_context.h"

#include <dlfcn.h>

#include "common/messages.h"
#include "common/runtime_error.h"

namespace quelo {

namespace {

constexpr std::uint32_t kWindowGLDouble =
    PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;

}  // namespace

bool ControlContext::Init(const std::string& settings_directory) {
  try {
    // Loaded so that GL is present before any context exists; never freed,
    // and nothing is looked up through the handle.
    (void)dlopen("libGL.so.1", RTLD_LAZY | RTLD_GLOBAL);
    palette_ = 0;
    SetPixelFormat(settings_directory);
    if (rendering_context_ == nullptr && surface_ != nullptr) {
      rendering_context_ = surface_->CreateContext();
    }
    if (rendering_context_ != nullptr) {
      if (surface_ != nullptr) surface_->MakeCurrent(rendering_context_);
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

void ControlContext::SetPixelFormat(const std::string& settings_directory) {
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

    if (surface_ == nullptr) Raise(kErrInvalidCall);
    DrawingSurface& dc = *surface_;
    const Long index = ChoosePixelFormat(dc, settings_directory);
    pfd = pixel_format_buffer_;

    if (!dc.SetPixelFormat(index, pfd)) Raise(kErrInvalidCall);
    if (dc.DescribePixelFormat(index, &pfd) == 0) Raise(kErrInvalidCall);
    if (!(pfd.dwFlags & PFD_NEED_PALETTE)) return;

    const LOGPALETTE palette = BuildPalette(pfd);
    palette_ = dc.CreatePalette(palette);
    if (palette_ == 0) return;
    dc.SelectPalette(palette_, false);
    dc.RealizePalette();
  } catch (const RuntimeError&) {
    MsgBox("Error in SetDCPixelFormat");
  }
}

Long ControlContext::ChoosePixelFormat(DrawingSurface& surface,
                                       const std::string& settings_directory) {
  const PixelFormatSettings settings = ReadPixelFormatSettings(settings_directory);
  const bool prefer_accelerated = settings.PreferAccelerated == -1;
  const Long pinned = settings.PixelFormatIndex;

  pixel_format_buffer_ = PIXELFORMATDESCRIPTOR{};
  const Long count = surface.DescribePixelFormat(1, &pixel_format_buffer_);
  // Strictly below the count: the last format cannot be pinned.
  if (pinned >= 1 && pinned < count) return pinned;

  // An index from the file, even an unusable one, counts as a fallback
  // already remembered.
  Long fallback = pinned;
  for (Long i = 1; i <= count; ++i) {
    pixel_format_buffer_ = PIXELFORMATDESCRIPTOR{};
    surface.DescribePixelFormat(i, &pixel_format_buffer_);
    const std::uint32_t flags = pixel_format_buffer_.dwFlags;
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

void ControlContext::MakeCurrent(const std::string& settings_directory) {
  if (CurrentSurface() == surface_) return;
  SetPixelFormat(settings_directory);
  if (surface_ != nullptr) surface_->MakeCurrent(rendering_context_);
}

void ControlContext::MakeNoneCurrent() {
  quelo::MakeNoneCurrent();
}

void ControlContext::ShutDown() {
  MakeNoneCurrent();
  DeleteContext(rendering_context_);
  rendering_context_ = nullptr;
  surface_ = nullptr;
  if (initialised_ == -1) initialised_ = 0;
}

void ControlContext::SwapBuffers() {
  if (surface_ != nullptr) surface_->SwapBuffers();
}

}  // namespace quelo
