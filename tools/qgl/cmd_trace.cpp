// qgl trace FILE [--axes] [--grids]: builds the scene list of FILE exactly as
// the viewer's reload does and prints the GL calls it would make, one per
// line, then the room box.
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <string>

#include "common/messages.h"
#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "sceneload/scene_list.h"
#include "tools/qgl/commands.h"
#include "tools/qgl/qgl_common.h"

namespace quelo::qgl {

namespace {

struct Options {
  std::string file;
  bool axes = false;
  bool grids = false;
};

bool IsFileError(int number) {
  return number >= 52 && number <= 76;
}

int Run(const Options& o) {
  int status = kExitOk;
  {
    std::unique_ptr<BinaryFile> file;
    FileHeader header;
    status = OpenSceneFile(o.file, file, header);
    if (status == kExitUsage) return status;
  }
  // A foreign file is still traced: the viewer shows it as an empty scene.
  OpenGL_Ctrl gl;
  SceneListState state;
  {
    ScopedTracingGL trace(&std::cout, /*keep_lines=*/false);
    try {
      BuildSceneList(gl, true, state, o.file, o.axes, o.grids);
    } catch (const RuntimeError& e) {
      std::cout.flush();
      if (IsFileError(e.number())) {
        PrintFileError(o.file, std::string("cannot read: ") + e.what());
        return kExitUsage;
      }
      // What the viewer would show in a message box.
      MsgBox(e.what());
      return kExitNotSceneFile;
    }
  }
  const RoomBoxValues& b = state.RoomBox;
  std::cout << "RoomBox:";
  for (Single v : b) std::cout << ' ' << FormatSingle(v);
  std::cout << '\n';
  return status;
}

CommandRun Setup(CLI::App& sub) {
  auto o = std::make_shared<Options>();
  sub.add_option("FILE", o->file, "scene file")->required();
  sub.add_flag("--axes", o->axes, "load with \"Show File Axes\" checked (block 0)");
  sub.add_flag("--grids", o->grids, "load with \"Show File Grids\" checked (block 1)");
  return [o] { return Run(*o); };
}

}  // namespace

const Command kTraceCommand{"trace", "print the GL calls that loading FILE makes, and its room box",
                            Setup};

}  // namespace quelo::qgl
