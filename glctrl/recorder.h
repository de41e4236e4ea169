// StreamRecorder: the stream file and the recording methods of the stream
// vocabulary. Each recording method writes its record first (while SendToFile
// is on) and then calls GL (unless DontSendToGL is on); a file error stops it
// before the GL call. The two switches are independent.
#pragma once

#include <span>
#include <string>

#include "common/numbers.h"

namespace quelo {

class BinaryFile;

// The switches and the file a control records with. OpenGL_Ctrl exposes them
// as its own public fields.
struct RecordingSwitches {
  bool SendToFile = false;
  bool DontSendToGL = false;
  Integer FileHnd = 0;  // file number in Files(); 0 while none is open
};

// The open stream file of switches.FileHnd; raises 52 when it names no open
// file.
BinaryFile& StreamFileOf(const RecordingSwitches& switches);

class StreamRecorder {
 public:
  explicit StreamRecorder(RecordingSwitches& switches) : switches_(switches) {}

  // Takes a free file number into FileHnd and opens name for reading and
  // writing (created when missing, never truncated).
  void Open(const std::string& name);
  void Close();
  void Goto(Long position);  // 1-based
  Long Position() const;     // 1-based
  void PutBeginOfSeq();      // the 756-byte stream head
  void PutEndOfSeq();        // op 0, length 0
  void PutBlockBegin(Long block_id);
  void PutBlockEnd(Long block_id);

  void Begin(Long mode);
  void End();
  void Color3f(Single red, Single green, Single blue);
  void Vertex3f(Single x, Single y, Single z);
  // Records params[0..3] whatever pname is; fewer than four elements raise 9.
  void Materialfv(Long face, Long pname, std::span<const Single> params);
  void PolygonMode(Long face, Long mode);
  void FrontFace(Long mode);
  void Normal3f(Single nx, Single ny, Single nz);
  void EdgeFlag(bool flag);
  void ColorLong(Long packed);  // packed 0x00BBGGRR

 private:
  RecordingSwitches& switches_;
};

}  // namespace quelo
