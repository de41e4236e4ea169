#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "common/binary_file.h"
#include "common/runtime_error.h"
#include "facet/polygon_buffer.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using ByteVector = std::vector<unsigned char>;
using Lines = std::vector<std::string>;
using testing::ReadAll;
using testing::TempDir;
using testing::WriteAll;

using testing::Bytes;

using quelo::testing::ErrorOf;

class Recording : public ::testing::Test {
 protected:
  void Open() {
    ctrl.FileOpen(path);
    ctrl.FileGoto(1);
  }
  void TearDown() override { Files().CloseAll(); }

  TempDir dir;
  std::string path = dir.File("stream.bin");
  std::string expected_path = dir.File("expected.bin");
  OpenGL_Ctrl ctrl;
};

TEST_F(Recording, TriangleWithBothSwitchesWritesRecordsAndDrawsNothing) {
  Open();
  ctrl.SendToFile = true;
  ctrl.DontSendToGL = true;
  ScopedTracingGL trace;
  ctrl.oglBegin(GL_TRIANGLES);
  ctrl.oglVertex3f(0, 0, 0);
  ctrl.oglVertex3f(1, 0, 0);
  ctrl.oglVertex3f(0, 1, 0);
  ctrl.oglEnd();
  EXPECT_EQ(ctrl.FileAddr(), 1 + 12 + 3 * 20 + 8);
  ctrl.FileClose();
  EXPECT_TRUE(trace.Lines().empty());

  Bytes want;
  want.L(1).L(4).L(4);  // op 1, length 4, GL_TRIANGLES
  want.L(4).L(12).S(0).S(0).S(0);
  want.L(4).L(12).S(1).S(0).S(0);
  want.L(4).L(12).S(0).S(1).S(0);
  want.L(2).L(0);
  EXPECT_EQ(ReadAll(path), want.data());
}

// Every recording method once, read back byte for byte against the record
// writers (which the reader tests decode).
TEST_F(Recording, ProducerStreamMatchesTheWritersAndDecodes) {
  Open();
  ctrl.SendToFile = true;
  ctrl.DontSendToGL = true;
  ctrl.FilePutBeginOfSeq();
  EXPECT_EQ(ctrl.FileAddr(), 1 + kStreamHeadSize);
  ctrl.auxPutBlockBegin(0);
  ctrl.oglBegin(GL_LINES);
  ctrl.oglColor3f(0.25f, 0.5f, 1);
  ctrl.oglNormal3f(0, 0, -1);
  ctrl.oglVertex3f(1.5f, -2, 3);
  ctrl.oglEnd();
  ctrl.auxPutBlockEnd(0);
  const Single shininess[4] = {40, 7, 8, 9};  // four values recorded whatever pname takes
  ctrl.oglMaterialfv(GL_FRONT, GL_SHININESS, shininess);
  ctrl.oglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  ctrl.oglFrontFace(GL_CW);
  ctrl.oglEdgeFlag(true);
  ctrl.oglEdgeFlag(false);
  ctrl.auxColorLong(0x00FF8000);
  ctrl.tessBeginPoly(-2);
  ctrl.tessVector3d(0.1, 0.2, 0.3);
  const double v[4] = {99, 1, 2, 3};  // elements 1..3; element 0 is not recorded
  ctrl.tessVector3dv(v);
  ctrl.tessEndPoly();
  ctrl.FilePutEndOfSeq();
  Long end = ctrl.FileAddr();
  ctrl.FileClose();

  {
    auto f = BinaryFile::Open(expected_path, BinaryFile::Access::kReadWrite);
    WriteStreamHead(*f);
    WriteBlockBeginRecord(*f, 0);
    WriteBeginRecord(*f, GL_LINES);
    WriteColor3fRecord(*f, 0.25f, 0.5f, 1);
    WriteNormal3fRecord(*f, 0, 0, -1);
    WriteVertex3fRecord(*f, 1.5f, -2, 3);
    WriteEndRecord(*f);
    WriteBlockEndRecord(*f, 0);
    WriteMaterialfvRecord(*f, GL_FRONT, GL_SHININESS, shininess);
    WritePolygonModeRecord(*f, GL_FRONT_AND_BACK, GL_LINE);
    WriteFrontFaceRecord(*f, GL_CW);
    WriteEdgeFlagRecord(*f, true);
    WriteEdgeFlagRecord(*f, false);
    WriteColorLongRecord(*f, 0x00FF8000);
    WriteTessBeginPolyRecord(*f, -2);
    WriteTessVector3dRecord(*f, 0.1, 0.2, 0.3);
    WriteTessVector3dvRecord(*f, 1, 2, 3);
    WriteTessEndPolyRecord(*f);
    WriteEndOfSeqRecord(*f);
  }
  ByteVector got = ReadAll(path);
  EXPECT_EQ(got, ReadAll(expected_path));
  EXPECT_EQ(static_cast<Long>(got.size()) + 1, end);

  // The irregular payloads, by hand: the edge flag as a Long -1, the packed
  // colour, the 16-bit count widened to a Long.
  auto bytes_at = [&](std::size_t pos, std::size_t n) {
    return ByteVector(got.begin() + static_cast<long>(pos),
                      got.begin() + static_cast<long>(pos + n));
  };
  // Head, block begin, begin, colour, normal, vertex, end, block end,
  // material, polygon mode, front face: then the two edge flags.
  std::size_t pos = kStreamHeadSize + 12 + 12 + 20 + 20 + 20 + 8 + 12 + 32 + 16 + 12;
  Bytes want;
  for (Long x : {9, 4, -1, 9, 4, 0, 10, 4, 0x00FF8000, 11, 4, -2}) want.L(x);
  EXPECT_EQ(bytes_at(pos, want.size()), want.data());
}

TEST_F(Recording, SwitchesActIndependently) {
  Open();
  struct Case {
    bool send_to_file;
    bool dont_send_to_gl;
    Long bytes_written;
    Lines gl;
  };
  const Case cases[] = {
      {false, false, 0, {"glVertex3f(1, 2, 3)", "glEdgeFlag(GL_FALSE)"}},
      {true, false, 20 + 12, {"glVertex3f(1, 2, 3)", "glEdgeFlag(GL_FALSE)"}},
      {true, true, 20 + 12, {}},
      {false, true, 0, {}},
  };
  for (const Case& c : cases) {
    ctrl.SendToFile = c.send_to_file;
    ctrl.DontSendToGL = c.dont_send_to_gl;
    Long before = ctrl.FileAddr();
    ScopedTracingGL trace;
    ctrl.oglVertex3f(1, 2, 3);
    ctrl.oglEdgeFlag(false);
    EXPECT_EQ(ctrl.FileAddr() - before, c.bytes_written) << c.send_to_file << c.dont_send_to_gl;
    EXPECT_EQ(trace.Lines(), c.gl) << c.send_to_file << c.dont_send_to_gl;
  }
}

TEST_F(Recording, GlCallsCarryTheMethodsArguments) {
  ScopedTracingGL trace;
  ctrl.oglBegin(GL_QUADS);
  ctrl.oglColor3f(0.5f, 0, 1);
  ctrl.oglNormal3f(0, 1, 0);
  ctrl.oglEdgeFlag(true);
  ctrl.oglVertex3f(1, 2, 3);
  ctrl.oglEnd();
  const Single diffuse[4] = {1, 0.5f, 0, 1};
  ctrl.oglMaterialfv(GL_FRONT, GL_DIFFUSE, diffuse);
  const Single one_value[1] = {32};  // GL reads one value for GL_SHININESS
  ctrl.oglMaterialfv(GL_FRONT, GL_SHININESS, one_value);
  ctrl.oglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  ctrl.oglFrontFace(GL_CCW);
  ctrl.auxColorLong(0x00FF0080);  // blue 255, green 0, red 128
  EXPECT_EQ(
      trace.Lines(),
      (Lines{
          "glBegin(GL_QUADS)", "glColor3f(0.5, 0, 1)", "glNormal3f(0, 1, 0)", "glEdgeFlag(GL_TRUE)",
          "glVertex3f(1, 2, 3)", "glEnd()", "glMaterialfv(GL_FRONT, GL_DIFFUSE, [1, 0.5, 0, 1])",
          "glMaterialfv(GL_FRONT, GL_SHININESS, [32])", "glPolygonMode(GL_FRONT_AND_BACK, GL_LINE)",
          "glFrontFace(GL_CCW)", "glColor3f(0.5019608, 0, 1)"}));
}

TEST_F(Recording, FileOpenKeepsTheTailOfALongerFile) {
  WriteAll(path, ByteVector(100, 0xAB));
  ctrl.FileOpen(path);
  EXPECT_EQ(ctrl.FileAddr(), 1);  // positioned at the start
  EXPECT_EQ(ctrl.FileGoto(9), 0);
  ctrl.SendToFile = true;
  ctrl.DontSendToGL = true;
  ctrl.oglEnd();
  ctrl.FileClose();
  Bytes want;
  want.Raw(ByteVector(8, 0xAB)).L(2).L(0).Raw(ByteVector(84, 0xAB));  // op 2, length 0
  EXPECT_EQ(ReadAll(path), want.data());
}

TEST_F(Recording, FileOpenEmptiesTheDisabledBlocks) {
  ctrl.auxBlockEnabled(3, false);
  ASSERT_EQ(ctrl.DisabledBlocks().size(), 1u);
  ctrl.FileOpen(path);
  EXPECT_TRUE(ctrl.DisabledBlocks().empty());
  EXPECT_NE(ctrl.FileHnd, 0);
  ctrl.FileClose();
  EXPECT_EQ(ctrl.FileHnd, 0);
}

TEST_F(Recording, FileErrorsAndShortArraysStopTheMethodBeforeAnythingIsWrittenOrDrawn) {
  ctrl.SendToFile = true;  // no file open
  ScopedTracingGL trace;
  EXPECT_EQ(ErrorOf([&] { ctrl.oglVertex3f(1, 2, 3); }), kErrBadFileNameOrNumber);
  EXPECT_EQ(ErrorOf([&] { ctrl.tessBeginPoly(3); }), kErrBadFileNameOrNumber);
  EXPECT_EQ(ErrorOf([&] { ctrl.FileAddr(); }), kErrBadFileNameOrNumber);
  EXPECT_TRUE(trace.Lines().empty());
  // Arrays too short for what is recorded or drawn.
  Open();
  ctrl.SendToFile = true;
  ctrl.DontSendToGL = true;
  const Single three[3] = {1, 2, 3};
  EXPECT_EQ(ErrorOf([&] { ctrl.oglMaterialfv(GL_FRONT, GL_SHININESS, three); }), kErrSubscript);
  const double v3[3] = {1, 2, 3};  // lacks element 3
  EXPECT_EQ(ErrorOf([&] { ctrl.tessVector3dv(v3); }), kErrSubscript);
  EXPECT_EQ(ctrl.FileAddr(), 1);  // nothing half-written
  // Drawing only: GL must not read past the array either.
  ctrl.SendToFile = false;
  ctrl.DontSendToGL = false;
  trace.Clear();
  EXPECT_EQ(ErrorOf([&] { ctrl.oglMaterialfv(GL_FRONT, GL_AMBIENT, three); }), kErrSubscript);
  EXPECT_TRUE(trace.Lines().empty());
}

}  // namespace
}  // namespace quelo
