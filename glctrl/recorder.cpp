#include "glctrl/recorder.h"

#include "common/binary_file.h"
#include "common/colour.h"
#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"

namespace quelo {
namespace {

// How many values glMaterialfv reads for pname.
std::size_t MaterialValuesRead(Long pname) {
  switch (pname) {
    case GL_SHININESS:
      return 1;
    case GL_COLOR_INDEXES:
      return 3;
    default:
      return 4;
  }
}

}  // namespace

BinaryFile& StreamFileOf(const RecordingSwitches& switches) {
  return Files().Get(switches.FileHnd);
}

// ---- Stream file ---------------------------------------------------------------

void StreamRecorder::Open(const std::string& name) {
  switches_.FileHnd = Files().FreeFile();
  Files().Open(switches_.FileHnd, name, BinaryFile::Access::kReadWrite);
}

void StreamRecorder::Close() {
  Files().Close(switches_.FileHnd);
  switches_.FileHnd = 0;
}

void StreamRecorder::Goto(Long position) {
  StreamFileOf(switches_).Seek(position);
}

Long StreamRecorder::Position() const {
  return StreamFileOf(switches_).Position();
}

void StreamRecorder::PutBeginOfSeq() {
  if (switches_.SendToFile) WriteStreamHead(StreamFileOf(switches_));
}

void StreamRecorder::PutEndOfSeq() {
  if (switches_.SendToFile) WriteEndOfSeqRecord(StreamFileOf(switches_));
}

void StreamRecorder::PutBlockBegin(Long block_id) {
  if (switches_.SendToFile) WriteBlockBeginRecord(StreamFileOf(switches_), block_id);
}

void StreamRecorder::PutBlockEnd(Long block_id) {
  if (switches_.SendToFile) WriteBlockEndRecord(StreamFileOf(switches_), block_id);
}

// ---- Recording methods ------------------------------------------------------------

void StreamRecorder::Begin(Long mode) {
  if (switches_.SendToFile) WriteBeginRecord(StreamFileOf(switches_), mode);
  if (!switches_.DontSendToGL) GL().glBegin(static_cast<GLenum>(mode));
}

void StreamRecorder::End() {
  if (switches_.SendToFile) WriteEndRecord(StreamFileOf(switches_));
  if (!switches_.DontSendToGL) GL().glEnd();
}

void StreamRecorder::Color3f(Single red, Single green, Single blue) {
  if (switches_.SendToFile) WriteColor3fRecord(StreamFileOf(switches_), red, green, blue);
  if (!switches_.DontSendToGL) GL().glColor3f(red, green, blue);
}

void StreamRecorder::Vertex3f(Single x, Single y, Single z) {
  if (switches_.SendToFile) WriteVertex3fRecord(StreamFileOf(switches_), x, y, z);
  if (!switches_.DontSendToGL) GL().glVertex3f(x, y, z);
}

void StreamRecorder::Materialfv(Long face, Long pname, std::span<const Single> params) {
  // The record always carries params[0..3], whatever pname takes.
  if (switches_.SendToFile) {
    if (params.size() < 4) Raise(kErrSubscript);
    WriteMaterialfvRecord(StreamFileOf(switches_), face, pname, params.data());
  }
  if (!switches_.DontSendToGL) {
    // GL reads as many values as pname takes: never past the caller's array.
    if (params.size() < MaterialValuesRead(pname)) Raise(kErrSubscript);
    GL().glMaterialfv(static_cast<GLenum>(face), static_cast<GLenum>(pname), params.data());
  }
}

void StreamRecorder::PolygonMode(Long face, Long mode) {
  if (switches_.SendToFile) WritePolygonModeRecord(StreamFileOf(switches_), face, mode);
  if (!switches_.DontSendToGL) {
    GL().glPolygonMode(static_cast<GLenum>(face), static_cast<GLenum>(mode));
  }
}

void StreamRecorder::FrontFace(Long mode) {
  if (switches_.SendToFile) WriteFrontFaceRecord(StreamFileOf(switches_), mode);
  if (!switches_.DontSendToGL) GL().glFrontFace(static_cast<GLenum>(mode));
}

void StreamRecorder::Normal3f(Single nx, Single ny, Single nz) {
  if (switches_.SendToFile) WriteNormal3fRecord(StreamFileOf(switches_), nx, ny, nz);
  if (!switches_.DontSendToGL) GL().glNormal3f(nx, ny, nz);
}

void StreamRecorder::EdgeFlag(bool flag) {
  if (switches_.SendToFile) WriteEdgeFlagRecord(StreamFileOf(switches_), flag);  // Long -1 / 0
  if (!switches_.DontSendToGL) GL().glEdgeFlag(flag ? GL_TRUE : GL_FALSE);
}

void StreamRecorder::ColorLong(Long packed) {
  // The record keeps the packed colour; GL gets the three channels.
  if (switches_.SendToFile) WriteColorLongRecord(StreamFileOf(switches_), packed);
  if (!switches_.DontSendToGL) {
    ColourSplit c = SplitColour(packed);
    GL().glColor3f(c.red, c.green, c.blue);
  }
}

}  // namespace quelo
