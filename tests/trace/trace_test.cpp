// qgl trace and the demo scene, seen as a user sees them: through the real
// program's output.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "sceneload/scene_list.h"
#include "support/recorded_messages.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::Quoted;
using testing::RunCommand;

const std::string kQgl = QUELO_BINARY_DIR "/tools/qgl/qgl";
const std::string kDemo = QUELO_SOURCE_DIR "/examples/demo.qgl";

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// True when every line of `small` appears in `big` in the same order.
bool IsSubsequence(const std::vector<std::string>& small, const std::vector<std::string>& big) {
  std::size_t i = 0;
  for (const auto& line : big) {
    if (i < small.size() && small[i] == line) ++i;
  }
  return i == small.size();
}

std::vector<std::string> Trace(const std::string& options) {
  const auto r = RunCommand(kQgl + " trace " + Quoted(kDemo) + options);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  return SplitLines(r.out);
}

TEST(DemoScene, BundledFileIsWhatQglDemoWrites) {
  testing::TempDir dir;
  const auto out = dir.File("demo.qgl");
  const auto r = RunCommand(kQgl + " demo " + Quoted(out));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(testing::ReadAll(out), testing::ReadAll(kDemo))
      << "examples/demo.qgl is stale: regenerate it with qgl demo examples/demo.qgl";
}

TEST(QglTrace, DemoShowsTheWholeSceneInOneList) {
  const auto lines = Trace("");
  ASSERT_GT(lines.size(), 100u);
  EXPECT_EQ(lines[0], "glGenLists(1)");
  EXPECT_EQ(lines[1], "glNewList(1, GL_COMPILE)");
  EXPECT_EQ(lines[lines.size() - 2], "glEndList()");
  EXPECT_EQ(lines.back(), "RoomBox: -1 15 -2 8.366025 0 5.8");
  // Polygons arrive as facetter triangles with edge flags; the culled view is
  // wrapped in its culling switch.
  const auto count = [&](const std::string& l) {
    return std::count(lines.begin(), lines.end(), l);
  };
  EXPECT_GT(count("glBegin(GL_TRIANGLES)"), 20);
  EXPECT_GT(count("glEdgeFlag(GL_FALSE)"), 0);
  EXPECT_EQ(count("glEnable(GL_CULL_FACE)"), 1);
  EXPECT_EQ(count("glDisable(GL_CULL_FACE)"), 1);
  EXPECT_EQ(count("glPolygonMode(GL_FRONT_AND_BACK, GL_LINE)"), 1);
}

TEST(QglTrace, AxesAndGridsAddExactlyTheirBlocks) {
  const auto plain = Trace("");
  const auto axes = Trace(" --axes");
  const auto grids = Trace(" --grids");
  const auto both = Trace(" --axes --grids");
  const std::vector<std::string> body(plain.begin(), plain.end() - 1);  // without RoomBox

  // The axes block: three arrows of colour, begin, six vertices, end.
  ASSERT_TRUE(IsSubsequence(body, axes));
  EXPECT_EQ(axes.size(), plain.size() + 27);
  EXPECT_NE(std::find(axes.begin(), axes.end(), "glVertex3f(12, 0, 0)"), axes.end());
  EXPECT_EQ(axes.back(), "RoomBox: -1 15 -2 9 0 7");

  // The grid: one colour, one begin, 20 + 15 lines of two vertices, one end.
  ASSERT_TRUE(IsSubsequence(body, grids));
  EXPECT_EQ(grids.size(), plain.size() + 73);
  EXPECT_EQ(grids.back(), "RoomBox: -3 16 -4 10 -0.01 5.8");

  EXPECT_EQ(both.size(), plain.size() + 27 + 73);
  EXPECT_EQ(both.back(), "RoomBox: -3 16 -4 10 -0.01 7");
}

TEST(QglTrace, ForeignFileIsAnEmptySceneAndUnreadableOneNoScene) {
  testing::TempDir dir;
  const auto path = dir.File("notes.txt");
  testing::WriteAll(path, std::vector<unsigned char>(100, 'x'));
  auto r = RunCommand(kQgl + " trace " + Quoted(path));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out,
            "glGenLists(1)\nglNewList(1, GL_COMPILE)\nglEndList()\nRoomBox: -1 1 -1 1 -1 1\n");
  EXPECT_NE(r.err.find(path), std::string::npos);
  r = RunCommand(kQgl + " trace /nonexistent/scene.qgl");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("/nonexistent/scene.qgl"), std::string::npos);
  EXPECT_EQ(RunCommand(kQgl + " trace").status, 2);  // usage
}

TEST(QglTrace, BadPolygonCountShowsTheMessageAndStatusOne) {
  // A polygon record whose count does not fit 16 bits, patched into a copy
  // of the demo: the first op 11 record's payload.
  auto bytes = testing::ReadAll(kDemo);
  bool patched = false;
  for (std::size_t i = 319 + 756; i + 12 <= bytes.size() && !patched; ++i) {
    if (bytes[i] == 11 && bytes[i + 1] == 0 && bytes[i + 4] == 4 && bytes[i + 5] == 0) {
      bytes[i + 10] = 0x01;  // count += 65536
      patched = true;
    }
  }
  ASSERT_TRUE(patched);
  testing::TempDir dir;
  const auto path = dir.File("bad.qgl");
  testing::WriteAll(path, bytes);
  const auto r = RunCommand(kQgl + " trace " + Quoted(path));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "message: Overflow\n");
}

// Every damage replay may meet ends in a scene or a run-time error: never a
// crash, a hang, an open display list or a box turned inside out.
TEST(SceneLoading, DamagedDemoFilesEndInAClosedListOrAnError) {
  const auto original = testing::ReadAll(kDemo);
  testing::TempDir dir;
  const auto path = dir.File("damaged.qgl");
  ScopedRecordedMessages messages;
  int loaded = 0;
  auto load = [&](const std::vector<unsigned char>& bytes) {
    testing::WriteAll(path, bytes);
    OpenGL_Ctrl gl;
    SceneListState state;
    ScopedTracingGL trace;
    try {
      BuildSceneList(gl, true, state, path, true, true);
      ++loaded;
      EXPECT_NE(state.RenderList, 0);
      for (int axis = 0; axis < 3; ++axis)
        EXPECT_LE(state.RoomBox[2 * axis], state.RoomBox[2 * axis + 1]);
    } catch (const RuntimeError&) {
      // Reported to the user by the viewer.
    }
    const auto lines = trace.Lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& l) { return l.starts_with("glNewList("); }),
              std::count(lines.begin(), lines.end(), "glEndList()"));
  };
  // Every truncation, in steps that still land inside every kind of field.
  for (std::size_t len = 0; len < original.size(); len += 13) {
    load(std::vector<unsigned char>(original.begin(), original.begin() + static_cast<long>(len)));
  }
  // Random bytes overwritten, with a fixed seed so a failure repeats.
  std::mt19937 rng(12345);
  for (int round = 0; round < 200; ++round) {
    auto bytes = original;
    for (int k = 0; k < 8; ++k) {
      bytes[rng() % bytes.size()] = static_cast<unsigned char>(rng());
    }
    load(bytes);
  }
  EXPECT_GT(loaded, 0);
}

}  // namespace
}  // namespace quelo
