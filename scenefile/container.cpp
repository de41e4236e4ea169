#include "scenefile/container.h"

#include <cstdint>

#include "common/runtime_error.h"

namespace quelo {

namespace {

constexpr Long kEnd = 0;  // no further chunk; real positions are 1-based

// The chunk after the one at `position`, or kEnd when that header is cut
// short or names a position below 1.
Long Successor(BinaryFile& f, Long position) {
  ChunkHeader h;
  if (position < 1 || !ReadChunkHeader(f, position, h)) return kEnd;
  return h.next >= 1 ? h.next : kEnd;
}

// How many distinct positions the chain from `first` holds before it ends or
// comes back to one it has passed (Brent's cycle finding: fixed memory, time
// proportional to the chain, unlike a set of visited positions that a hostile
// file could grow without bound).
std::int64_t DistinctChainLength(BinaryFile& f, Long first) {
  if (first < 1) return 0;
  std::int64_t power = 1, lambda = 1, index = 1;
  Long tortoise = first;
  Long hare = Successor(f, first);
  while (hare != tortoise) {
    if (hare == kEnd) return index;  // no cycle: every position was new
    if (power == lambda) {
      tortoise = hare;
      power *= 2;
      lambda = 0;
    }
    hare = Successor(f, hare);
    ++index;
    ++lambda;
  }
  // A cycle of length lambda; mu positions lead into it.
  tortoise = hare = first;
  for (std::int64_t i = 0; i < lambda; ++i) hare = Successor(f, hare);
  std::int64_t mu = 0;
  while (tortoise != hare) {
    tortoise = Successor(f, tortoise);
    hare = Successor(f, hare);
    ++mu;
  }
  return mu + lambda;
}

std::string ReadTag(BinaryFile& f) {
  return f.ReadFixed(4);
}

void ReadLongs(BinaryFile& f, std::array<Long, kLayerCount>& out) {
  for (Long& v : out) v = f.ReadLong();
}

void WriteLongs(BinaryFile& f, const std::array<Long, kLayerCount>& values) {
  for (Long v : values) f.WriteLong(v);
}

// The text is a 16-bit length, taken as unsigned, and that many bytes.
std::string ReadTitle(BinaryFile& f) {
  const auto n = static_cast<std::uint16_t>(f.ReadInteger());
  return f.ReadFixed(n);
}

void WriteTitle(BinaryFile& f, const std::string& title) {
  const std::size_t n = title.size() < kMaxTitleSize ? title.size() : kMaxTitleSize;
  f.WriteInteger(static_cast<Integer>(static_cast<std::uint16_t>(n)));
  f.WriteBytes(title.data(), n);
}

// Opens a file for reading under a free file number and closes it whatever
// way the scope is left.
class OpenedFile {
 public:
  explicit OpenedFile(const std::string& name) : number_(Files().FreeFile()) {
    Files().Open(number_, name, BinaryFile::Access::kRead);
  }
  ~OpenedFile() {
    try {
      Files().Close(number_);
    } catch (const RuntimeError&) {
      // Nothing was written, so there is nothing to lose.
    }
  }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  BinaryFile& file() { return Files().Get(number_); }

 private:
  Integer number_;
};

}  // namespace

bool FileHeader::Accepted() const {
  return magic == "KIVO" && version == kFileVersion && reserved_a == 0 && reserved_b == 0;
}

bool TagsForKind(Long kind, ViewTags& tags) {
  switch (kind) {
    case 1:
      tags = {"PIFC", "GLFC"};
      return true;
    case 2:
      tags = {"PIAR", "GLAR"};
      return true;
    case 3:
      tags = {"PIA3", "GLA3"};
      return true;
    default:
      return false;
  }
}

SceneInfo ConvertForm0(const SceneInfoForm0& old) {
  SceneInfo info;
  info.Flags = old.Flags;
  info.DrawingNo = old.DrawingNo;
  info.ProjectName = old.ProjectName;
  info.LayerColours = old.LayerColours;
  info.LayerStates = old.LayerStates;
  info.Setup = old.Setup;
  info.Setup.Flags &= ~kSetupFlagForm1Only;
  info.Revision = 0;
  info.Title = old.Title;
  return info;
}

namespace {

// The two forms share every field but the revision, which only form 1 has
// (it sits between the setup and the title).
template <typename Info>
void ReadSharedHead(BinaryFile& f, Info& info) {
  info.Flags = f.ReadLong();
  info.DrawingNo = f.ReadFixed(kDrawingNoSize);
  info.ProjectName = f.ReadFixed(kProjectNameSize);
  ReadLongs(f, info.LayerColours);
  ReadLongs(f, info.LayerStates);
  info.Setup.Flags = f.ReadLong();
  info.Setup.Scale = f.ReadSingle();
}

template <typename Info>
void WriteSharedHead(BinaryFile& f, const Info& info) {
  f.WriteLong(info.Flags);
  f.WriteFixed(info.DrawingNo, kDrawingNoSize);
  f.WriteFixed(info.ProjectName, kProjectNameSize);
  WriteLongs(f, info.LayerColours);
  WriteLongs(f, info.LayerStates);
  f.WriteLong(info.Setup.Flags);
  f.WriteSingle(info.Setup.Scale);
}

}  // namespace

SceneInfo ReadSceneInfoForm1(BinaryFile& f) {
  SceneInfo info;
  ReadSharedHead(f, info);
  info.Revision = f.ReadLong();
  info.Title = ReadTitle(f);
  return info;
}

SceneInfoForm0 ReadSceneInfoForm0(BinaryFile& f) {
  SceneInfoForm0 info;
  ReadSharedHead(f, info);
  info.Title = ReadTitle(f);
  return info;
}

void WriteSceneInfoForm1(BinaryFile& f, const SceneInfo& info) {
  WriteSharedHead(f, info);
  f.WriteLong(info.Revision);
  WriteTitle(f, info.Title);
}

void WriteSceneInfoForm0(BinaryFile& f, const SceneInfoForm0& info) {
  WriteSharedHead(f, info);
  WriteTitle(f, info.Title);
}

FileHeader ReadFileHeader(BinaryFile& f) {
  f.Seek(1);
  FileHeader h;
  h.magic = ReadTag(f);
  h.version = f.ReadLong();
  h.reserved_a = f.ReadLong();
  h.header_tag = ReadTag(f);
  h.value1 = f.ReadLong();
  h.value2 = f.ReadLong();
  h.reserved_b = f.ReadLong();
  h.value3 = f.ReadLong();
  h.value4 = f.ReadLong();
  h.complete = !f.Eof();
  return h;
}

bool ReadChunkHeader(BinaryFile& f, Long position, ChunkHeader& out) {
  f.Seek(position);
  out.tag = ReadTag(f);
  out.view_id = f.ReadLong();
  out.value2 = f.ReadLong();
  out.value3 = f.ReadLong();
  out.body_form = f.ReadLong();
  out.value5 = f.ReadLong();
  out.value6 = f.ReadLong();
  out.value7 = f.ReadLong();
  out.next = f.ReadLong();
  // Fields are read in order, so a header cut anywhere leaves Eof set.
  return !f.Eof();
}

ChainEnd WalkChunks(BinaryFile& f,
                    const std::function<bool(Long position, const ChunkHeader& header)>& visit) {
  const std::int64_t distinct = DistinctChainLength(f, kFirstChunkPosition);
  Long position = kFirstChunkPosition;
  ChunkHeader h;
  for (std::int64_t i = 0;; ++i) {
    // The positions after the last distinct one have all been visited.
    if (i == distinct) return ChainEnd::kRevisit;
    if (!ReadChunkHeader(f, position, h)) return ChainEnd::kEndOfFile;
    if (!visit(position, h)) return ChainEnd::kStopped;
    if (h.next < 1) return ChainEnd::kBadPosition;
    position = h.next;
  }
}

namespace KIVO_GLMapFile {

Long LocateStream(const std::string& file_name, Long kind, SceneInfo& info) {
  // Another kind has no tags; no chunk then matches and the result is -1.
  ViewTags tags{"", ""};
  TagsForKind(kind, tags);
  const std::string pi_tag = tags.pi;
  const std::string gl_tag = tags.gl;

  bool found = false;
  Long view_id = 0;
  {
    OpenedFile opened(file_name);
    BinaryFile& f = opened.file();
    if (!ReadFileHeader(f).Accepted()) return kNotSceneFile;
    bool bad_form = false;
    WalkChunks(f, [&](Long, const ChunkHeader& h) {
      if (h.tag != pi_tag) return true;
      if (h.body_form == 0) {
        info = ConvertForm0(ReadSceneInfoForm0(f));
      } else if (h.body_form == 1) {
        info = ReadSceneInfoForm1(f);
      } else {
        bad_form = true;
      }
      view_id = h.view_id;
      found = true;
      return false;
    });
    if (bad_form) return kNotSceneFile;
  }
  if (!found) return kNoPiChunk;

  OpenedFile opened(file_name);
  BinaryFile& f = opened.file();
  // The second pass checks the magic only.
  if (ReadFileHeader(f).magic != "KIVO") return kNotSceneFile;
  Long result = kNoGlChunk;
  WalkChunks(f, [&](Long position, const ChunkHeader& h) {
    if (h.tag != gl_tag || h.view_id != view_id) return true;
    result = LongAdd(position, kChunkHeaderSize);
    return false;
  });
  return result;
}

}  // namespace KIVO_GLMapFile

}  // namespace quelo
