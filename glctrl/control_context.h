// ControlContext: the control's drawing surface and rendering context, the
// pixel-format choice (with the settings file KIVOhogl.ini), the palette,
// making current and shutdown.
#pragma once

#include <string>

#include "common/numbers.h"
#include "glctrl/pixel_format.h"
#include "glctrl/surface.h"

namespace quelo {

class ControlContext {
 public:
  DrawingSurface* Surface() const { return surface_; }
  void SetSurface(DrawingSurface* surface) { surface_ = surface; }
  Long InitFlags() const { return init_flags_; }
  void SetInitFlags(Long bits) { init_flags_ = bits; }
  Long InitDepthBits() const { return init_depth_bits_; }
  void SetInitDepthBits(Long bits) { init_depth_bits_ = bits; }
  Long InitColorBits() const { return init_color_bits_; }
  void SetInitColorBits(Long bits) { init_color_bits_ = bits; }

  // settings_directory is where KIVOhogl.ini is looked for.
  bool Init(const std::string& settings_directory);  // true on success
  void SetPixelFormat(const std::string& settings_directory);
  Long ChoosePixelFormat(DrawingSurface& surface, const std::string& settings_directory);
  void MakeCurrent(const std::string& settings_directory);
  void MakeNoneCurrent();
  void ShutDown();
  void SwapBuffers();

 private:
  DrawingSurface* surface_ = nullptr;
  Long init_flags_ = 0;
  Long init_depth_bits_ = 0;
  Long init_color_bits_ = 0;
  RenderingContext* rendering_context_ = nullptr;  // deleted by ShutDown
  Long initialised_ = 0;                           // -1 while initialised
  // The descriptor the choice read last, and the palette of the last set-up.
  PIXELFORMATDESCRIPTOR pixel_format_buffer_{};
  PaletteHandle palette_ = 0;
};

}  // namespace quelo
