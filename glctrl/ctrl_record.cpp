// Recording: the stream-file members and the recording methods of the
// stream vocabulary. Each recording method writes its record first (while
// SendToFile is on) and then calls GL (unless DontSendToGL is on); a file
// error stops it before the GL call. The two switches are independent.
#include "common/binary_file.h"
#include "common/colour.h"
#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"

namespace quelo {
namespace {

// The open stream file; 52 when FileHnd names no open file.
BinaryFile& StreamFile(Integer file_hnd) {
  return Files().Get(file_hnd);
}

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

// ---- Stream file ---------------------------------------------------------------

void OpenGL_Ctrl::FileOpen(const std::string& FileName) {
  disabled_blocks_.clear();
  FileHnd = Files().FreeFile();
  Files().Open(FileHnd, FileName, BinaryFile::Access::kReadWrite);
}

void OpenGL_Ctrl::FileClose() {
  Files().Close(FileHnd);
  FileHnd = 0;
}

Long OpenGL_Ctrl::FileGoto(Long PntrAddr) {
  StreamFile(FileHnd).Seek(PntrAddr);
  return 0;
}

Long OpenGL_Ctrl::FileAddr() {
  return StreamFile(FileHnd).Position();
}

void OpenGL_Ctrl::FilePutBeginOfSeq() {
  if (SendToFile) WriteStreamHead(StreamFile(FileHnd));
}

void OpenGL_Ctrl::FilePutEndOfSeq() {
  if (SendToFile) WriteEndOfSeqRecord(StreamFile(FileHnd));
}

void OpenGL_Ctrl::auxPutBlockBegin(Long LBlockID) {
  if (SendToFile) WriteBlockBeginRecord(StreamFile(FileHnd), LBlockID);
}

void OpenGL_Ctrl::auxPutBlockEnd(Long LBlockID) {
  if (SendToFile) WriteBlockEndRecord(StreamFile(FileHnd), LBlockID);
}

// ---- Recording methods ------------------------------------------------------------

void OpenGL_Ctrl::oglBegin(Long mode) {
  if (SendToFile) WriteBeginRecord(StreamFile(FileHnd), mode);
  if (!DontSendToGL) GL().glBegin(static_cast<GLenum>(mode));
}

void OpenGL_Ctrl::oglEnd() {
  if (SendToFile) WriteEndRecord(StreamFile(FileHnd));
  if (!DontSendToGL) GL().glEnd();
}

void OpenGL_Ctrl::oglColor3f(Single red, Single green, Single blue) {
  if (SendToFile) WriteColor3fRecord(StreamFile(FileHnd), red, green, blue);
  if (!DontSendToGL) GL().glColor3f(red, green, blue);
}

void OpenGL_Ctrl::oglVertex3f(Single x, Single y, Single z) {
  if (SendToFile) WriteVertex3fRecord(StreamFile(FileHnd), x, y, z);
  if (!DontSendToGL) GL().glVertex3f(x, y, z);
}

void OpenGL_Ctrl::oglMaterialfv(Long face, Long pname, std::span<const Single> params) {
  // The record always carries params[0..3], whatever pname takes.
  if (SendToFile) {
    if (params.size() < 4) Raise(kErrSubscript);
    WriteMaterialfvRecord(StreamFile(FileHnd), face, pname, params.data());
  }
  if (!DontSendToGL) {
    // GL reads as many values as pname takes: never past the caller's array.
    if (params.size() < MaterialValuesRead(pname)) Raise(kErrSubscript);
    GL().glMaterialfv(static_cast<GLenum>(face), static_cast<GLenum>(pname), params.data());
  }
}

void OpenGL_Ctrl::oglPolygonMode(Long face, Long mode) {
  if (SendToFile) WritePolygonModeRecord(StreamFile(FileHnd), face, mode);
  if (!DontSendToGL) GL().glPolygonMode(static_cast<GLenum>(face), static_cast<GLenum>(mode));
}

void OpenGL_Ctrl::oglFrontFace(Long mode) {
  if (SendToFile) WriteFrontFaceRecord(StreamFile(FileHnd), mode);
  if (!DontSendToGL) GL().glFrontFace(static_cast<GLenum>(mode));
}

void OpenGL_Ctrl::oglNormal3f(Single nx, Single ny, Single nz) {
  if (SendToFile) WriteNormal3fRecord(StreamFile(FileHnd), nx, ny, nz);
  if (!DontSendToGL) GL().glNormal3f(nx, ny, nz);
}

void OpenGL_Ctrl::oglEdgeFlag(bool flag) {
  if (SendToFile) WriteEdgeFlagRecord(StreamFile(FileHnd), flag);  // as Long -1 / 0
  if (!DontSendToGL) GL().glEdgeFlag(flag ? GL_TRUE : GL_FALSE);
}

void OpenGL_Ctrl::auxColorLong(Long Clr) {
  // The record keeps the packed colour; GL gets the three channels.
  if (SendToFile) WriteColorLongRecord(StreamFile(FileHnd), Clr);
  if (!DontSendToGL) {
    ColourSplit c = SplitColour(Clr);
    GL().glColor3f(c.red, c.green, c.blue);
  }
}

}  // namespace quelo
