// The scene container file (.qgl) and its reader KIVO_GLMapFile.
//
// A scene file is a 36-byte file header followed by a chain of chunks, each a
// 36-byte chunk header and a body; every chunk header names the 1-based
// position of the next. A view of kind 1, 2 or 3 is a PI chunk (information
// record) and a GL chunk (command stream, record_reader.h) with equal view ids.
// The byte layout is in docs/file-format.md.
//
// Damaged files: walking the chain stops at a header cut short by the end of
// the file, at a next-chunk position below 1, and at a next-chunk position
// already visited in the same walk, so a cyclic chain cannot hang a reader.
// Memory use does not depend on the file: the walk keeps a few positions only,
// and the one variable-length text of the information record is at most
// 65535 bytes.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "common/binary_file.h"
#include "common/numbers.h"

namespace quelo {

inline constexpr Long kFileHeaderSize = 36;
inline constexpr Long kChunkHeaderSize = 36;
inline constexpr Long kFirstChunkPosition = kFileHeaderSize + 1;
inline constexpr Long kFileVersion = 4;

// File header (position 1). A file shorter than 36 bytes reads as if the
// missing bytes were zeros; `complete` says whether all 36 were there.
struct FileHeader {
  std::string magic = "KIVO";   // 4 bytes, must be "KIVO"
  Long version = kFileVersion;  // must be 4
  Long reserved_a = 0;          // must be 0
  std::string header_tag;       // 4 bytes, not checked
  Long value1 = 0;              // not checked
  Long value2 = 0;              // not checked
  Long reserved_b = 0;          // must be 0
  Long value3 = 0;              // not checked
  Long value4 = 0;              // not checked
  bool complete = true;

  // The reader's first check: magic, version and both reserved fields.
  bool Accepted() const;
};

struct ChunkHeader {
  std::string tag;   // 4 bytes, compared exactly
  Long view_id = 0;  // links a GL chunk to its PI chunk
  Long value2 = 0;   // not read by the locate function
  Long value3 = 0;
  Long body_form = 0;  // PI chunks: 0 or 1, the form of the information record
  Long value5 = 0;
  Long value6 = 0;
  Long value7 = 0;
  Long next = 0;  // 1-based position of the next chunk header
};

// View kinds and their chunk tags.
struct ViewTags {
  const char* pi;
  const char* gl;
};
inline constexpr Long kViewKindCount = 3;
// Kind 1 "PIFC"/"GLFC", 2 "PIAR"/"GLAR", 3 "PIA3"/"GLA3"; false for any other.
bool TagsForKind(Long kind, ViewTags& tags);

// Bits of SceneInfo::Flags.
inline constexpr Long kSceneFlagBackFaceCulling = 2;
// Bit of SceneSetup::Flags that only form 1 defines; converting form 0 clears it.
inline constexpr Long kSetupFlagForm1Only = 16;
inline constexpr std::size_t kDrawingNoSize = 20;
inline constexpr std::size_t kProjectNameSize = 40;
inline constexpr std::size_t kLayerCount = 16;
inline constexpr std::size_t kMaxTitleSize = 65535;

// The inner record of the information record.
struct SceneSetup {
  Long Flags = 0;
  Single Scale = 1;  // drawing units per scene unit
};

// The information record of a PI chunk in its current form (body form 1).
// Of all this, the viewer reads only Flags.
struct SceneInfo {
  Long Flags = 0;                                // kSceneFlagBackFaceCulling: compile with culling
  std::string DrawingNo;                         // fixed 20 bytes, as stored (blank padded)
  std::string ProjectName;                       // fixed 40 bytes, as stored
  std::array<Long, kLayerCount> LayerColours{};  // packed 0x00BBGGRR
  std::array<Long, kLayerCount> LayerStates{};
  SceneSetup Setup;
  Long Revision = 0;  // form 1 only; 0 after converting form 0
  std::string Title;  // length-prefixed text, at most kMaxTitleSize bytes
};

// The older, shorter form (body form 0): SceneInfo without Revision.
struct SceneInfoForm0 {
  Long Flags = 0;
  std::string DrawingNo;
  std::string ProjectName;
  std::array<Long, kLayerCount> LayerColours{};
  std::array<Long, kLayerCount> LayerStates{};
  SceneSetup Setup;
  std::string Title;
};

// Copies the shared fields, sets Revision to 0 and clears kSetupFlagForm1Only
// in Setup.Flags.
SceneInfo ConvertForm0(const SceneInfoForm0& old);

// Body readers and writers at the file's current position. A body cut short
// by the end of the file reads as zeros from there on. Writers pad or cut the
// fixed texts to their size with blanks and cut Title to kMaxTitleSize.
SceneInfo ReadSceneInfoForm1(BinaryFile& f);
SceneInfoForm0 ReadSceneInfoForm0(BinaryFile& f);
void WriteSceneInfoForm1(BinaryFile& f, const SceneInfo& info);
void WriteSceneInfoForm0(BinaryFile& f, const SceneInfoForm0& info);

// Header readers at a position; false when the header is cut short by the end
// of the file (the fields then hold what was there, zeros after).
FileHeader ReadFileHeader(BinaryFile& f);  // at position 1
bool ReadChunkHeader(BinaryFile& f, Long position, ChunkHeader& out);

// How a walk along the chain ended.
enum class ChainEnd {
  kEndOfFile,    // the next header is cut short or lies beyond the end
  kBadPosition,  // a next-chunk position below 1
  kRevisit,      // a next-chunk position already visited in this walk
  kStopped,      // the visitor asked to stop
};

// Walks the chain from the first chunk (position 37), calling visit(position,
// header) for each chunk in chain order, each position at most once, until
// visit returns false or the chain ends. Runs in time proportional to the
// chain and in fixed memory. File errors are RuntimeErrors.
ChainEnd WalkChunks(BinaryFile& f,
                    const std::function<bool(Long position, const ChunkHeader& header)>& visit);

namespace KIVO_GLMapFile {

// Results of LocateStream besides a position.
inline constexpr Long kNoGlChunk = 0;      // PI chunk found, no GL chunk with its tag and view id
inline constexpr Long kNoPiChunk = -1;     // no PI chunk of this kind (or kind not 1..3)
inline constexpr Long kNotSceneFile = -2;  // not this format, or a PI body form other than 0/1

// Finds the stream of view `kind` in the scene file: the 1-based position of
// the GL chunk's body (its stream head), or one of the results above. When
// the PI chunk is found with body form 0 or 1, `info` receives its record
// (form 0 converted); otherwise `info` is left as it was. The file is opened
// under a free number of Files() and closed before every return. A file that
// cannot be opened raises its RuntimeError (53 not found, 70/75 access, ...).
Long LocateStream(const std::string& file_name, Long kind, SceneInfo& info);

}  // namespace KIVO_GLMapFile

}  // namespace quelo
