#include "scenefile/container_writer.h"

#include <cassert>
#include <fstream>

#include "common/runtime_error.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"

namespace quelo {

namespace {

// Offsets of the fields that are filled in once a chunk or the file is complete.
constexpr Long kChunkValue2Offset = 8;
constexpr Long kChunkNextOffset = 32;
constexpr Long kFileValue1Offset = 16;
constexpr Long kFileValue2Offset = 20;

const char* PiTag(Long kind) {
  ViewTags tags{};
  [[maybe_unused]] const bool known = TagsForKind(kind, tags);
  assert(known && "view kind must be 1, 2 or 3");
  return tags.pi;
}

const char* GlTag(Long kind) {
  ViewTags tags{};
  [[maybe_unused]] const bool known = TagsForKind(kind, tags);
  assert(known && "view kind must be 1, 2 or 3");
  return tags.gl;
}

}  // namespace

std::unique_ptr<BinaryFile> CreateSceneFile(const std::string& path) {
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) Raise(kErrPathFileAccess);
  }
  return BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
}

void WriteFileHeader(BinaryFile& f, const FileHeader& h) {
  f.WriteFixed(h.magic, 4);
  f.WriteLong(h.version);
  f.WriteLong(h.reserved_a);
  f.WriteFixed(h.header_tag, 4);
  f.WriteLong(h.value1);
  f.WriteLong(h.value2);
  f.WriteLong(h.reserved_b);
  f.WriteLong(h.value3);
  f.WriteLong(h.value4);
}

void WriteChunkHeader(BinaryFile& f, const ChunkHeader& h) {
  f.WriteFixed(h.tag, 4);
  f.WriteLong(h.view_id);
  f.WriteLong(h.value2);
  f.WriteLong(h.value3);
  f.WriteLong(h.body_form);
  f.WriteLong(h.value5);
  f.WriteLong(h.value6);
  f.WriteLong(h.value7);
  f.WriteLong(h.next);
}

ContainerWriter::ContainerWriter(BinaryFile& f) : f_(f) {
  assert(f_.Length() == 0 && "a scene file is written into an empty file");
  FileHeader h;
  h.header_tag = kWriterHeaderTag;
  f_.Seek(1);
  WriteFileHeader(f_, h);
}

void ContainerWriter::BeginChunk(const std::string& tag, Long view_id, Long body_form) {
  assert(open_chunk_ == 0 && "chunks do not nest");
  open_chunk_ = f_.Position();
  ChunkHeader h;
  h.tag = tag;
  h.view_id = view_id;
  h.body_form = body_form;
  WriteChunkHeader(f_, h);
}

void ContainerWriter::EndChunk() {
  const Long end = f_.Position();
  f_.Seek(open_chunk_ + kChunkValue2Offset);
  f_.WriteLong(end - open_chunk_ - kChunkHeaderSize);
  f_.Seek(open_chunk_ + kChunkNextOffset);
  f_.WriteLong(end);
  f_.Seek(end);
  open_chunk_ = 0;
  ++chunk_count_;
}

void ContainerWriter::AddInfoChunk(Long kind, Long view_id, const SceneInfo& info) {
  BeginChunk(PiTag(kind), view_id, 1);
  WriteSceneInfoForm1(f_, info);
  EndChunk();
}

void ContainerWriter::AddInfoChunkForm0(Long kind, Long view_id, const SceneInfoForm0& info) {
  BeginChunk(PiTag(kind), view_id, 0);
  WriteSceneInfoForm0(f_, info);
  EndChunk();
}

Long ContainerWriter::BeginGlChunk(Long kind, Long view_id) {
  BeginChunk(GlTag(kind), view_id, 0);
  const Long stream = f_.Position();
  WriteStreamHead(f_);
  return stream;
}

void ContainerWriter::EndGlChunk() {
  WriteEndOfSeqRecord(f_);
  EndChunk();
}

void ContainerWriter::AddRawChunk(const std::string& tag, Long view_id, Long body_form,
                                  const std::vector<unsigned char>& body) {
  BeginChunk(tag, view_id, body_form);
  f_.WriteBytes(body.data(), body.size());
  EndChunk();
}

void ContainerWriter::Finish() {
  assert(open_chunk_ == 0 && "a chunk is still open");
  const Long end = f_.Position();
  f_.Seek(kFileValue1Offset + 1);
  f_.WriteLong(chunk_count_);
  f_.Seek(kFileValue2Offset + 1);
  f_.WriteLong(end - 1);
  f_.Seek(end);
  f_.Flush();
}

}  // namespace quelo
