#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using Box = std::array<Single, 6>;  // x min, x max, y min, y max, z min, z max
using Lines = std::vector<std::string>;
using testing::ErrorOf;
using testing::StreamBuilder;

class Replay : public ::testing::Test {
 protected:
  // Replays the file from position 1 with a box started at extreme values.
  Lines Play() {
    ScopedTracingGL trace;
    ctrl.FileOpen(path);
    for (Long id : disabled) ctrl.auxBlockEnabled(id, false);
    ctrl.FileGoto(1);
    ctrl.FileCoord_xMin = ctrl.FileCoord_yMin = ctrl.FileCoord_zMin = 1e38f;
    ctrl.FileCoord_xMax = ctrl.FileCoord_yMax = ctrl.FileCoord_zMax = -1e38f;
    ctrl.FileReadToGL();
    ctrl.FileClose();
    return trace.Lines();
  }
  Box PlayedBox() const {
    return {ctrl.FileCoord_xMin, ctrl.FileCoord_xMax, ctrl.FileCoord_yMin,
            ctrl.FileCoord_yMax, ctrl.FileCoord_zMin, ctrl.FileCoord_zMax};
  }
  void TearDown() override { Files().CloseAll(); }

  testing::TempDir dir;
  std::string path = dir.File("s.bin");
  std::vector<Long> disabled;
  OpenGL_Ctrl ctrl;
};

TEST_F(Replay, DisabledBlocksNestByEnableStateAloneAndLetOnlyNormalsThrough) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteBlockEndRecord(s.f(), 9);  // no open block: depth stays 0
    WriteBlockBeginRecord(s.f(), 9);
    WriteVertex3fRecord(s.f(), 1, 0, 0);
    WriteColor3fRecord(s.f(), 1, 0, 0);
    WriteColorLongRecord(s.f(), 0xFF);
    WriteNormal3fRecord(s.f(), 0, 0, 1);
    WriteBlockBeginRecord(s.f(), 4);  // enabled inside disabled: still skipped
    WriteVertex3fRecord(s.f(), 2, 0, 0);
    WriteBlockBeginRecord(s.f(), 8);  // disabled inside disabled: one deeper
    WriteVertex3fRecord(s.f(), 3, 0, 0);
    WriteBlockEndRecord(s.f(), 4);  // the end's id is not matched: lifts nothing
    WriteBlockEndRecord(s.f(), 8);
    WriteVertex3fRecord(s.f(), 4, 0, 0);
    WriteBlockEndRecord(s.f(), 9);
    WriteVertex3fRecord(s.f(), 5, -1, 2);
    WriteEndOfSeqRecord(s.f());
  }
  disabled = {9, 8};
  EXPECT_EQ(Play(), (Lines{"glNormal3f(0, 0, 1)", "glVertex3f(5, -1, 2)"}));
  EXPECT_EQ(PlayedBox(), (Box{5, 5, -1, -1, 2, 2}));

  disabled.clear();
  EXPECT_EQ(Play(), (Lines{"glVertex3f(1, 0, 0)", "glColor3f(1, 0, 0)", "glColor3f(1, 0, 0)",
                           "glNormal3f(0, 0, 1)", "glVertex3f(2, 0, 0)", "glVertex3f(3, 0, 0)",
                           "glVertex3f(4, 0, 0)", "glVertex3f(5, -1, 2)"}));
  EXPECT_EQ(PlayedBox(), (Box{1, 5, -1, 0, 0, 2}));
}

TEST(BlockSwitches, EnablingKeepsTheLopsidedRemoval) {
  OpenGL_Ctrl c;
  c.auxBlockEnabled(5, true);  // empty list: nothing
  EXPECT_TRUE(c.DisabledBlocks().empty());
  c.auxBlockEnabled(3, false);
  c.auxBlockEnabled(5, false);
  c.auxBlockEnabled(5, false);  // already there
  EXPECT_EQ(c.DisabledBlocks(), (std::vector<Long>{3, 5}));
  c.auxBlockEnabled(5, true);  // the last entry: unchanged, stays disabled
  EXPECT_EQ(c.DisabledBlocks(), (std::vector<Long>{3, 5}));
  EXPECT_FALSE(c.auxBlockEnabled(5));
  c.auxBlockEnabled(3, true);  // the last entry is copied over it
  EXPECT_EQ(c.DisabledBlocks(), (std::vector<Long>{5, 5}));
  EXPECT_TRUE(c.auxBlockEnabled(3));
  EXPECT_FALSE(c.auxBlockEnabled(5));
  c.auxBlockEnabled(7, true);  // not in the list: nothing
  EXPECT_EQ(c.DisabledBlocks().size(), 2u);
}

TEST_F(Replay, PolygonCountBeyondSixteenBitsIsAnOverflow) {
  StreamBuilder(path).Head().Longs({11, 4, 40000});
  EXPECT_EQ(ErrorOf([&] { Play(); }), kErrOverflow);
}

// A polygon with a 3dv corner is measured alike whether drawn or not.
TEST_F(Replay, PolygonsAreTriangulatedAndAllCornersMeasuredWithOrWithoutGl) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteTessBeginPolyRecord(s.f(), 4);
    WriteTessVector3dRecord(s.f(), 0, 0, 0);
    WriteTessVector3dRecord(s.f(), 12, 0, 0);
    WriteTessVector3dvRecord(s.f(), 10, 6, 1e-40);  // rounds to a Single subnormal
    WriteTessVector3dRecord(s.f(), 0, 2, 0.5);
    WriteTessEndPolyRecord(s.f());
    WriteEndOfSeqRecord(s.f());
  }
  ScopedRecordedMessages messages;
  const Box box = {0, 12, 0, 6, 0, 0.5};
  ctrl.DontSendToGL = true;
  EXPECT_EQ(Play(), Lines{});
  EXPECT_EQ(PlayedBox(), box);
  ctrl.DontSendToGL = false;
  const Lines lines = Play();
  EXPECT_EQ(PlayedBox(), box);
  EXPECT_TRUE(messages.Texts().empty());
  // Two triangles, each corner with its edge flag.
  ASSERT_EQ(lines.size(), 2u + 6 * 2) << ::testing::PrintToString(lines);
  EXPECT_EQ(lines[0], "glBegin(GL_TRIANGLES)");
  std::set<std::string> corners;
  for (const auto& l : lines) {
    if (l.rfind("glVertex3d(", 0) == 0) corners.insert(l);
  }
  EXPECT_EQ(corners, (std::set<std::string>{"glVertex3d(0, 0, 0)", "glVertex3d(12, 0, 0)",
                                            "glVertex3d(10, 6, 1e-40)", "glVertex3d(0, 2, 0.5)"}));
}

TEST_F(Replay, ReplayWhileRecordingIntoTheSameFileStaysBounded) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteVertex3fRecord(s.f(), 1, 2, 3);
    WriteVertex3fRecord(s.f(), 4, 5, 6);
    WriteEndOfSeqRecord(s.f());
  }
  const auto before = testing::ReadAll(path).size();
  // Each played record is written again just after it, over the one that
  // follows: the replay still ends, having grown the file by at most the
  // longest record (32 bytes) that started within the old end.
  ctrl.SendToFile = true;
  const auto lines = Play();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "glVertex3f(1, 2, 3)");
  EXPECT_LE(testing::ReadAll(path).size(), before + 32);
}

}  // namespace
}  // namespace quelo
