#include "sceneload/scene_list.h"

#include "common/messages.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/container.h"

namespace quelo {

namespace {

constexpr Long kAxesBlock = 0;
constexpr Long kGridsBlock = 1;
// Views are compiled in this order; a later view draws over an earlier one.
constexpr Long kViewOrder[] = {2, 1, 3};

// Load messages, kept for their texts. Nothing in a load assigns these status
// values, so neither message is ever shown: a load never reports an empty or
// foreign file, it just shows an empty scene.
struct ViewStatus {
  Long value[3] = {0, 0, 0};
  void Report() const {
    if (value[0] == -1 && value[1] == -1 && value[2] == -1) WarningBox("File Empty!");
    if (value[0] == -2 || value[1] == -2 || value[2] == -2) WarningBox("Unknown File Format!");
  }
};

bool Culled(const SceneInfo& info) {
  return (info.Flags & kSceneFlagBackFaceCulling) != 0;
}

void ReplayViews(OpenGL_Ctrl& gl, SceneListState& state, const std::string& file, bool axes,
                 bool grids) {
  gl.FileCoord_xMin = gl.FileCoord_yMin = gl.FileCoord_zMin = 1e38f;
  gl.FileCoord_xMax = gl.FileCoord_yMax = gl.FileCoord_zMax = -1e38f;

  // One record serves the three reads: a missing view keeps the previous
  // view's culling flag in force, and the switches below always pair up.
  SceneInfo info;
  for (const Long kind : kViewOrder) {
    if (Culled(info)) gl.oglDisable(GL_CULL_FACE);
    const Long position = KIVO_GLMapFile::LocateStream(file, kind, info);
    if (Culled(info)) gl.oglEnable(GL_CULL_FACE);
    if (position > 0) {
      gl.SendToFile = false;
      gl.FileOpen(file);
      gl.FileGoto(position);
      gl.auxBlockEnabled(kAxesBlock, axes);
      gl.auxBlockEnabled(kGridsBlock, grids);
      gl.FileReadToGL();
      gl.auxBlockEnabled(kGridsBlock, true);
      gl.auxBlockEnabled(kAxesBlock, true);
      gl.FileClose();
    }
  }
  if (Culled(info)) gl.oglDisable(GL_CULL_FACE);
  ViewStatus().Report();

  // An axis that no vertex widened spans -1..1.
  if (gl.FileCoord_xMax < gl.FileCoord_xMin) {
    gl.FileCoord_xMin = -1;
    gl.FileCoord_xMax = 1;
  }
  if (gl.FileCoord_yMax < gl.FileCoord_yMin) {
    gl.FileCoord_yMin = -1;
    gl.FileCoord_yMax = 1;
  }
  if (gl.FileCoord_zMax < gl.FileCoord_zMin) {
    gl.FileCoord_zMin = -1;
    gl.FileCoord_zMax = 1;
  }
  state.RoomBox = {gl.FileCoord_xMin, gl.FileCoord_xMax, gl.FileCoord_yMin,
                   gl.FileCoord_yMax, gl.FileCoord_zMin, gl.FileCoord_zMax};
}

}  // namespace

void BuildSceneList(OpenGL_Ctrl& FaceGL, bool Reload, SceneListState& state,
                    const std::string& SceneFileName, bool axes_checked, bool grids_checked) {
  if (Reload && state.RenderList != 0) {
    FaceGL.oglDeleteLists(static_cast<GLuint>(state.RenderList), 1);
    state.RenderList = 0;
  }
  if (state.RenderList != 0) return;  // reuse: the file is not read again

  state.RenderList = static_cast<Long>(FaceGL.oglGenLists(1));
  FaceGL.oglNewList(static_cast<GLuint>(state.RenderList), GL_COMPILE);
  try {
    if (!SceneFileName.empty()) {
      ReplayViews(FaceGL, state, SceneFileName, axes_checked, grids_checked);
    }
  } catch (...) {
    // The list must be closed whatever the file did, or every later GL call
    // would be compiled into it.
    FaceGL.FileClose();
    FaceGL.oglEndList();
    throw;
  }
  FaceGL.oglEndList();
}

}  // namespace quelo
