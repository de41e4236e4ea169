// Writing scene container files: the file header, chunk headers, PI chunks in
// either form of the information record and GL chunks holding a command
// stream. Producers of scene files and our own tests use it; the viewer never
// writes scene files.
//
// What goes into the fields that readers do not check (docs/file-format.md):
// the file header's tag is "QELO", value 1 the number of chunks, value 2 the
// file's length in bytes, values 3 and 4 are 0; a chunk header's value 2 is
// its body's length in bytes, values 3, 5, 6 and 7 are 0, and its next-chunk
// position is the first byte after its body (so the last one points just past
// the end of the file). File errors are RuntimeErrors.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/binary_file.h"
#include "scenefile/container.h"

namespace quelo {

inline constexpr const char* kWriterHeaderTag = "QELO";

// Creates (or empties) a file and opens it for writing a scene file.
std::unique_ptr<BinaryFile> CreateSceneFile(const std::string& path);

// Writes a header at the file's current position, tags padded or cut to 4.
void WriteFileHeader(BinaryFile& f, const FileHeader& h);
void WriteChunkHeader(BinaryFile& f, const ChunkHeader& h);

class ContainerWriter {
 public:
  // Writes the file header at position 1. The file must be empty (see
  // CreateSceneFile): an old tail behind the last chunk would read as a chunk.
  explicit ContainerWriter(BinaryFile& f);

  // A PI chunk for view `kind` (1..3) with the record in body form 1.
  void AddInfoChunk(Long kind, Long view_id, const SceneInfo& info);
  // The same in the older body form 0.
  void AddInfoChunkForm0(Long kind, Long view_id, const SceneInfoForm0& info);

  // Starts the GL chunk of view `kind` and writes the stream head; returns the
  // stream's position (what LocateStream reports). Records are then written
  // at the file's position (record_writer.h) until EndGlChunk, which writes
  // the end record and completes the chunk header.
  Long BeginGlChunk(Long kind, Long view_id);
  void EndGlChunk();

  // Any chunk: its header with the given tag, view id and body form, then
  // `body` as it stands.
  void AddRawChunk(const std::string& tag, Long view_id, Long body_form,
                   const std::vector<unsigned char>& body);

  // Completes the file header (chunk count, length). The writer may not be
  // used afterwards.
  void Finish();

  Long chunk_count() const { return chunk_count_; }

 private:
  void BeginChunk(const std::string& tag, Long view_id, Long body_form);
  void EndChunk();

  BinaryFile& f_;
  Long chunk_count_ = 0;
  Long open_chunk_ = 0;  // position of the chunk being written, 0 when none
};

}  // namespace quelo
