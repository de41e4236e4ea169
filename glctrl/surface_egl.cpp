#include "glctrl/surface_egl.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <map>

namespace quelo {

// EGL loaded by hand, so that programs that never draw headless do not need
// it, and a machine without it gets a message instead of a loader failure.
struct EglLibrary {
  std::string error;  // non-empty: unusable
  EGLDisplay display = EGL_NO_DISPLAY;
  std::vector<FormatCandidate> formats;  // native = index into configs
  std::vector<EGLConfig> configs;

  PFNEGLGETERRORPROC GetError = nullptr;
  PFNEGLGETPROCADDRESSPROC GetProcAddress = nullptr;
  PFNEGLGETPLATFORMDISPLAYPROC GetPlatformDisplay = nullptr;
  PFNEGLINITIALIZEPROC Initialize = nullptr;
  PFNEGLBINDAPIPROC BindAPI = nullptr;
  PFNEGLGETCONFIGSPROC GetConfigs = nullptr;
  PFNEGLGETCONFIGATTRIBPROC GetConfigAttrib = nullptr;
  PFNEGLQUERYSTRINGPROC QueryString = nullptr;
  PFNEGLCREATEPBUFFERSURFACEPROC CreatePbufferSurface = nullptr;
  PFNEGLDESTROYSURFACEPROC DestroySurface = nullptr;
  PFNEGLCREATECONTEXTPROC CreateContext = nullptr;
  PFNEGLDESTROYCONTEXTPROC DestroyContext = nullptr;
  PFNEGLMAKECURRENTPROC MakeCurrent = nullptr;
  PFNEGLGETCURRENTCONTEXTPROC GetCurrentContext = nullptr;
  PFNEGLGETCURRENTSURFACEPROC GetCurrentSurface = nullptr;

  // The few GL calls of the swap, found through EGL so that they work
  // whatever GL table the control has installed.
  void(APIENTRY* Finish)() = nullptr;
  void(APIENTRY* ReadPixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*) = nullptr;
  void(APIENTRY* PixelStorei)(GLenum, GLint) = nullptr;
  void(APIENTRY* PushClientAttrib)(GLbitfield) = nullptr;
  void(APIENTRY* PopClientAttrib)() = nullptr;

  explicit EglLibrary(const std::string& name);
  std::string LastError(const char* what) const;

 private:
  void ListFormats();
  bool SoftwareDevice() const;
};

namespace {

template <typename F>
bool Resolve(void* lib, F& f, const char* name) {
  f = reinterpret_cast<F>(dlsym(lib, name));
  return f != nullptr;
}

template <typename F>
bool ResolveGL(const EglLibrary& egl, F& f, const char* name) {
  f = reinterpret_cast<F>(egl.GetProcAddress(name));
  return f != nullptr;
}

class EglContext : public RenderingContext {
 public:
  EglContext(EglLibrary* egl, EGLContext context, int format)
      : egl_(egl), context_(context), format_(format) {}
  ~EglContext() override { egl_->DestroyContext(egl_->display, context_); }
  EglLibrary* egl() const { return egl_; }
  EGLContext context() const { return context_; }
  int format() const { return format_; }

 private:
  EglLibrary* egl_;
  EGLContext context_;
  int format_;
};

}  // namespace

EglLibrary::EglLibrary(const std::string& name) {
  void* lib = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (lib == nullptr) {
    const char* why = dlerror();
    error =
        "EGL is not available: cannot load " + name + (why ? std::string(" (") + why + ")" : "");
    return;
  }
  const bool ok =
      Resolve(lib, GetError, "eglGetError") && Resolve(lib, GetProcAddress, "eglGetProcAddress") &&
      Resolve(lib, GetPlatformDisplay, "eglGetPlatformDisplay") &&
      Resolve(lib, Initialize, "eglInitialize") && Resolve(lib, BindAPI, "eglBindAPI") &&
      Resolve(lib, GetConfigs, "eglGetConfigs") &&
      Resolve(lib, GetConfigAttrib, "eglGetConfigAttrib") &&
      Resolve(lib, QueryString, "eglQueryString") &&
      Resolve(lib, CreatePbufferSurface, "eglCreatePbufferSurface") &&
      Resolve(lib, DestroySurface, "eglDestroySurface") &&
      Resolve(lib, CreateContext, "eglCreateContext") &&
      Resolve(lib, DestroyContext, "eglDestroyContext") &&
      Resolve(lib, MakeCurrent, "eglMakeCurrent") &&
      Resolve(lib, GetCurrentContext, "eglGetCurrentContext") &&
      Resolve(lib, GetCurrentSurface, "eglGetCurrentSurface");
  if (!ok) {
    error = "EGL is not available: " + name + " lacks EGL 1.5 entry points";
    return;
  }
  if (!ExtensionListHas(QueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS),
                        "EGL_MESA_platform_surfaceless")) {
    error =
        "EGL is not available: no surfaceless platform (EGL_MESA_platform_surfaceless); "
        "install Mesa's EGL (libegl-mesa0)";
    return;
  }
  // Named explicitly: the default display would quietly use X11 when DISPLAY
  // is set.
  display = GetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
  if (display == EGL_NO_DISPLAY) {
    error = LastError("no surfaceless EGL display");
    return;
  }
  EGLint major = 0, minor = 0;
  if (!Initialize(display, &major, &minor)) {
    error = LastError("eglInitialize failed on the surfaceless display");
    display = EGL_NO_DISPLAY;
    return;
  }
  if (!BindAPI(EGL_OPENGL_API)) {
    error = LastError("desktop OpenGL is not available through EGL");
    return;
  }
  if (!ResolveGL(*this, Finish, "glFinish") || !ResolveGL(*this, ReadPixels, "glReadPixels") ||
      !ResolveGL(*this, PixelStorei, "glPixelStorei") ||
      !ResolveGL(*this, PushClientAttrib, "glPushClientAttrib") ||
      !ResolveGL(*this, PopClientAttrib, "glPopClientAttrib")) {
    error = "OpenGL is not available through EGL (glReadPixels not found)";
    return;
  }
  ListFormats();
  if (formats.empty()) error = "EGL offers no configuration for desktop OpenGL in a pbuffer";
}

std::string EglLibrary::LastError(const char* what) const {
  char code[16];
  std::snprintf(code, sizeof code, "0x%04X", static_cast<unsigned>(GetError()));
  return std::string("EGL: ") + what + " (error " + code + ")";
}

bool EglLibrary::SoftwareDevice() const {
  // EGL_EXT_device_query names the device; Mesa marks software ones.
  auto query_display =
      reinterpret_cast<PFNEGLQUERYDISPLAYATTRIBEXTPROC>(GetProcAddress("eglQueryDisplayAttribEXT"));
  auto query_device =
      reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(GetProcAddress("eglQueryDeviceStringEXT"));
  if (query_display == nullptr || query_device == nullptr) return false;
  EGLAttrib device = 0;
  if (!query_display(display, EGL_DEVICE_EXT, &device) || device == 0) return false;
  return ExtensionListHas(query_device(reinterpret_cast<EGLDeviceEXT>(device), EGL_EXTENSIONS),
                          "EGL_MESA_device_software");
}

void EglLibrary::ListFormats() {
  EGLint n = 0;
  if (!GetConfigs(display, nullptr, 0, &n) || n <= 0) return;
  configs.resize(static_cast<std::size_t>(n));
  GetConfigs(display, configs.data(), n, &n);
  configs.resize(static_cast<std::size_t>(n));
  const bool software = SoftwareDevice();
  for (std::size_t i = 0; i < configs.size(); ++i) {
    auto get = [&](EGLint attribute) {
      EGLint v = 0;
      return GetConfigAttrib(display, configs[i], attribute, &v) ? v : 0;
    };
    if (!(get(EGL_RENDERABLE_TYPE) & EGL_OPENGL_BIT)) continue;
    if (!(get(EGL_SURFACE_TYPE) & EGL_PBUFFER_BIT)) continue;
    if (get(EGL_COLOR_BUFFER_TYPE) != EGL_RGB_BUFFER) continue;
    // A descriptor cannot say "floating point": such configs are left out.
    if (get(EGL_COLOR_COMPONENT_TYPE_EXT) == EGL_COLOR_COMPONENT_TYPE_FLOAT_EXT) continue;
    auto byte = [](EGLint v) { return static_cast<std::uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); };
    FormatCandidate c;
    c.pfd = NewDescriptor(PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER |
                          (software ? PFD_GENERIC_FORMAT : 0u));
    c.pfd.iPixelType = PFD_TYPE_RGBA;
    c.pfd.cRedBits = byte(get(EGL_RED_SIZE));
    c.pfd.cGreenBits = byte(get(EGL_GREEN_SIZE));
    c.pfd.cBlueBits = byte(get(EGL_BLUE_SIZE));
    c.pfd.cAlphaBits = byte(get(EGL_ALPHA_SIZE));
    c.pfd.cColorBits = byte(c.pfd.cRedBits + c.pfd.cGreenBits + c.pfd.cBlueBits);
    SetPackedShifts(c.pfd);
    c.pfd.cDepthBits = byte(get(EGL_DEPTH_SIZE));
    c.pfd.cStencilBits = byte(get(EGL_STENCIL_SIZE));
    c.samples = get(EGL_SAMPLES);
    c.slow = get(EGL_CONFIG_CAVEAT) != EGL_NONE;
    c.native = static_cast<int>(i);
    formats.push_back(c);
  }
  SortFormats(formats);
}

namespace {

EglLibrary* LoadEgl(const std::string& name) {
  static std::map<std::string, std::unique_ptr<EglLibrary>> libraries;
  auto& slot = libraries[name];
  if (!slot) slot = std::make_unique<EglLibrary>(name);
  return slot.get();
}

}  // namespace

EglSurface::EglSurface(int width, int height, const std::string& egl_library)
    : egl_(LoadEgl(egl_library)), width_(width), height_(height) {
  if (width < 1 || height < 1) {
    error_ = "headless surface size " + std::to_string(width) + "x" + std::to_string(height) +
             " is not at least 1x1";
  } else {
    error_ = egl_->error;
  }
}

EglSurface::~EglSurface() {
  if (CurrentSurface() == this) MakeNoneCurrent();
  if (pbuffer_ != nullptr) egl_->DestroySurface(egl_->display, pbuffer_);
}

int EglSurface::DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) {
  if (width_ < 1 || height_ < 1 || !egl_->error.empty()) return 0;
  const int count = static_cast<int>(egl_->formats.size());
  if (index < 1 || index > count) return 0;
  if (pfd != nullptr) *pfd = egl_->formats[static_cast<std::size_t>(index - 1)].pfd;
  return count;
}

int EglSurface::ConfigId(int index) const {
  if (!egl_->error.empty() || index < 1 || index > static_cast<int>(egl_->formats.size())) return 0;
  const auto& c = egl_->formats[static_cast<std::size_t>(index - 1)];
  EGLint id = 0;
  egl_->GetConfigAttrib(egl_->display, egl_->configs[static_cast<std::size_t>(c.native)],
                        EGL_CONFIG_ID, &id);
  return id;
}

bool EglSurface::SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR&) {
  if (DescribePixelFormat(index, nullptr) == 0) return false;
  if (format_ != 0) return format_ == index;
  const auto& c = egl_->formats[static_cast<std::size_t>(index - 1)];
  const EGLint attributes[] = {EGL_WIDTH, width_, EGL_HEIGHT, height_, EGL_NONE};
  EGLSurface pbuffer = egl_->CreatePbufferSurface(
      egl_->display, egl_->configs[static_cast<std::size_t>(c.native)], attributes);
  if (pbuffer == EGL_NO_SURFACE) {
    error_ = egl_->LastError("cannot create the pbuffer");
    return false;
  }
  pbuffer_ = pbuffer;
  format_ = index;
  return true;
}

RenderingContext* EglSurface::CreateContext() {
  if (format_ == 0) return nullptr;
  const auto& c = egl_->formats[static_cast<std::size_t>(format_ - 1)];
  egl_->BindAPI(EGL_OPENGL_API);
  // No attributes: the newest compatibility context, where GL 1.1 works.
  EGLContext context = egl_->CreateContext(
      egl_->display, egl_->configs[static_cast<std::size_t>(c.native)], EGL_NO_CONTEXT, nullptr);
  if (context == EGL_NO_CONTEXT) {
    error_ = egl_->LastError("cannot create an OpenGL context");
    return nullptr;
  }
  return new EglContext(egl_, context, format_);
}

bool EglSurface::DoMakeCurrent(RenderingContext* rc) {
  auto* context = dynamic_cast<EglContext*>(rc);
  if (context == nullptr || context->egl() != egl_ || pbuffer_ == nullptr) return false;
  if (!egl_->MakeCurrent(egl_->display, pbuffer_, pbuffer_, context->context())) {
    error_ = egl_->LastError("cannot make the context current");
    return false;
  }
  return true;
}

void EglSurface::DoReleaseCurrent() {
  if (egl_->display != EGL_NO_DISPLAY) {
    egl_->MakeCurrent(egl_->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  }
}

bool EglSurface::IsCurrentOnPlatform(const RenderingContext* rc) const {
  auto* context = dynamic_cast<const EglContext*>(rc);
  if (context == nullptr || pbuffer_ == nullptr || !egl_->error.empty()) return false;
  return egl_->GetCurrentContext() == context->context() &&
         egl_->GetCurrentSurface(EGL_DRAW) == pbuffer_;
}

bool EglSurface::SwapBuffers() {
  if (pbuffer_ == nullptr || egl_->GetCurrentSurface(EGL_DRAW) != pbuffer_) return false;
  const std::size_t row = static_cast<std::size_t>(width_) * 4;
  std::vector<unsigned char> bottom_up(row * static_cast<std::size_t>(height_));
  egl_->Finish();
  // Tightly packed rows whatever the program set for its own reads.
  egl_->PushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  egl_->PixelStorei(GL_PACK_ALIGNMENT, 1);
  egl_->PixelStorei(GL_PACK_ROW_LENGTH, 0);
  egl_->PixelStorei(GL_PACK_SKIP_ROWS, 0);
  egl_->PixelStorei(GL_PACK_SKIP_PIXELS, 0);
  egl_->ReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, bottom_up.data());
  egl_->PopClientAttrib();
  image_.width = width_;
  image_.height = height_;
  image_.rgba.resize(bottom_up.size());
  for (int y = 0; y < height_; ++y) {
    std::memcpy(image_.rgba.data() + static_cast<std::size_t>(y) * row,
                bottom_up.data() + static_cast<std::size_t>(height_ - 1 - y) * row, row);
  }
  return true;
}

}  // namespace quelo
