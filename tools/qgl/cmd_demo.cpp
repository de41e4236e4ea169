// qgl demo OUT.qgl: writes the bundled demo scene.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "common/runtime_error.h"
#include "tools/qgl/commands.h"
#include "tools/qgl/demo_scene.h"
#include "tools/qgl/qgl_common.h"

namespace quelo::qgl {

namespace {

CommandRun Setup(CLI::App& sub) {
  auto out = std::make_shared<std::string>();
  sub.add_option("OUT", *out, "scene file to write")->required();
  return [out] {
    try {
      WriteDemoScene(*out);
    } catch (const RuntimeError& e) {
      PrintFileError(*out, std::string("cannot write: ") + e.what());
      return kExitUsage;
    }
    return kExitOk;
  };
}

}  // namespace

const Command kDemoCommand{"demo", "write the demo scene (a house, a tree, a machine part) to OUT",
                           Setup};

}  // namespace quelo::qgl
