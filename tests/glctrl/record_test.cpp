#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/binary_file.h"
#include "common/runtime_error.h"
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
using testing::Bytes;
using testing::ErrorOf;
using testing::ReadAll;
using testing::TempDir;
using testing::WriteAll;

class Recording : public ::testing::Test {
 protected:
  void Open() {
    ctrl.FileOpen(path);
    ctrl.FileGoto(1);
  }
  void TearDown() override { Files().CloseAll(); }

  TempDir dir;
  std::string path = dir.File("stream.bin");
  OpenGL_Ctrl ctrl;
};

// Every recording method once: the file matches the record writers (which
// the reader tests decode) byte for byte, and GL gets the methods' arguments.
TEST_F(Recording, EveryMethodWritesTheWritersRecordsAndDraws) {
  Open();
  ctrl.SendToFile = true;
  ScopedTracingGL trace;
  ctrl.FilePutBeginOfSeq();
  EXPECT_EQ(ctrl.FileAddr(), 1 + kStreamHeadSize);
  ctrl.auxPutBlockBegin(0);
  ctrl.oglBegin(GL_LINES);
  ctrl.oglColor3f(0.25f, 0.5f, 1);
  ctrl.oglNormal3f(0, 0, -1);
  ctrl.oglVertex3f(1.5f, -2, 3);
  ctrl.oglEnd();
  ctrl.auxPutBlockEnd(0);
  // Four values recorded whatever pname takes; GL reads one.
  const Single shininess[4] = {40, 7, 8, 9};
  ctrl.oglMaterialfv(GL_FRONT, GL_SHININESS, shininess);
  ctrl.oglPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  ctrl.oglFrontFace(GL_CW);
  ctrl.oglEdgeFlag(true);
  ctrl.oglEdgeFlag(false);
  ctrl.auxColorLong(0x00FF8000);  // blue 255, green 128, red 0
  ctrl.DontSendToGL = true;       // a negative count is recorded but cannot be drawn
  ctrl.tessBeginPoly(-2);
  ctrl.tessVector3d(0.1, 0.2, 0.3);
  const double v[4] = {99, 1, 2, 3};  // elements 1..3; element 0 is not recorded
  ctrl.tessVector3dv(v);
  ctrl.tessEndPoly();
  ctrl.FilePutEndOfSeq();
  Long end = ctrl.FileAddr();
  ctrl.FileClose();
  EXPECT_EQ(
      trace.Lines(),
      (Lines{"glBegin(GL_LINES)", "glColor3f(0.25, 0.5, 1)", "glNormal3f(0, 0, -1)",
             "glVertex3f(1.5, -2, 3)", "glEnd()", "glMaterialfv(GL_FRONT, GL_SHININESS, [40])",
             "glPolygonMode(GL_FRONT_AND_BACK, GL_LINE)", "glFrontFace(GL_CW)",
             "glEdgeFlag(GL_TRUE)", "glEdgeFlag(GL_FALSE)", "glColor3f(0, 0.5019608, 1)"}));
  {
    auto f = BinaryFile::Open(dir.File("expected.bin"), BinaryFile::Access::kReadWrite);
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
  EXPECT_EQ(got, ReadAll(dir.File("expected.bin")));
  EXPECT_EQ(static_cast<Long>(got.size()) + 1, end);
}

// The switches act on the recording methods independently; the pass-through
// methods always call GL.
TEST_F(Recording, SwitchesActIndependently) {
  Open();
  for (bool to_file : {false, true}) {
    for (bool no_gl : {false, true}) {
      SCOPED_TRACE(::testing::Message() << "SendToFile " << to_file << " DontSendToGL " << no_gl);
      ctrl.SendToFile = to_file;
      ctrl.DontSendToGL = no_gl;
      const Long before = ctrl.FileAddr();
      ScopedTracingGL trace;
      EXPECT_EQ(ctrl.oglGenLists(2), 1u);
      ctrl.ogluLookAt(0, 0, 10, 0, 0, 0, 0, 1, 0);
      ctrl.oglVertex3f(1, 2, 3);
      ctrl.oglEdgeFlag(false);
      EXPECT_EQ(ctrl.FileAddr() - before, to_file ? 20 + 12 : 0);
      Lines want = {"glGenLists(2)", "gluLookAt(0, 0, 10, 0, 0, 0, 0, 1, 0)"};
      if (!no_gl) want.insert(want.end(), {"glVertex3f(1, 2, 3)", "glEdgeFlag(GL_FALSE)"});
      EXPECT_EQ(trace.Lines(), want);
    }
  }
}

TEST_F(Recording, FileOpenKeepsTheTailOfALongerFileAndEmptiesTheDisabledBlocks) {
  WriteAll(path, ByteVector(100, 0xAB));
  ctrl.auxBlockEnabled(3, false);
  ctrl.FileOpen(path);
  EXPECT_TRUE(ctrl.DisabledBlocks().empty());
  EXPECT_EQ(ctrl.FileAddr(), 1);  // positioned at the start
  EXPECT_EQ(ctrl.FileGoto(9), 0);
  ctrl.SendToFile = true;
  ctrl.DontSendToGL = true;
  ctrl.oglEnd();
  ctrl.FileClose();
  EXPECT_EQ(ctrl.FileHnd, 0);
  Bytes want;
  want.Raw(ByteVector(8, 0xAB)).L(2).L(0).Raw(ByteVector(84, 0xAB));  // op 2, length 0
  EXPECT_EQ(ReadAll(path), want.data());
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
  // Drawing only: GL must not read past the array either, but reads one value for shininess.
  ctrl.SendToFile = false;
  ctrl.DontSendToGL = false;
  trace.Clear();
  EXPECT_EQ(ErrorOf([&] { ctrl.oglMaterialfv(GL_FRONT, GL_AMBIENT, three); }), kErrSubscript);
  ctrl.oglMaterialfv(GL_FRONT, GL_SHININESS, {three, 1});
  EXPECT_EQ(trace.Lines(), Lines{"glMaterialfv(GL_FRONT, GL_SHININESS, [1])"});
}

}  // namespace
}  // namespace quelo
