// Module1: the start of the viewer. `quelo [FILE]` opens the main window,
// with FILE open as if chosen in the open dialog.
#include <FL/Fl.H>

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <string>

#include "common/messages.h"
#include "viewer/fltk_dialogs.h"
#include "viewer/fltk_main_window.h"

#ifndef QUELO_VERSION
#define QUELO_VERSION "4.0.0"
#endif

namespace quelo {

// Loads the form, starts GL, opens the file if one was given and runs the
// event loop until the last window is gone.
int Main(const std::string& scene_file) {
  FltkMessageBoxes boxes;
  SetMessageBoxes(&boxes);
  Fl::scheme("gtk+");

  FltkMainWindow window;
  Quelo_Form& form = window.form();
  RunHandler([&] { form.Form_Load(); });
  // The drawing area's X window must exist before the control can make its
  // context on it, so the window is mapped here; the first picture still
  // comes from the drawing area's paint after Organize.
  window.Show();
  RunHandler([&] { form.Organize(); });
  if (!scene_file.empty()) RunHandler([&] { form.OpenSceneFile(scene_file); });

  const int result = Fl::run();
  SetMessageBoxes(nullptr);
  return result;
}

}  // namespace quelo

int main(int argc, char** argv) {
  CLI::App app{"Quelo: a viewer for KIVO OpenGL scene files (.qgl)", "quelo"};
  std::string scene_file;
  app.add_option("FILE", scene_file, "Scene file to open");
  app.set_version_flag("--version", "quelo " QUELO_VERSION);
  CLI11_PARSE(app, argc, argv);

  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') {
    std::cerr << "quelo: no display (DISPLAY is not set); `qgl render` draws a scene into a "
                 "picture without one\n";
    return 1;
  }
  return quelo::Main(scene_file);
}
