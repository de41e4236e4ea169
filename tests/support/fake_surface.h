// FakeSurface: a drawing surface with a made-up format table and no GL behind
// it. It keeps a log of every platform call the control makes on it, so tests
// (and tracing runs without any display) can drive the context members.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/surface.h"

namespace quelo {

class FakeContext : public RenderingContext {
 public:
  // alive counts the contexts of a surface that still exist; it may outlive
  // the surface.
  FakeContext(int number, std::shared_ptr<int> alive) : id(number), alive_(std::move(alive)) {
    ++*alive_;
  }
  ~FakeContext() override { --*alive_; }
  const int id;

 private:
  std::shared_ptr<int> alive_;
};

class FakeSurface : public DrawingSurface {
 public:
  // A descriptor for the tables: RGBA with the given flags, colour and depth
  // bits, 8 bits a channel (3-3-2 for 8 colour bits).
  static PIXELFORMATDESCRIPTOR Format(std::uint32_t flags, int colour_bits = 24,
                                      int depth_bits = 24) {
    PIXELFORMATDESCRIPTOR pfd = NewDescriptor(flags);
    pfd.cColorBits = static_cast<std::uint8_t>(colour_bits);
    pfd.cDepthBits = static_cast<std::uint8_t>(depth_bits);
    if (colour_bits == 8) {
      pfd.cRedBits = 3, pfd.cGreenBits = 3, pfd.cBlueBits = 2;
      pfd.cRedShift = 0, pfd.cGreenShift = 3, pfd.cBlueShift = 6;
    } else {
      pfd.cRedBits = pfd.cGreenBits = pfd.cBlueBits = 8;
      SetPackedShifts(pfd);
    }
    return pfd;
  }

  // Window, OpenGL and double buffer: what the choice looks for.
  static constexpr std::uint32_t kWindowGL =
      PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;

  explicit FakeSurface(std::vector<PIXELFORMATDESCRIPTOR> formats = {Format(kWindowGL |
                                                                            PFD_GENERIC_FORMAT)})
      : formats_(std::move(formats)) {}
  ~FakeSurface() override {
    if (CurrentSurface() == this) MakeNoneCurrent();
  }

  int DescribePixelFormat(int index, PIXELFORMATDESCRIPTOR* pfd) override {
    ++describe_calls;
    const int count = static_cast<int>(formats_.size());
    if (index < 1 || index > count) return 0;
    if (pfd != nullptr) *pfd = formats_[static_cast<std::size_t>(index - 1)];
    return count;
  }
  bool SetPixelFormat(int index, const PIXELFORMATDESCRIPTOR& pfd) override {
    log.push_back("SetPixelFormat(" + std::to_string(index) + ")");
    set_descriptors.push_back(pfd);
    if (fail_set_pixel_format) return false;
    if (index < 1 || index > static_cast<int>(formats_.size())) return false;
    if (format_ != 0 && format_ != index) return false;
    format_ = index;
    return true;
  }
  int GetPixelFormat() const override { return format_; }

  RenderingContext* CreateContext() override {
    log.push_back("CreateContext()");
    if (throw_in_create_context) Raise(kErrOutOfMemory);
    if (fail_create_context || format_ == 0) return nullptr;
    return new FakeContext(++contexts_made, alive_);
  }
  bool SwapBuffers() override {
    log.push_back("SwapBuffers()");
    return true;
  }

  PaletteHandle CreatePalette(const LOGPALETTE& palette) override {
    log.push_back("CreatePalette(" + std::to_string(palette.palNumEntries) + ")");
    palettes.push_back(palette);
    return palette_handle;
  }
  PaletteHandle SelectPalette(PaletteHandle palette, bool background) override {
    log.push_back("SelectPalette(" + std::to_string(palette) + ", " +
                  (background ? "true" : "false") + ")");
    return 0;
  }
  int RealizePalette() override {
    log.push_back("RealizePalette()");
    return 0;
  }

  // Knobs.
  bool fail_set_pixel_format = false;
  bool fail_create_context = false;
  bool throw_in_create_context = false;
  PaletteHandle palette_handle = 7;  // what CreatePalette hands out; 0 refuses

  // Records.
  std::vector<std::string> log;
  std::vector<PIXELFORMATDESCRIPTOR> set_descriptors;
  std::vector<LOGPALETTE> palettes;
  int describe_calls = 0;
  int contexts_made = 0;
  int contexts_alive() const { return *alive_; }
  // The context this surface holds current, as the platform would know it.
  const RenderingContext* current() const { return current_; }

 protected:
  bool DoMakeCurrent(RenderingContext* rc) override {
    auto* fake = dynamic_cast<FakeContext*>(rc);
    log.push_back("MakeCurrent(" + (fake ? std::to_string(fake->id) : std::string("?")) + ")");
    if (fake == nullptr || format_ == 0) return false;
    current_ = rc;
    return true;
  }
  void DoReleaseCurrent() override {
    log.push_back("ReleaseCurrent()");
    current_ = nullptr;
  }
  bool IsCurrentOnPlatform(const RenderingContext* rc) const override {
    return rc != nullptr && rc == current_;
  }

 private:
  std::vector<PIXELFORMATDESCRIPTOR> formats_;
  int format_ = 0;
  const RenderingContext* current_ = nullptr;
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace quelo
