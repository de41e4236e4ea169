#include "fuzz/fuzz_entries.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "common/binary_file.h"
#include "common/messages.h"
#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "scenefile/container.h"
#include "scenefile/record_reader.h"
#include "scenefile/stream_head.h"
#include "sceneload/scene_list.h"

namespace quelo::fuzz {

namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "fuzz invariant broken: %s\n", what);
  std::abort();
}

void Expect(bool condition, const char* what) {
  if (!condition) Fail(what);
}

// A reader that leaves a file number open makes every later load fail once
// the 255 numbers are gone.
void ExpectNoOpenFiles() {
  for (Integer n = 1; n <= FileTable::kMaxFiles; ++n) {
    if (Files().IsOpen(n)) Fail("a file number is still open");
  }
}

// tessEndPoly's "Error in tessEndPoly" may come thousands of times from one
// input; nobody needs to read them.
class QuietMessages : public MessageBoxes {
 public:
  void Show(const std::string&, const std::string&, MessageIcon) override {}
};

class ScopedQuietMessages {
 public:
  ScopedQuietMessages() : previous_(SetMessageBoxes(&quiet_)) {}
  ~ScopedQuietMessages() { SetMessageBoxes(previous_); }
  ScopedQuietMessages(const ScopedQuietMessages&) = delete;
  ScopedQuietMessages& operator=(const ScopedQuietMessages&) = delete;

 private:
  QuietMessages quiet_;
  MessageBoxes* previous_;
};

void WriteAllOrDie(int fd, const void* data, std::size_t size) {
  const auto* p = static_cast<const unsigned char*>(data);
  while (size > 0) {
    const ssize_t n = ::write(fd, p, size);
    if (n <= 0) Fail("cannot write the input file");
    p += n;
    size -= static_cast<std::size_t>(n);
  }
}

// Every record that the reader hands out, checked against what the decoder
// promises: positions that only move forward in the framed form, payloads
// only on played records, and an end after at most one record per Long.
void DecodeAt(BinaryFile& f, Long start) {
  f.Seek(start);
  RecordReader reader(f);
  Expect(reader.start() == start, "the reader starts where the file stood");
  const bool framed = reader.form() == StreamForm::kFramed;
  const std::int64_t limit = std::int64_t{f.Length()} / 4 + 2;
  std::int64_t count = 0;
  Long previous = 0;
  Record rec;
  try {
    while (reader.Next(rec)) {
      Expect(++count <= limit, "the decoder does not advance");
      Expect(rec.position >= start && rec.position <= f.Length(), "record outside the file");
      if (framed) Expect(rec.position > previous, "framed records must move forward");
      previous = rec.position;
      const OpSpec* spec = rec.spec();
      if (rec.action == RecordAction::kPlay) {
        Expect(spec != nullptr, "a played record has a known code");
        Expect(rec.ArgCount() == spec->field_count, "a played record carries its payload");
      } else {
        Expect(rec.ArgCount() == 0, "only played records carry a payload");
      }
    }
    Expect(!reader.Next(rec), "an ended stream stays ended");
  } catch (const RuntimeError& e) {
    // Positions beyond a Long are the documented overflow, nothing else.
    Expect(e.number() == kErrOverflow, "the decoder raised an error other than Overflow");
  }
}

}  // namespace

void WriteBytesToFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) Fail("cannot create the input file");
  WriteAllOrDie(fd, data, size);
  ::close(fd);
}

void DecodeStreamBytes(const std::string& path, const std::uint8_t* data, std::size_t size) {
  // Behind a stream head the bytes are decoded as framed records from
  // position 1, and in their own form from position 757.
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) Fail("cannot create the input file");
  WriteAllOrDie(fd, StreamHeadBytes().data(), StreamHeadBytes().size());
  WriteAllOrDie(fd, data, size);
  ::close(fd);

  auto file = BinaryFile::Open(path, BinaryFile::Access::kRead);
  DecodeAt(*file, 1);
  DecodeAt(*file, kStreamHeadSize + 1);
}

void LocateInBytes(const std::string& path, const std::uint8_t* data, std::size_t size) {
  WriteBytesToFile(path, data, size);
  try {
    {
      auto file = BinaryFile::Open(path, BinaryFile::Access::kRead);
      (void)ReadFileHeader(*file);
      std::set<Long> seen;
      const Long length = file->Length();
      WalkChunks(*file, [&](Long position, const ChunkHeader&) {
        Expect(seen.insert(position).second, "the chunk walk visited a position twice");
        Expect(position >= 1 && position <= length, "a chunk outside the file");
        return true;
      });
    }
    for (Long kind = 0; kind <= kViewKindCount + 1; ++kind) {
      SceneInfo info;
      info.Flags = 0x5a5a;
      const Long result = KIVO_GLMapFile::LocateStream(path, kind, info);
      Expect(result >= KIVO_GLMapFile::kNotSceneFile, "a result below -2");
      Expect(result <= static_cast<Long>(size) + 1, "a stream position beyond the file");
      if (kind < 1 || kind > kViewKindCount) {
        Expect(result < 0, "a kind without tags found a chunk");
        Expect(info.Flags == 0x5a5a, "a kind without tags filled the record");
      }
      ExpectNoOpenFiles();
    }
  } catch (const RuntimeError& e) {
    std::fprintf(stderr, "run-time error %d: %s\n", e.number(), e.what());
    Fail("the container reader raised an error on a readable file");
  }
  ExpectNoOpenFiles();
}

void LoadSceneBytes(const std::string& path, const std::uint8_t* data, std::size_t size,
                    long marking) {
  WriteBytesToFile(path, data, size);
  ScopedQuietMessages quiet;
  OpenGL_Ctrl gl;
  gl.TessFlag_DoInTri = static_cast<Long>(marking);
  gl.TessInTriColor = 0x00ff00;
  SceneListState state;
  bool loaded = false;
  {
    ScopedTracingGL trace(nullptr, /*keep_lines=*/false);
    try {
      BuildSceneList(gl, /*Reload=*/true, state, path, /*axes_checked=*/true,
                     /*grids_checked=*/true);
      loaded = true;
    } catch (const RuntimeError&) {
      // The documented outcome of a stream that overflows a position or
      // announces a polygon beyond 16 bits; the viewer shows it in a box.
    }
  }
  ExpectNoOpenFiles();
  Expect(state.RenderList != 0, "no list was made");
  if (loaded) {
    const RoomBoxValues& b = state.RoomBox;
    Expect(b[0] <= b[1] && b[2] <= b[3] && b[4] <= b[5], "a room box with min above max");
  }
}

}  // namespace quelo::fuzz
