#include <gtest/gtest.h>

#include <array>

#include <algorithm>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "support/bytes.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::StreamBuilder;
using testing::TempDir;

class Replay : public ::testing::Test {
 protected:
  // Replays the file from position 1 with a box started at extreme values.
  std::vector<std::string> Play(const std::string& file, OpenGL_Ctrl& c) {
    ScopedTracingGL trace;
    c.FileOpen(file);
    for (Long id : disabled) c.auxBlockEnabled(id, false);
    c.FileGoto(1);
    ResetBox(c);
    try {
      c.FileReadToGL();
    } catch (...) {
      c.FileClose();
      throw;
    }
    c.FileClose();
    return trace.Lines();
  }
  static void ResetBox(OpenGL_Ctrl& c) {
    c.FileCoord_xMin = c.FileCoord_yMin = c.FileCoord_zMin = 1e38f;
    c.FileCoord_xMax = c.FileCoord_yMax = c.FileCoord_zMax = -1e38f;
  }
  static bool BoxUntouched(const OpenGL_Ctrl& c) {
    return c.FileCoord_xMin == 1e38f && c.FileCoord_xMax == -1e38f;
  }
  // x min, x max, y min, y max, z min, z max.
  static std::array<Single, 6> Box(const OpenGL_Ctrl& c) {
    return {c.FileCoord_xMin, c.FileCoord_xMax, c.FileCoord_yMin,
            c.FileCoord_yMax, c.FileCoord_zMin, c.FileCoord_zMax};
  }

  TempDir dir;
  std::string path = dir.File("s.bin");
  std::vector<Long> disabled;
  OpenGL_Ctrl ctrl;
};

using Lines = std::vector<std::string>;

TEST_F(Replay, DisabledBlockDrawsNothingAndLeavesTheBoxAlone) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteBlockBeginRecord(s.f(), 7);
    WriteVertex3fRecord(s.f(), 1, 2, 3);
    WriteBlockEndRecord(s.f(), 7);
    WriteEndOfSeqRecord(s.f());
  }
  disabled = {7};
  EXPECT_EQ(Play(path, ctrl), Lines{});
  EXPECT_TRUE(BoxUntouched(ctrl));

  disabled.clear();
  EXPECT_EQ(Play(path, ctrl), Lines{"glVertex3f(1, 2, 3)"});
  EXPECT_EQ(Box(ctrl), (std::array<Single, 6>{1, 1, 2, 2, 3, 3}));
}

TEST_F(Replay, NormalsPassInsideDisabledBlocksColoursDoNot) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteBlockBeginRecord(s.f(), 1);
    WriteColor3fRecord(s.f(), 1, 0, 0);
    WriteColorLongRecord(s.f(), 0xFF);
    WriteNormal3fRecord(s.f(), 0, 0, 1);
    WriteBlockEndRecord(s.f(), 1);
    WriteEndOfSeqRecord(s.f());
  }
  disabled = {1};
  EXPECT_EQ(Play(path, ctrl), Lines{"glNormal3f(0, 0, 1)"});
}

TEST_F(Replay, BlocksNestByEnableStateAlone) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteBlockEndRecord(s.f(), 9);  // no open block: depth stays 0
    WriteBlockBeginRecord(s.f(), 9);
    WriteVertex3fRecord(s.f(), 1, 0, 0);
    WriteBlockBeginRecord(s.f(), 4);  // enabled inside disabled: still skipped
    WriteVertex3fRecord(s.f(), 2, 0, 0);
    WriteBlockBeginRecord(s.f(), 8);  // disabled inside disabled: one deeper
    WriteVertex3fRecord(s.f(), 3, 0, 0);
    WriteBlockEndRecord(s.f(), 4);  // the end's id is not matched: lifts nothing
    WriteBlockEndRecord(s.f(), 8);
    WriteVertex3fRecord(s.f(), 4, 0, 0);
    WriteBlockEndRecord(s.f(), 9);
    WriteVertex3fRecord(s.f(), 5, 0, 0);
    WriteEndOfSeqRecord(s.f());
  }
  disabled = {9, 8};
  EXPECT_EQ(Play(path, ctrl), Lines{"glVertex3f(5, 0, 0)"});
  EXPECT_EQ(ctrl.FileCoord_xMin, 5.0f);
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

TEST_F(Replay, StreamHeadAloneDrawsTheUnknownPictureOnlyForOldReaders) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteEndOfSeqRecord(s.f());
  }
  EXPECT_EQ(Play(path, ctrl), Lines{});
  EXPECT_TRUE(BoxUntouched(ctrl));
}

TEST_F(Replay, PolygonCountBeyondSixteenBitsIsAnOverflow) {
  {
    StreamBuilder s(path);
    s.Head();
    s.Longs({11, 4, 40000});
  }
  try {
    Play(path, ctrl);
    FAIL() << "expected an overflow";
  } catch (const RuntimeError& e) {
    EXPECT_EQ(e.number(), kErrOverflow);
  }
}

TEST_F(Replay, DontSendToGLWalksAndMeasuresWithoutDrawing) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteBeginRecord(s.f(), GL_LINES);
    WriteVertex3fRecord(s.f(), -1, 5, 2);
    WriteVertex3fRecord(s.f(), 3, -5, 0);
    WriteEndRecord(s.f());
    WriteTessBeginPolyRecord(s.f(), 3);
    WriteTessVector3dRecord(s.f(), 0, 0, 0);
    WriteTessVector3dRecord(s.f(), 10, 0, 0);
    WriteTessVector3dvRecord(s.f(), 0, 0, 1e-40);  // rounds to a Single subnormal
    WriteTessEndPolyRecord(s.f());
    WriteEndOfSeqRecord(s.f());
  }
  ctrl.DontSendToGL = true;
  EXPECT_EQ(Play(path, ctrl), Lines{});
  EXPECT_EQ(Box(ctrl), (std::array<Single, 6>{-1, 10, -5, 5, 0, 2}));
}

TEST_F(Replay, TessellatedPolygonIsTriangulatedAndMeasured) {
  {
    StreamBuilder s(path);
    s.Head();
    WriteTessBeginPolyRecord(s.f(), 4);
    WriteTessVector3dRecord(s.f(), 0, 0, 0);
    WriteTessVector3dRecord(s.f(), 2, 0, 0);
    WriteTessVector3dvRecord(s.f(), 2, 2, 0);
    WriteTessVector3dRecord(s.f(), 0, 2, 0.5);
    WriteTessEndPolyRecord(s.f());
    WriteEndOfSeqRecord(s.f());
  }
  ScopedRecordedMessages messages;
  const auto lines = Play(path, ctrl);
  EXPECT_TRUE(messages.Texts().empty());
  // Two triangles of three corners, each corner with its edge flag.
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& l) { return l.rfind("glVertex3d(", 0) == 0; }),
            6);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "glBegin(GL_TRIANGLES)");
  EXPECT_EQ(ctrl.FileCoord_xMax, 2.0f);
  EXPECT_EQ(ctrl.FileCoord_zMax, 0.5f);
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
  // Each played record is written again at the position just after it, over
  // the record that follows; the replay must still come to an end.
  ctrl.SendToFile = true;
  const auto lines = Play(path, ctrl);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "glVertex3f(1, 2, 3)");
  // Records that start within the old end still play, so the file grows by at
  // most the longest record (32 bytes).
  EXPECT_LE(testing::ReadAll(path).size(), before + 32);
}

}  // namespace
}  // namespace quelo
