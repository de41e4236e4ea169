// qgl render FILE -o OUT.png [--size WxH] [--view side|end|plan|3d] [--hor DEG]
//   [--ver DEG] [--zoom VALUE] [--axes] [--grids]
//
// Draws FILE as the viewer shows it, into a headless surface of W x H pixels,
// and writes the picture as PNG. It runs the main form's own logic: the
// drawing area is the form's FacePbx, the redraw its RenderIt, the view
// commands its menu handlers, so the picture is the viewer's.
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <optional>
#include <regex>
#include <string>

#include "common/runtime_error.h"
#include "form/quelo_form.h"
#include "glctrl/surface_egl.h"
#include "image/png_image.h"
#include "tools/qgl/commands.h"
#include "tools/qgl/qgl_common.h"

namespace quelo::qgl {

namespace {

constexpr int kMaxSide = 8192;

struct Options {
  std::string file;
  std::string out;
  std::string size = "800x600";
  std::string view;
  std::optional<int> hor;
  std::optional<int> ver;
  std::optional<int> zoom;
  bool axes = false;
  bool grids = false;
};

// The form without a window: nothing to show, no dialog, no rubber band.
class NoWindow : public FormHost {};
class NoDialog : public CommonDialog {
 public:
  void ShowOpen() override { Raise(kErrDialogCancel); }
};
class NoBand : public BandDrawer {
 public:
  void DrawBox(double, double, double, double) override {}
};

bool ParseSize(const std::string& text, int& width, int& height) {
  static const std::regex kSize(R"(([0-9]{1,5})[xX]([0-9]{1,5}))");
  std::smatch m;
  if (!std::regex_match(text, m, kSize)) return false;
  width = std::stoi(m[1]);
  height = std::stoi(m[2]);
  return width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide;
}

void RunViewCommand(Quelo_Form& form, const std::string& view) {
  if (view == "side") form.View_SideView_Click();
  if (view == "end") form.View_CrossView_Click();
  if (view == "plan") form.View_TopView_Click();
  if (view == "3d") form.View_3DPerspective_Click();
}

int Run(const Options& o) {
  int width = 0, height = 0;
  if (!ParseSize(o.size, width, height)) {
    std::cerr << "qgl: --size: expected WxH with each side 1.." << kMaxSide << ", got \"" << o.size
              << "\"\n";
    return kExitUsage;
  }
  int status = kExitOk;
  {
    std::unique_ptr<BinaryFile> file;
    FileHeader header;
    status = OpenSceneFile(o.file, file, header);
    if (status == kExitUsage) return status;
  }
  // A foreign file is still drawn, as the viewer shows it: an empty scene.

  EglSurface surface(width, height);
  if (surface.DescribePixelFormat(1, nullptr) == 0) {
    std::cerr << "qgl: cannot render: no headless OpenGL (EGL with Mesa's surfaceless "
                 "platform and desktop OpenGL) is available"
              << (surface.Error().empty() ? "" : ": " + surface.Error()) << "\n";
    return kExitUsage;
  }

  NoWindow window;
  NoDialog dialog;
  NoBand band;
  Quelo_Form form(window, dialog, band);
  form.FacePbx.Move(0, 0, width, height);
  form.FacePbx.hDC(&surface);
  form.Utils_AxesOn.Checked(o.axes);
  form.Utils_GridsOn.Checked(o.grids);
  try {
    form.prv_InitGL();
    form.SceneFileName = o.file;
    form.RenderIt(true, true);
    if (!o.view.empty()) RunViewCommand(form, o.view);
    if (o.hor || o.ver) {
      if (o.hor) form.HorAng(static_cast<Integer>(*o.hor));
      if (o.ver) form.VerAng(static_cast<Integer>(*o.ver));
      form.RenderIt(false, true);
    }
    if (o.zoom) form.Zoom_Scr.Value(static_cast<Integer>(*o.zoom));
  } catch (const RuntimeError& e) {
    if (e.number() >= kErrBadFileNameOrNumber && e.number() <= kErrPathNotFound) {
      PrintFileError(o.file, std::string("cannot read: ") + e.what());
      return kExitUsage;
    }
    std::cerr << "qgl: " << o.file << ": run-time error " << e.number() << ": " << e.what() << "\n";
    return kExitNotSceneFile;
  }

  const EglSurface::Image& kept = surface.KeptImage();
  if (kept.rgba.empty()) {
    std::cerr << "qgl: cannot render: no picture was drawn"
              << (surface.Error().empty() ? "" : ": " + surface.Error()) << "\n";
    return kExitUsage;
  }
  try {
    WritePng(o.out, RgbFromRgba(kept.width, kept.height, kept.rgba));
  } catch (const ImageFileError& e) {
    std::cerr << "qgl: cannot write: " << e.what() << "\n";
    return kExitUsage;
  }
  form.FreeRenderLists();
  form.FaceGL.auxShutDown();
  return status;
}

CommandRun Setup(CLI::App& sub) {
  auto o = std::make_shared<Options>();
  sub.add_option("FILE", o->file, "scene file")->required();
  sub.add_option("-o,--output", o->out, "PNG file to write")->required();
  sub.add_option("--size", o->size, "drawing area in pixels, WxH (default 800x600)");
  sub.add_option("--view", o->view, "run a view command once: side, end, plan or 3d")
      ->check(CLI::IsMember({"side", "end", "plan", "3d"}));
  sub.add_option("--hor", o->hor, "horizontal angle in degrees, 0..360 (default 60)")
      ->check(CLI::Range(0, 360));
  sub.add_option("--ver", o->ver, "vertical angle in degrees, -90..90 (default 30)")
      ->check(CLI::Range(-90, 90));
  sub.add_option("--zoom", o->zoom, "zoom bar position, 0..256 (the whole scene is at 201)")
      ->check(CLI::Range(0, 256));
  sub.add_flag("--axes", o->axes, "with \"Show File Axes\" checked");
  sub.add_flag("--grids", o->grids, "with \"Show File Grids\" checked");
  return [o] { return Run(*o); };
}

}  // namespace

const Command kRenderCommand{"render", "draw FILE as the viewer shows it and write a PNG", Setup};

}  // namespace quelo::qgl
