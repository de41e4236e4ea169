#include "scenefile/container.h"

#include <gtest/gtest.h>

#include <limits>

#include "common/runtime_error.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/bytes.h"

namespace quelo {
namespace {

using KIVO_GLMapFile::LocateStream;
using testing::Bytes;
using testing::TempDir;

Bytes Header(const char* magic = "KIVO", Long version = 4, Long res_a = 0, Long res_b = 0) {
  Bytes b;
  b.Tag(magic).L(version).L(res_a).Tag("ANY!").L(11).L(22).L(res_b).L(33).L(44);
  return b;
}

// A chunk header; `next` is the 1-based position of the following header.
Bytes& Chunk(Bytes& b, const char* tag, Long view_id, Long body_form, Long next) {
  return b.Tag(tag).L(view_id).L(-7).L(-7).L(body_form).L(-7).L(-7).L(-7).L(next);
}

Long Here(const Bytes& b) {
  return static_cast<Long>(b.size()) + 1;
}

SceneInfo SampleInfo(Long flags) {
  SceneInfo info;
  info.Flags = flags;
  info.DrawingNo = "D-0042";
  info.ProjectName = "Sample project";
  for (std::size_t i = 0; i < kLayerCount; ++i) {
    info.LayerColours[i] = static_cast<Long>(0x010203 * i);
    info.LayerStates[i] = static_cast<Long>(i) - 3;
  }
  info.Setup.Flags = 16 | 4 | 1;
  info.Setup.Scale = 0.5f;
  info.Revision = 9;
  info.Title = "A title";
  return info;
}

SceneInfoForm0 SampleForm0() {
  SceneInfoForm0 old;
  old.Flags = 2 | 8;
  old.DrawingNo = "OLD-1";
  old.ProjectName = "Old project";
  old.LayerColours.fill(0x00FF00);
  old.LayerStates.fill(1);
  old.Setup.Flags = 16 | 32 | 2;
  old.Setup.Scale = 100.0f;
  old.Title = "Older";
  return old;
}

std::string Save(const TempDir& dir, const Bytes& b, const char* name = "scene.qgl") {
  const std::string path = dir.File(name);
  testing::WriteAll(path, b.data());
  return path;
}

// Checks that no file number stays taken by the reader.
class ContainerReader : public ::testing::Test {
 protected:
  void SetUp() override { free_before_ = Files().FreeFile(); }
  void TearDown() override { EXPECT_EQ(Files().FreeFile(), free_before_); }
  // Views 1 and 3 with form-1 PI bodies, view 2 with a form-0 body; each
  // stream holds one triangle record set. Fills streams_[kind].
  std::string WriteThreeViews() {
    const std::string path = dir_.File("views.qgl");
    auto f = CreateSceneFile(path);
    ContainerWriter w(*f);
    for (Long kind : {1, 2, 3}) {
      if (kind == 2) {
        w.AddInfoChunkForm0(kind, 10 + kind, SampleForm0());
      } else {
        w.AddInfoChunk(kind, 10 + kind, SampleInfo(kind));
      }
      streams_[kind] = w.BeginGlChunk(kind, 10 + kind);
      WriteBeginRecord(*f, 4);
      WriteVertex3fRecord(*f, 1, 2, static_cast<Single>(kind));
      WriteEndRecord(*f);
      w.EndGlChunk();
    }
    w.Finish();
    return path;
  }
  TempDir dir_;
  Integer free_before_ = 0;
  Long streams_[4] = {};
};

TEST_F(ContainerReader, FindsEveryViewOfAWrittenFileInBothForms) {
  const std::string path = WriteThreeViews();
  for (Long kind : {1, 3}) {
    SceneInfo info;
    EXPECT_EQ(LocateStream(path, kind, info), streams_[kind]) << kind;
    const SceneInfo want = SampleInfo(kind);
    EXPECT_EQ(info.Flags, kind);
    EXPECT_EQ(info.DrawingNo, "D-0042              ");  // fixed texts come back padded
    EXPECT_EQ(info.ProjectName.size(), kProjectNameSize);
    EXPECT_EQ(info.LayerColours, want.LayerColours);
    EXPECT_EQ(info.LayerStates, want.LayerStates);
    EXPECT_EQ(info.Setup.Flags, 16 | 4 | 1);  // form 1 keeps bit 16
    EXPECT_EQ(info.Setup.Scale, 0.5f);
    EXPECT_EQ(info.Revision, 9);
    EXPECT_EQ(info.Title, "A title");
  }
  SceneInfo info = SampleInfo(0);  // Revision 9 must not survive the form-0 view
  ASSERT_EQ(LocateStream(path, 2, info), streams_[2]);
  const SceneInfoForm0 old = SampleForm0();
  EXPECT_EQ(info.Flags, 2 | 8);
  EXPECT_EQ(info.DrawingNo.substr(0, 5), "OLD-1");
  EXPECT_EQ(info.ProjectName.substr(0, 11), "Old project");
  EXPECT_EQ(info.LayerColours, old.LayerColours);
  EXPECT_EQ(info.LayerStates, old.LayerStates);
  EXPECT_EQ(info.Setup.Flags, 32 | 2);  // bit 16 cleared, the others kept
  EXPECT_EQ(info.Setup.Scale, 100.0f);
  EXPECT_EQ(info.Revision, 0);
  EXPECT_EQ(info.Title, "Older");
  // The stream is there: head, then the records.
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  f->Seek(streams_[3] + kStreamHeadSize);
  EXPECT_EQ(f->ReadLong(), kOpBegin);

  // Other kinds, and headers without chunks, leave the info as it was.
  info = SampleInfo(77);
  for (Long kind : {0, 4, -1}) EXPECT_EQ(LocateStream(path, kind, info), -1) << kind;
  EXPECT_EQ(LocateStream(Save(dir_, Header()), 1, info), -1);
  // A header shorter than 36 bytes reads as zeros: still accepted, no chunks.
  EXPECT_EQ(LocateStream(Save(dir_, Bytes().Tag("KIVO").L(4)), 1, info), -1);
  EXPECT_EQ(info.Flags, 77);
}

TEST_F(ContainerReader, EveryTruncationGivesASaneResult) {
  const auto full = testing::ReadAll(WriteThreeViews());
  const std::string cut_path = dir_.File("cut.qgl");
  for (std::size_t n = 0; n <= full.size(); ++n) {
    testing::WriteAll(cut_path, std::vector<unsigned char>(full.begin(), full.begin() + n));
    for (Long kind = 1; kind <= 3; ++kind) {
      SceneInfo info;
      const Long r = LocateStream(cut_path, kind, info);
      if (n < 5) {
        ASSERT_EQ(r, -2) << n;  // no magic, or version 0 (missing bytes read as zeros)
      } else {
        ASSERT_TRUE(r == -1 || r == 0 || r == streams_[kind]) << n << " kind " << kind << " " << r;
      }
      // Once the GL chunk's header is complete, the stream is found.
      if (static_cast<Long>(n) >= streams_[kind] - 1) {
        ASSERT_EQ(r, streams_[kind]) << n;
      }
    }
  }
}

TEST_F(ContainerReader, BadHeaderOrPiBodyFormGivesMinusTwo) {
  auto with_view = [&](Bytes b, Long form = 1) {
    Chunk(b, "PIFC", 1, form, 0);
    SceneInfo info = SampleInfo(3);
    const Long r = LocateStream(Save(dir_, b), 1, info);
    EXPECT_EQ(info.Flags, r == -2 ? 3 : 0);  // untouched on failure
    return r;
  };
  EXPECT_EQ(with_view(Header("KIVX")), -2);
  EXPECT_EQ(with_view(Header("kivo")), -2);
  EXPECT_EQ(with_view(Header("KIVO", 5)), -2);
  EXPECT_EQ(with_view(Header("KIVO", 4, 1)), -2);
  EXPECT_EQ(with_view(Header("KIVO", 4, 0, -1)), -2);
  EXPECT_EQ(with_view(Header("KIVO", 4, 0, 0)), 0);  // PI found, no GL chunk
  for (Long form : {2, -1, 1 << 20}) EXPECT_EQ(with_view(Header(), form), -2) << form;
  SceneInfo info;
  EXPECT_EQ(LocateStream(Save(dir_, Bytes()), 1, info), -2);
  EXPECT_EQ(LocateStream(Save(dir_, Bytes().Tag("KIV")), 1, info), -2);
  // -2 comes before the kind is looked at.
  EXPECT_EQ(LocateStream(Save(dir_, Header("XXXX")), 9, info), -2);
}

TEST_F(ContainerReader, FirstGlChunkWithMatchingTagAndViewIdWinsInAnyOrder) {
  Bytes b = Header();
  Chunk(b, "GLA3", 7, 0, Here(b) + 36);  // wrong view id
  Chunk(b, "GLFC", 8, 0, Here(b) + 36);  // wrong tag
  Chunk(b, "gla3", 8, 0, Here(b) + 36);  // tags are case-sensitive
  Chunk(b, "GLA3", 8, 0, Here(b) + 36);  // before its PI chunk
  const Long first = Here(b);
  Chunk(b, "GLA3", 8, 0, Here(b) + 36);
  std::vector<unsigned char> body;
  {
    const std::string path = dir_.File("body.bin");
    WriteSceneInfoForm1(*CreateSceneFile(path), SampleInfo(2));
    body = testing::ReadAll(path);
  }
  // Two stray Longs after the PI body: the chain passes over them.
  Chunk(b, "PIA3", 8, 1, Here(b) + 36 + static_cast<Long>(body.size()) + 8);
  const std::size_t body_at = b.size();
  b.Raw(body).L(0).L(0);
  SceneInfo info;
  const std::string path = Save(dir_, b);
  EXPECT_EQ(LocateStream(path, 3, info), first);
  EXPECT_EQ(info.Flags, 2);
  EXPECT_EQ(LocateStream(path, 1, info), -1);

  // A title length of 65535 in a file that ends long before stays bounded.
  b.PatchL(body_at + 204, 0xFFFF);
  EXPECT_EQ(LocateStream(Save(dir_, b), 3, info), first);
  EXPECT_EQ(info.Title.size(), kMaxTitleSize);
}

TEST_F(ContainerReader, CycleCutHeaderOrPositionBelowOneEndsThePass) {
  // 37 -> 73 -> 37: no PI chunk of kind 2 anywhere.
  Bytes b = Header();
  Chunk(b, "PIFC", 1, 1, 73);
  Chunk(b, "XXXX", 0, 0, 37);
  SceneInfo info;
  const std::string looping = Save(dir_, b, "loop.qgl");
  EXPECT_EQ(LocateStream(looping, 2, info), -1);
  // PI found, but the GL pass loops: 0. (The PI body is garbage, read anyway.)
  EXPECT_EQ(LocateStream(looping, 1, info), 0);
  for (Long next : {0, -1, std::numeric_limits<Long>::min()}) {
    Bytes stop = Header();
    Chunk(stop, "XXXX", 0, 0, next);
    Chunk(stop, "PIFC", 1, 1, Here(stop) + 36);  // unreachable
    EXPECT_EQ(LocateStream(Save(dir_, stop), 1, info), -1) << next;
  }
  // Every cut of the last chunk header counts as no chunk.
  Bytes whole = Header();
  Chunk(whole, "XXXX", 0, 0, Here(whole) + 36);
  const std::size_t cut_from = whole.size();
  Chunk(whole, "PIFC", 1, 1, 0);
  for (std::size_t n = cut_from; n < whole.size(); ++n) {
    Bytes partial;
    partial.Raw(std::vector<unsigned char>(whole.data().begin(), whole.data().begin() + n));
    EXPECT_EQ(LocateStream(Save(dir_, partial), 1, info), -1) << n;
  }
  EXPECT_EQ(LocateStream(Save(dir_, whole), 1, info), 0);
}

TEST_F(ContainerReader, UnreadableFileRaisesItsFileError) {
  SceneInfo info;
  try {
    LocateStream(dir_.File("missing.qgl"), 1, info);
    FAIL() << "no error";
  } catch (const RuntimeError& e) {
    EXPECT_EQ(e.number(), kErrFileNotFound);
  }
  EXPECT_THROW(LocateStream(dir_.path().string(), 1, info), RuntimeError);  // a folder
}

TEST(ChunkWalker, ListsTheChainOnceAndSaysHowItEnded) {
  TempDir dir;
  // 37 -> A -> B -> C -> B: a lead-in and a cycle of two.
  Bytes b = Header();
  const Long a = 37, bb = 37 + 36, c = 37 + 72;
  Chunk(b, "AAAA", 1, 0, bb);
  Chunk(b, "BBBB", 2, 0, c);
  Chunk(b, "CCCC", 3, 1, bb);
  const std::string path = Save(dir, b);
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  std::vector<Long> seen;
  std::vector<std::string> tags;
  const ChainEnd end = WalkChunks(*f, [&](Long pos, const ChunkHeader& h) {
    seen.push_back(pos);
    tags.push_back(h.tag);
    return true;
  });
  EXPECT_EQ(end, ChainEnd::kRevisit);
  EXPECT_EQ(seen, (std::vector<Long>{a, bb, c}));
  EXPECT_EQ(tags, (std::vector<std::string>{"AAAA", "BBBB", "CCCC"}));

  // A long cycle through many chunks is still walked once.
  Bytes ring = Header();
  const int count = 1000;
  for (int i = 0; i < count; ++i) {
    Chunk(ring, "RING", i, 0, i + 1 < count ? Here(ring) + 36 : 37 + 36 * 500);
  }
  auto rf = BinaryFile::Open(Save(dir, ring, "ring.qgl"), BinaryFile::Access::kRead);
  int visits = 0;
  EXPECT_EQ(WalkChunks(*rf, [&](Long, const ChunkHeader&) { return ++visits, true; }),
            ChainEnd::kRevisit);
  EXPECT_EQ(visits, count);

  // Stops when asked; ends at the end of the file or at a position below 1.
  int n = 0;
  EXPECT_EQ(WalkChunks(*rf, [&](Long, const ChunkHeader&) { return ++n < 3; }), ChainEnd::kStopped);
  EXPECT_EQ(n, 3);
  Bytes tail = Header();
  Chunk(tail, "TAIL", 0, 0, 5000);
  auto tf = BinaryFile::Open(Save(dir, tail, "tail.qgl"), BinaryFile::Access::kRead);
  EXPECT_EQ(WalkChunks(*tf, [](Long, const ChunkHeader&) { return true; }), ChainEnd::kEndOfFile);
  Bytes neg = Header();
  Chunk(neg, "NEG!", 0, 0, -36);
  auto nf = BinaryFile::Open(Save(dir, neg, "neg.qgl"), BinaryFile::Access::kRead);
  EXPECT_EQ(WalkChunks(*nf, [](Long, const ChunkHeader&) { return true; }), ChainEnd::kBadPosition);
}

TEST(ContainerWriter, FillsTheUncheckedFieldsAsDocumented) {
  TempDir dir;
  const std::string path = dir.File("w.qgl");
  {
    auto f = CreateSceneFile(path);
    ContainerWriter w(*f);
    w.AddInfoChunk(1, 1, SampleInfo(0));
    w.AddRawChunk("XTRA", 5, 0, {1, 2, 3});
    w.Finish();
  }
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  const FileHeader h = ReadFileHeader(*f);
  EXPECT_TRUE(h.Accepted());
  EXPECT_EQ(h.header_tag, "QELO");
  EXPECT_EQ(h.value1, 2);
  EXPECT_EQ(h.value2, f->Length());
  std::vector<ChunkHeader> chunks;
  std::vector<Long> positions;
  WalkChunks(*f, [&](Long pos, const ChunkHeader& c) {
    positions.push_back(pos);
    chunks.push_back(c);
    return true;
  });
  ASSERT_EQ(chunks.size(), 2u);
  EXPECT_EQ(positions[0], 37);
  EXPECT_EQ(chunks[0].body_form, 1);
  EXPECT_EQ(chunks[0].value2, 204 + 2 + 7);
  EXPECT_EQ(chunks[0].next, positions[1]);
  EXPECT_EQ(chunks[1].tag, "XTRA");
  EXPECT_EQ(chunks[1].value2, 3);
  EXPECT_EQ(chunks[1].next, f->Length() + 1);
}

}  // namespace
}  // namespace quelo
