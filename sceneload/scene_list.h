// Building the scene's display list from a scene file: the list-building step
// of the redraw, callable without a window.
#pragma once

#include <array>
#include <string>

#include "common/numbers.h"

namespace quelo {

class OpenGL_Ctrl;

// RoomBox order: x min, x max, y min, y max, z min, z max.
using RoomBoxValues = std::array<Single, 6>;

struct SceneListState {
  Long RenderList = 0;      // display-list name, 0 when none
  RoomBoxValues RoomBox{};  // filled when a file is loaded
};

// Deletes and regenerates the list when Reload is true (or none exists),
// replays the views 2, 1, 3 of SceneFileName into it with the culling and block
// switches, and fills RoomBox. With no file name an empty list is compiled and
// RoomBox is left as it was. Run-time file errors reach the caller.
void BuildSceneList(OpenGL_Ctrl& FaceGL, bool Reload, SceneListState& state,
                    const std::string& SceneFileName, bool axes_checked, bool grids_checked);

}  // namespace quelo
