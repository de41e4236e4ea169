#include "sceneload/scene_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "support/error_of.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using Lines = std::vector<std::string>;

// A view to put into a test scene: its kind, culling flag and what it draws.
struct View {
  Long kind;
  bool culled = false;
  float x = 0;         // one vertex at (x, x, x)
  bool axes = false;   // a block-0 vertex at (100, 0, 0)
  bool grids = false;  // a block-1 vertex at (0, -50, 0)
  bool vertex = true;
};

std::string WriteScene(const std::string& path, const std::vector<View>& views) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  Long id = 1;
  for (const View& v : views) {
    SceneInfo info;
    info.Flags = v.culled ? kSceneFlagBackFaceCulling : 0;
    w.AddInfoChunk(v.kind, id, info);
    w.BeginGlChunk(v.kind, id);
    if (v.vertex) WriteVertex3fRecord(*f, v.x, v.x, v.x);
    if (v.axes) {
      WriteBlockBeginRecord(*f, 0);
      WriteVertex3fRecord(*f, 100, 0, 0);
      WriteBlockEndRecord(*f, 0);
    }
    if (v.grids) {
      WriteBlockBeginRecord(*f, 1);
      WriteVertex3fRecord(*f, 0, -50, 0);
      WriteBlockEndRecord(*f, 1);
    }
    w.EndGlChunk();
    ++id;
  }
  w.Finish();
  return path;
}

class SceneList : public ::testing::Test {
 protected:
  Lines Build(const std::string& file, bool reload = true, bool axes = false, bool grids = false) {
    ScopedTracingGL trace;
    BuildSceneList(ctrl, reload, state, file, axes, grids);
    return trace.Lines();
  }
  RoomBoxValues Box() const { return state.RoomBox; }

  testing::TempDir dir;
  OpenGL_Ctrl ctrl;
  SceneListState state;
  ScopedRecordedMessages messages;
};

TEST_F(SceneList, ViewsAreCompiledInTheOrderTwoOneThreeAndReusedUnlessReloading) {
  const auto file = WriteScene(dir.File("s.qgl"), {{1, false, 1}, {3, false, 3}, {2, false, 2}});
  EXPECT_EQ(Build(file), (Lines{"glGenLists(1)", "glNewList(1, GL_COMPILE)", "glVertex3f(2, 2, 2)",
                                "glVertex3f(1, 1, 1)", "glVertex3f(3, 3, 3)", "glEndList()"}));
  EXPECT_EQ(state.RenderList, 1);
  EXPECT_EQ(Box(), (RoomBoxValues{1, 3, 1, 3, 1, 3}));
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(Build(file, false), Lines{});
  EXPECT_EQ(state.RenderList, 1);
  // Reloading a file with only the fc view replays that view alone.
  const auto fc = WriteScene(dir.File("fc.qgl"), {{1, false, 4}});
  EXPECT_EQ(Build(fc), (Lines{"glDeleteLists(1, 1)", "glGenLists(1)", "glNewList(1, GL_COMPILE)",
                              "glVertex3f(4, 4, 4)", "glEndList()"}));
}

// Which block vertices each menu state draws is checked on the demo through
// qgl trace (tests/trace); here the boxes and the switches left behind.
TEST_F(SceneList, AxesAndGridsFollowTheirMenuItems) {
  const auto file = WriteScene(dir.File("ag.qgl"), {{2, false, 1, true, true}});
  const Lines plain = Build(file, true, false, false);
  EXPECT_EQ(std::count(plain.begin(), plain.end(), "glVertex3f(100, 0, 0)"), 0);
  EXPECT_EQ(Box(), (RoomBoxValues{1, 1, 1, 1, 1, 1}));
  // Both blocks were disabled (0, 1); enabling 1 (the last entry) keeps it,
  // enabling 0 copies 1 over it.
  EXPECT_EQ(ctrl.DisabledBlocks(), (std::vector<Long>{1, 1}));
  Build(file, true, true, false);
  EXPECT_EQ(Box(), (RoomBoxValues{1, 100, 0, 1, 0, 1}));
  // The next load empties the list again.
  Build(file, true, true, true);
  EXPECT_EQ(Box(), (RoomBoxValues{0, 100, -50, 1, 0, 1}));
  EXPECT_TRUE(ctrl.DisabledBlocks().empty());
}

TEST_F(SceneList, CullingSwitchesPairUpAndCarryOverMissingViews) {
  // Kind 2 plain, kind 1 culled, kind 3 missing: kind 3 inherits kind 1's
  // flag, so its locate is wrapped in a disable/enable pair too.
  const auto file = WriteScene(dir.File("c.qgl"), {{2, false, 2}, {1, true, 1}});
  EXPECT_EQ(Build(file),
            (Lines{"glGenLists(1)", "glNewList(1, GL_COMPILE)", "glVertex3f(2, 2, 2)",
                   "glEnable(GL_CULL_FACE)", "glVertex3f(1, 1, 1)", "glDisable(GL_CULL_FACE)",
                   "glEnable(GL_CULL_FACE)", "glDisable(GL_CULL_FACE)", "glEndList()"}));
}

TEST_F(SceneList, EmptyForeignMissingOrNoFile) {
  const Lines empty = {"glGenLists(1)", "glNewList(1, GL_COMPILE)", "glEndList()"};
  // No file keeps the box.
  state.RoomBox = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(Build(""), empty);
  EXPECT_EQ(Box(), (RoomBoxValues{1, 2, 3, 4, 5, 6}));
  // A foreign file, and streams without vertices, give the unit box.
  const auto path = dir.File("foreign.txt");
  testing::WriteAll(path, {'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd', '\n'});
  state = SceneListState{};
  EXPECT_EQ(Build(path), empty);
  EXPECT_EQ(Box(), (RoomBoxValues{-1, 1, -1, 1, -1, 1}));
  state.RoomBox = {1, 2, 3, 4, 5, 6};
  Build(WriteScene(dir.File("empty.qgl"), {{2, false, 0, false, false, false}}));
  EXPECT_EQ(Box(), (RoomBoxValues{-1, 1, -1, 1, -1, 1}));
  EXPECT_EQ(ctrl.FileCoord_xMin, -1.0f);
  EXPECT_EQ(ctrl.FileCoord_zMax, 1.0f);
  EXPECT_TRUE(messages.Texts().empty());
  // A missing file raises after closing the list.
  ScopedTracingGL trace;
  EXPECT_EQ(testing::ErrorOf(
                [&] { BuildSceneList(ctrl, true, state, dir.File("gone.qgl"), false, false); }),
            kErrFileNotFound);
  EXPECT_EQ(trace.Lines(), (Lines{"glDeleteLists(1, 1)", "glGenLists(1)",
                                  "glNewList(1, GL_COMPILE)", "glEndList()"}));
}

}  // namespace
}  // namespace quelo
