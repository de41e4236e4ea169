#include "glctrl/surface_glx.h"

#include <GL/glxext.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace quelo {

namespace {

// Xlib and GLX are loaded at run time: programs that link the control but
// never open a window (the headless tools) need no X libraries, and a machine
// without them gets a message.
// clang-format off
#define QUELO_XLIB_FUNCTIONS(F)                                                   \
  F(XOpenDisplay) F(XCloseDisplay) F(XSync) F(XSetErrorHandler) F(XFlush)         \
  F(XFree) F(XCreateColormap) F(XFreeColormap) F(XGetWindowAttributes)            \
  F(XSetWindowColormap) F(XStoreColors) F(XVisualIDFromVisual)
#define QUELO_GLX_FUNCTIONS(F)                                                    \
  F(glXQueryExtension) F(glXQueryExtensionsString) F(glXGetProcAddress)           \
  F(glXGetFBConfigs) F(glXGetFBConfigAttrib) F(glXGetVisualFromFBConfig)          \
  F(glXCreateWindow) F(glXDestroyWindow) F(glXCreateNewContext)                   \
  F(glXDestroyContext) F(glXMakeContextCurrent) F(glXGetCurrentContext)           \
  F(glXGetCurrentDrawable) F(glXSwapBuffers)
// clang-format on

struct GlxApi {
  std::string error;  // non-empty: unusable
#define QUELO_MEMBER(name) decltype(&::name) name = nullptr;
  QUELO_XLIB_FUNCTIONS(QUELO_MEMBER)
  QUELO_GLX_FUNCTIONS(QUELO_MEMBER)
#undef QUELO_MEMBER
};

void* OpenFirst(std::initializer_list<const char*> names, std::string& tried) {
  for (const char* name : names) {
    if (void* lib = dlopen(name, RTLD_NOW | RTLD_GLOBAL)) return lib;
    tried += tried.empty() ? name : std::string(", ") + name;
  }
  return nullptr;
}

const GlxApi& Api() {
  static const GlxApi kApi = [] {
    GlxApi a;
    std::string tried;
    void* x11 = OpenFirst({"libX11.so.6", "libX11.so"}, tried);
    void* glx = OpenFirst({"libGLX.so.0", "libGL.so.1"}, tried);
    if (x11 == nullptr || glx == nullptr) {
      a.error = "X11/GLX is not available: cannot load " + tried;
      return a;
    }
    std::string missing;
#define QUELO_RESOLVE(lib, name)                                  \
  a.name = reinterpret_cast<decltype(a.name)>(dlsym(lib, #name)); \
  if (a.name == nullptr) missing += std::string(" ") + #name;
#define QUELO_RESOLVE_X(name) QUELO_RESOLVE(x11, name)
#define QUELO_RESOLVE_GLX(name) QUELO_RESOLVE(glx, name)
    QUELO_XLIB_FUNCTIONS(QUELO_RESOLVE_X)
    QUELO_GLX_FUNCTIONS(QUELO_RESOLVE_GLX)
#undef QUELO_RESOLVE_GLX
#undef QUELO_RESOLVE_X
#undef QUELO_RESOLVE
    if (!missing.empty()) a.error = "X11/GLX is not available: missing" + missing;
    return a;
  }();
  return kApi;
}

// Catches the X errors of a few GLX calls instead of letting Xlib's default
// handler end the program.
class XErrorTrap {
 public:
  explicit XErrorTrap(Display* display) : display_(display) {
    Api().XSync(display_, False);
    error_code_ = 0;
    previous_ = Api().XSetErrorHandler(&XErrorTrap::Handler);
  }
  ~XErrorTrap() {
    Api().XSync(display_, False);
    Api().XSetErrorHandler(previous_);
  }
  XErrorTrap(const XErrorTrap&) = delete;
  XErrorTrap& operator=(const XErrorTrap&) = delete;
  // The X error since the trap was set, 0 for none.
  int Error() {
    Api().XSync(display_, False);
    return error_code_;
  }

 private:
  static int Handler(Display*, XErrorEvent* event) {
    error_code_ = event->error_code;
    return 0;
  }
  static inline int error_code_ = 0;
  Display* display_;
  int (*previous_)(Display*, XErrorEvent*);
};

std::uint8_t Byte(int v) {
  return static_cast<std::uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

// Position and width of the run of bits in a visual's channel mask.
void MaskBits(unsigned long mask, std::uint8_t& shift, std::uint8_t& bits) {
  shift = bits = 0;
  if (mask == 0) return;
  while (!(mask & 1)) mask >>= 1, ++shift;
  while (mask & 1) mask >>= 1, ++bits;
}

class GlxContext : public RenderingContext {
 public:
  GlxContext(Display* display, GLXContext context) : display_(display), context_(context) {}
  ~GlxContext() override { Api().glXDestroyContext(display_, context_); }
  Display* display() const { return display_; }
  GLXContext context() const { return context_; }

 private:
  Display* display_;
  GLXContext context_;
};

}  // namespace

GlxSurface::GlxSurface(Display* display, int screen) : display_(display), screen_(screen) {
  if (!Api().error.empty()) {
    error_ = Api().error;
    return;
  }
  if (display_ == nullptr) {
    error_ = "no X display";
    return;
  }
  int error_base = 0, event_base = 0;
  if (!Api().glXQueryExtension(display_, &error_base, &event_base)) {
    error_ = "the X display has no GLX extension";
    return;
  }
  ListFormats();
  if (formats_.empty()) error_ = "GLX offers no framebuffer configuration for a window";
}

Display* GlxSurface::OpenDisplay(std::string& error) {
  if (!Api().error.empty()) {
    error = Api().error;
    return nullptr;
  }
  Display* display = Api().XOpenDisplay(nullptr);
  if (display == nullptr) error = "cannot open the X display (is DISPLAY set?)";
  return display;
}

void GlxSurface::CloseDisplay(Display* display) {
  if (display != nullptr && Api().error.empty()) Api().XCloseDisplay(display);
}

GlxSurface::~GlxSurface() {
  if (CurrentSurface() == this) MakeNoneCurrent();
  DetachWindow();
  if (display_ != nullptr) {
    for (auto& v : visuals_) {
      if (v.colormap != 0) Api().XFreeColormap(display_, v.colormap);
      if (v.visual != nullptr) Api().XFree(v.visual);
    }
    for (Colormap c : palettes_) Api().XFreeColormap(display_, c);
  }
  if (configs_ != nullptr) Api().XFree(configs_);
}

void GlxSurface::ListFormats() {
  const char* extensions = Api().glXQueryExtensionsString(display_, screen_);
  if (ExtensionListHas(extensions, "GLX_MESA_query_renderer")) {
    using QueryRenderer = Bool (*)(Display*, int, int, int, unsigned int*);
    auto query = reinterpret_cast<QueryRenderer>(
        Api().glXGetProcAddress(reinterpret_cast<const GLubyte*>("glXQueryRendererIntegerMESA")));
    unsigned int accelerated = 1;
    if (query != nullptr &&
        query(display_, screen_, 0, GLX_RENDERER_ACCELERATED_MESA, &accelerated)) {
      software_ = accelerated == 0;
    }
  }
  const bool swap_method = ExtensionListHas(extensions, "GLX_OML_swap_method");
  const bool srgb = ExtensionListHas(extensions, "GLX_ARB_framebuffer_sRGB");
  const int default_depth = DefaultDepth(display_, screen_);
  const int default_class = DefaultVisual(display_, screen_)->c_class;

  int n = 0;
  configs_ = Api().glXGetFBConfigs(display_, screen_, &n);
  if (configs_ == nullptr) return;
  for (int i = 0; i < n; ++i) {
    auto get = [&](int attribute) {
      int v = 0;
      return Api().glXGetFBConfigAttrib(display_, configs_[i], attribute, &v) == Success ? v : 0;
    };
    const int render_type = get(GLX_RENDER_TYPE);
    if (!(get(GLX_DRAWABLE_TYPE) & GLX_WINDOW_BIT)) continue;
    if (!(render_type & (GLX_RGBA_BIT | GLX_COLOR_INDEX_BIT))) continue;  // float-only
    XVisualInfo* visual = Api().glXGetVisualFromFBConfig(display_, configs_[i]);
    if (visual == nullptr) continue;
    const bool rgba = render_type & GLX_RGBA_BIT;

    FormatCandidate c;
    std::uint32_t flags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
    if (get(GLX_DOUBLEBUFFER)) flags |= PFD_DOUBLEBUFFER;
    if (get(GLX_STEREO)) flags |= PFD_STEREO;
    if (get(GLX_DRAWABLE_TYPE) & GLX_PIXMAP_BIT) flags |= PFD_DRAW_TO_BITMAP;
    if (software_) flags |= PFD_GENERIC_FORMAT;
    if (visual->c_class == PseudoColor) flags |= PFD_NEED_PALETTE;
    c.swap_rank = 1;
    if (swap_method) {
      const int method = get(GLX_SWAP_METHOD_OML);
      if (method == GLX_SWAP_COPY_OML) flags |= PFD_SWAP_COPY, c.swap_rank = 0;
      if (method == GLX_SWAP_EXCHANGE_OML) flags |= PFD_SWAP_EXCHANGE, c.swap_rank = 2;
    }
    c.pfd = NewDescriptor(flags);
    c.pfd.iPixelType = rgba ? PFD_TYPE_RGBA : PFD_TYPE_COLORINDEX;
    c.pfd.cRedBits = Byte(get(GLX_RED_SIZE));
    c.pfd.cGreenBits = Byte(get(GLX_GREEN_SIZE));
    c.pfd.cBlueBits = Byte(get(GLX_BLUE_SIZE));
    c.pfd.cAlphaBits = Byte(get(GLX_ALPHA_SIZE));
    c.pfd.cColorBits = rgba ? Byte(c.pfd.cRedBits + c.pfd.cGreenBits + c.pfd.cBlueBits)
                            : Byte(get(GLX_BUFFER_SIZE));
    std::uint8_t bits = 0;
    if (visual->red_mask != 0 && visual->green_mask != 0 && visual->blue_mask != 0) {
      MaskBits(visual->red_mask, c.pfd.cRedShift, bits);
      MaskBits(visual->green_mask, c.pfd.cGreenShift, bits);
      MaskBits(visual->blue_mask, c.pfd.cBlueShift, bits);
      if (c.pfd.cAlphaBits != 0) {
        int top = 0;
        for (auto [shift, size] : {std::pair{c.pfd.cRedShift, c.pfd.cRedBits},
                                   std::pair{c.pfd.cGreenShift, c.pfd.cGreenBits},
                                   std::pair{c.pfd.cBlueShift, c.pfd.cBlueBits}}) {
          top = std::max(top, shift + size);
        }
        c.pfd.cAlphaShift = Byte(top);
      }
    } else {
      SetPackedShifts(c.pfd);
    }
    c.pfd.cAccumRedBits = Byte(get(GLX_ACCUM_RED_SIZE));
    c.pfd.cAccumGreenBits = Byte(get(GLX_ACCUM_GREEN_SIZE));
    c.pfd.cAccumBlueBits = Byte(get(GLX_ACCUM_BLUE_SIZE));
    c.pfd.cAccumAlphaBits = Byte(get(GLX_ACCUM_ALPHA_SIZE));
    c.pfd.cAccumBits = Byte(c.pfd.cAccumRedBits + c.pfd.cAccumGreenBits + c.pfd.cAccumBlueBits +
                            c.pfd.cAccumAlphaBits);
    c.pfd.cDepthBits = Byte(get(GLX_DEPTH_SIZE));
    c.pfd.cStencilBits = Byte(get(GLX_STENCIL_SIZE));
    c.pfd.cAuxBuffers = Byte(get(GLX_AUX_BUFFERS));
    c.samples = get(GLX_SAMPLES);
    c.slow = get(GLX_CONFIG_CAVEAT) != GLX_NONE && get(GLX_CONFIG_CAVEAT) != 0;
    c.visual_rank =
        (visual->c_class == default_class ? 0 : 2) + (visual->depth == default_depth ? 0 : 1);
    c.srgb = srgb && get(GLX_FRAMEBUFFER_SRGB_CAPABLE_ARB) != 0;
    c.native = i;
    Api().XFree(visual);
    formats_.push_back(c);
  }
  SortFormats(formats_);
  visuals_.resize(formats_.size());
}

GLXFBConfig GlxSurface::ConfigOf(int index) const {
  return configs_[formats_[static_cast<std::size_t>(index - 1)].native];
}

int GlxSurface::DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) {
  const int count = static_cast<int>(formats_.size());
  if (index < 1 || index > count) return 0;
  if (pfd != nullptr) *pfd = formats_[static_cast<std::size_t>(index - 1)].pfd;
  return count;
}

int GlxSurface::FBConfigId(int index) const {
  if (index < 1 || index > static_cast<int>(formats_.size())) return 0;
  int id = 0;
  Api().glXGetFBConfigAttrib(display_, ConfigOf(index), GLX_FBCONFIG_ID, &id);
  return id;
}

VisualID GlxSurface::VisualIdOf(int index) const {
  if (index < 1 || index > static_cast<int>(formats_.size())) return 0;
  int id = 0;
  Api().glXGetFBConfigAttrib(display_, ConfigOf(index), GLX_VISUAL_ID, &id);
  return static_cast<VisualID>(id);
}

GlxSurface::WindowVisual GlxSurface::VisualForFormat(int index) {
  if (index < 1 || index > static_cast<int>(formats_.size())) return {};
  WindowVisual& v = visuals_[static_cast<std::size_t>(index - 1)];
  if (v.visual == nullptr) {
    v.visual = Api().glXGetVisualFromFBConfig(display_, ConfigOf(index));
    if (v.visual == nullptr) return {};
    // A colour-index visual gets a colormap of its own that the palette fills.
    const int alloc = v.visual->c_class == PseudoColor ? AllocAll : AllocNone;
    v.colormap =
        Api().XCreateColormap(display_, RootWindow(display_, screen_), v.visual->visual, alloc);
  }
  return v;
}

void GlxSurface::AttachWindow(Window window) {
  DetachWindow();
  window_ = window;
}

void GlxSurface::DetachWindow() {
  if (CurrentSurface() == this) MakeNoneCurrent();
  if (glx_window_ != 0) {
    // The X window may be gone already; that must not end the program.
    XErrorTrap trap(display_);
    Api().glXDestroyWindow(display_, glx_window_);
  }
  glx_window_ = 0;
  window_ = 0;
  format_ = 0;
}

bool GlxSurface::SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR&) {
  if (DescribePixelFormat(index, nullptr) == 0) return false;
  if (format_ != 0) return format_ == index;
  if (window_ == 0) {
    error_ = "no window to set the pixel format on";
    return false;
  }
  XWindowAttributes attributes;
  if (!Api().XGetWindowAttributes(display_, window_, &attributes) ||
      Api().XVisualIDFromVisual(attributes.visual) != VisualIdOf(index)) {
    error_ = "format " + std::to_string(index) + " needs another visual than the window's";
    return false;
  }
  XErrorTrap trap(display_);
  GLXWindow drawable = Api().glXCreateWindow(display_, ConfigOf(index), window_, nullptr);
  if (trap.Error() != 0 || drawable == 0) {
    error_ = "glXCreateWindow failed for format " + std::to_string(index);
    return false;
  }
  glx_window_ = drawable;
  format_ = index;
  return true;
}

RenderingContext* GlxSurface::CreateContext() {
  if (format_ == 0) return nullptr;
  XErrorTrap trap(display_);
  const int type = formats_[static_cast<std::size_t>(format_ - 1)].pfd.iPixelType == PFD_TYPE_RGBA
                       ? GLX_RGBA_TYPE
                       : GLX_COLOR_INDEX_TYPE;
  GLXContext context = Api().glXCreateNewContext(display_, ConfigOf(format_), type, nullptr, True);
  if (trap.Error() != 0 || context == nullptr) {
    if (context != nullptr) Api().glXDestroyContext(display_, context);
    error_ = "glXCreateNewContext failed";
    return nullptr;
  }
  return new GlxContext(display_, context);
}

bool GlxSurface::DoMakeCurrent(RenderingContext* rc) {
  auto* context = dynamic_cast<GlxContext*>(rc);
  if (context == nullptr || context->display() != display_ || glx_window_ == 0) return false;
  XErrorTrap trap(display_);
  const bool ok =
      Api().glXMakeContextCurrent(display_, glx_window_, glx_window_, context->context());
  if (trap.Error() != 0 || !ok) {
    error_ = "glXMakeContextCurrent failed";
    return false;
  }
  return true;
}

void GlxSurface::DoReleaseCurrent() {
  if (display_ != nullptr) Api().glXMakeContextCurrent(display_, None, None, nullptr);
}

bool GlxSurface::IsCurrentOnPlatform(const RenderingContext* rc) const {
  auto* context = dynamic_cast<const GlxContext*>(rc);
  if (context == nullptr || glx_window_ == 0) return false;
  return Api().glXGetCurrentContext() == context->context() &&
         Api().glXGetCurrentDrawable() == glx_window_;
}

bool GlxSurface::SwapBuffers() {
  if (glx_window_ == 0) return false;
  Api().glXSwapBuffers(display_, glx_window_);
  return true;
}

PaletteHandle GlxSurface::CreatePalette(const LOGPALETTE& palette) {
  if (format_ == 0) return 0;
  WindowVisual v = VisualForFormat(format_);
  if (v.visual == nullptr || v.visual->c_class != PseudoColor) return 0;
  XErrorTrap trap(display_);
  Colormap map = Api().XCreateColormap(display_, window_, v.visual->visual, AllocAll);
  const int n = std::min<int>(palette.palNumEntries, v.visual->colormap_size);
  std::vector<XColor> colours(static_cast<std::size_t>(std::max(n, 0)));
  for (int i = 0; i < n; ++i) {
    const PALETTEENTRY& e = palette.palPalEntry[static_cast<std::size_t>(i)];
    XColor& c = colours[static_cast<std::size_t>(i)];
    c.pixel = static_cast<unsigned long>(i);
    c.red = static_cast<unsigned short>(e.peRed * 257);
    c.green = static_cast<unsigned short>(e.peGreen * 257);
    c.blue = static_cast<unsigned short>(e.peBlue * 257);
    c.flags = DoRed | DoGreen | DoBlue;
  }
  if (n > 0) Api().XStoreColors(display_, map, colours.data(), n);
  if (trap.Error() != 0) {
    Api().XFreeColormap(display_, map);
    return 0;
  }
  palettes_.push_back(map);
  return static_cast<PaletteHandle>(map);
}

PaletteHandle GlxSurface::SelectPalette(PaletteHandle palette, bool) {
  if (window_ == 0 || palette == 0) return 0;
  XWindowAttributes attributes;
  Api().XGetWindowAttributes(display_, window_, &attributes);
  Api().XSetWindowColormap(display_, window_, static_cast<Colormap>(palette));
  return static_cast<PaletteHandle>(attributes.colormap);
}

int GlxSurface::RealizePalette() {
  // The window manager installs the window's colormap; nothing to map here.
  Api().XFlush(display_);
  return 0;
}

}  // namespace quelo
