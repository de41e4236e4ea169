// qgl formats [--egl] [--settings-dir DIR] [--json]: the numbered pixel-format
// list of the X display (GLX) or, without one, of the headless EGL surface,
// each format with its descriptor fields, and the format the control would
// choose with the settings file in DIR.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "common/messages.h"
#include "common/runtime_error.h"
#include "glctrl/opengl_ctrl.h"
#include "glctrl/pixel_format.h"
#include "glctrl/surface_egl.h"
#include "glctrl/surface_glx.h"
#include "tools/qgl/commands.h"

namespace quelo::qgl {

namespace {

// No formats to list: no display and no EGL, or a surface that offers none.
constexpr int kExitNoFormats = 3;

struct Options {
  bool egl = false;
  bool json = false;
  std::string settings_dir = "/etc";
};

nlohmann::json DescriptorJson(const PIXELFORMATDESCRIPTOR& p) {
  return {{"nSize", p.nSize},
          {"nVersion", p.nVersion},
          {"dwFlags", p.dwFlags},
          {"flags", FlagNames(p.dwFlags)},
          {"iPixelType", p.iPixelType},
          {"cColorBits", p.cColorBits},
          {"cRedBits", p.cRedBits},
          {"cRedShift", p.cRedShift},
          {"cGreenBits", p.cGreenBits},
          {"cGreenShift", p.cGreenShift},
          {"cBlueBits", p.cBlueBits},
          {"cBlueShift", p.cBlueShift},
          {"cAlphaBits", p.cAlphaBits},
          {"cAlphaShift", p.cAlphaShift},
          {"cAccumBits", p.cAccumBits},
          {"cAccumRedBits", p.cAccumRedBits},
          {"cAccumGreenBits", p.cAccumGreenBits},
          {"cAccumBlueBits", p.cAccumBlueBits},
          {"cAccumAlphaBits", p.cAccumAlphaBits},
          {"cDepthBits", p.cDepthBits},
          {"cStencilBits", p.cStencilBits},
          {"cAuxBuffers", p.cAuxBuffers},
          {"iLayerType", p.iLayerType},
          {"bReserved", p.bReserved},
          {"dwLayerMask", p.dwLayerMask},
          {"dwVisibleMask", p.dwVisibleMask},
          {"dwDamageMask", p.dwDamageMask}};
}

// One line: index, platform id, then the fields in descriptor order.
std::string DescriptorLine(int index, int id, const PIXELFORMATDESCRIPTOR& p) {
  char text[256];
  std::snprintf(
      text, sizeof text,
      "%4d %#6x %5u %-5s %3u %2u/%-2u %2u/%-2u %2u/%-2u %2u/%-2u %3u %2u/%u/%u/%u %3u %3u "
      "%2u ",
      index, static_cast<unsigned>(id), p.dwFlags, p.iPixelType == PFD_TYPE_RGBA ? "RGBA" : "INDEX",
      p.cColorBits, p.cRedBits, p.cRedShift, p.cGreenBits, p.cGreenShift, p.cBlueBits, p.cBlueShift,
      p.cAlphaBits, p.cAlphaShift, p.cAccumBits, p.cAccumRedBits, p.cAccumGreenBits,
      p.cAccumBlueBits, p.cAccumAlphaBits, p.cDepthBits, p.cStencilBits, p.cAuxBuffers);
  return text + FlagNames(p.dwFlags);
}

int List(DrawingSurface& surface, const std::string& source, const Options& o,
         const std::function<int(int)>& id_of) {
  PIXELFORMATDESCRIPTOR pfd;
  const int count = surface.DescribePixelFormat(1, &pfd);
  if (count == 0) {
    std::cerr << "qgl: " << source << ": no pixel formats"
              << (surface.Error().empty() ? "" : ": " + surface.Error()) << "\n";
    return kExitNoFormats;
  }
  // The control's own choice, with the settings file where the program reads it.
  OpenGL_Ctrl ctrl;
  ctrl.SettingsDirectory = o.settings_dir;
  PixelFormatSettings settings;
  Long chosen = 0;
  try {
    settings = ReadPixelFormatSettings(o.settings_dir);
    chosen = ctrl.prv_ChoosePixelFormat(surface);
  } catch (const RuntimeError& e) {
    std::cerr << "qgl: " << SettingsFilePath(o.settings_dir) << ": " << e.what() << "\n";
    return kExitUsage;
  }

  if (o.json) {
    nlohmann::json formats = nlohmann::json::array();
    for (int i = 1; i <= count; ++i) {
      surface.DescribePixelFormat(i, &pfd);
      formats.push_back(
          {{"index", i}, {"config_id", id_of(i)}, {"descriptor", DescriptorJson(pfd)}});
    }
    nlohmann::json settings_json = nullptr;
    if (settings.file_found) {
      settings_json = {{"PreferAccelerated", settings.PreferAccelerated},
                       {"PixelFormatIndex", settings.PixelFormatIndex}};
    }
    const nlohmann::json out = {{"source", source},
                                {"settings_file", SettingsFilePath(o.settings_dir)},
                                {"settings", settings_json},
                                {"chosen", chosen},
                                {"formats", formats}};
    std::cout << out.dump(2) << "\n";
    return kExitOk;
  }

  std::cout << "source: " << source << "\n";
  std::cout << "settings file: " << SettingsFilePath(o.settings_dir);
  if (settings.file_found) {
    std::cout << " (PreferAccelerated " << settings.PreferAccelerated << ", PixelFormatIndex "
              << settings.PixelFormatIndex << ")\n";
  } else {
    std::cout << " (none)\n";
  }
  std::cout << "chosen format: " << chosen << " of " << count << "\n";
  std::cout << "   #     id flags type  bits  r/sh  g/sh  b/sh  a/sh acc r/g/b/a dep stn aux"
               " flag names\n";
  for (int i = 1; i <= count; ++i) {
    surface.DescribePixelFormat(i, &pfd);
    std::cout << DescriptorLine(i, id_of(i), pfd) << "\n";
  }
  return kExitOk;
}

int Run(const Options& o) {
  const char* display_name = std::getenv("DISPLAY");
  if (!o.egl && display_name != nullptr && *display_name != '\0') {
    std::string error;
    Display* display = GlxSurface::OpenDisplay(error);
    if (display == nullptr) {
      std::cerr << "qgl: display " << display_name << ": " << error
                << " (use --egl for the headless list)\n";
      return kExitNoFormats;
    }
    int status;
    {
      GlxSurface surface(display, DefaultScreen(display));
      const std::string source = std::string("X display ") + display_name + ", GLX (" +
                                 (surface.Software() ? "software" : "accelerated") +
                                 " renderer), FBConfig ids";
      status = List(surface, source, o, [&](int i) { return surface.FBConfigId(i); });
    }
    GlxSurface::CloseDisplay(display);
    return status;
  }
  EglSurface surface(1, 1);
  return List(surface, "headless EGL (surfaceless Mesa), EGL config ids", o,
              [&](int i) { return surface.ConfigId(i); });
}

CommandRun Setup(CLI::App& sub) {
  auto o = std::make_shared<Options>();
  sub.add_flag("--egl", o->egl, "list the headless (EGL) formats even when DISPLAY is set");
  sub.add_option("--settings-dir", o->settings_dir,
                 "where KIVOhogl.ini is read for the chosen format (default /etc)");
  sub.add_flag("--json", o->json, "print JSON");
  return [o] { return Run(*o); };
}

}  // namespace

const Command kFormatsCommand{
    "formats", "list the pixel formats of the display (or of headless EGL) and the one chosen",
    Setup};

}  // namespace quelo::qgl
