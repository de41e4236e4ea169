#include "scenefile/container.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "common/runtime_error.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/bytes.h"
#include "support/error_of.h"

namespace quelo {
namespace {

using KIVO_GLMapFile::LocateStream;
using testing::Bytes;
using testing::ErrorOf;
using testing::TempDir;

Bytes Header(const char* magic = "KIVO", Long version = 4, Long res_a = 0, Long res_b = 0) {
  return std::move(
      Bytes().Tag(magic).L(version).L(res_a).Tag("ANY!").L(11).L(22).L(res_b).L(33).L(44));
}

// A chunk header; `next` is the 1-based position of the following header.
Bytes& Chunk(Bytes& b, const char* tag, Long view_id, Long body_form, Long next) {
  return b.Tag(tag).L(view_id).L(-2).L(-3).L(body_form).L(-5).L(-6).L(-7).L(next);
}

Long Here(const Bytes& b) {
  return static_cast<Long>(b.size()) + 1;
}

SceneInfo SampleInfo(Long flags) {
  SceneInfo info{flags, "D-0042", "Sample project", {}, {}, {16 | 4 | 1, 0.5f}, 9, "A title"};
  for (std::size_t i = 0; i < kLayerCount; ++i) {
    info.LayerColours[i] = static_cast<Long>(0x010203 * i);
    info.LayerStates[i] = static_cast<Long>(i) - 3;
  }
  return info;
}

SceneInfoForm0 SampleForm0() {
  SceneInfoForm0 old{2 | 8, "OLD-1", "Old project", {}, {}, {16 | 32 | 2, 100.0f}, "Older"};
  old.LayerColours.fill(0x00FF00);
  old.LayerStates.fill(1);
  return old;
}

// Every field of the record, for whole-record comparisons.
auto Fields(const SceneInfo& i) {
  return std::tie(i.Flags, i.DrawingNo, i.ProjectName, i.LayerColours, i.LayerStates, i.Setup.Flags,
                  i.Setup.Scale, i.Revision, i.Title);
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
  const SceneInfoForm0 old = SampleForm0();
  for (Long kind : {1, 2, 3}) {
    // Form 0 comes back without Revision and with setup bit 16 cleared; the
    // fixed texts come back blank-padded.
    SceneInfo want = kind == 2 ? SceneInfo{old.Flags,
                                           old.DrawingNo,
                                           old.ProjectName,
                                           old.LayerColours,
                                           old.LayerStates,
                                           {32 | 2, 100.0f},
                                           0,
                                           old.Title}
                               : SampleInfo(kind);
    want.DrawingNo.resize(kDrawingNoSize, ' ');
    want.ProjectName.resize(kProjectNameSize, ' ');
    SceneInfo info = SampleInfo(0);  // Revision 9 must not survive the form-0 view
    EXPECT_EQ(LocateStream(path, kind, info), streams_[kind]) << kind;
    EXPECT_EQ(Fields(info), Fields(want)) << kind;
  }
  // The stream is there: head, then the records.
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  f->Seek(streams_[3] + kStreamHeadSize);
  EXPECT_EQ(f->ReadLong(), kOpBegin);

  // Other kinds, and headers without chunks, leave the info as it was.
  SceneInfo info = SampleInfo(77);
  for (Long kind : {0, 4, -1}) EXPECT_EQ(LocateStream(path, kind, info), -1) << kind;
  EXPECT_EQ(LocateStream(Save(dir_, Header()), 1, info), -1);
  // A header shorter than 36 bytes reads as zeros: still accepted, no chunks.
  EXPECT_EQ(LocateStream(Save(dir_, Bytes().Tag("KIVO").L(4)), 1, info), -1);
  EXPECT_EQ(info.Flags, 77);
  // A file that cannot be opened raises its file error.
  EXPECT_EQ(ErrorOf([&] { LocateStream(dir_.File("missing.qgl"), 1, info); }), kErrFileNotFound);
  EXPECT_EQ(ErrorOf([&] { LocateStream(dir_.path().string(), 1, info); }), kErrPathFileAccess);
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
  const std::string body_path = dir_.File("body.bin");
  WriteSceneInfoForm1(*CreateSceneFile(body_path), SampleInfo(2));
  const auto body = testing::ReadAll(body_path);
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

// Every chunk the walk visits, all its fields in file order, and how the walk
// ended; the visitor stops it after `limit` chunks.
std::pair<std::vector<std::string>, ChainEnd> Walk(const std::string& path, int limit = 1 << 30) {
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  std::vector<std::string> seen;
  const ChainEnd end = WalkChunks(*f, [&](Long pos, const ChunkHeader& h) {
    std::string line = std::to_string(pos) + " " + h.tag;
    for (Long v :
         {h.view_id, h.value2, h.value3, h.body_form, h.value5, h.value6, h.value7, h.next})
      line += " " + std::to_string(v);
    seen.push_back(line);
    return static_cast<int>(seen.size()) < limit;
  });
  return {seen, end};
}

using Chain = std::pair<std::vector<std::string>, ChainEnd>;

TEST(ChunkWalker, ListsTheChainOnceAndSaysHowItEnded) {
  TempDir dir;
  // 37 -> 73 -> 109 -> 73: a lead-in and a cycle of two.
  Bytes b = Header();
  Chunk(b, "AAAA", 1, 0, 73);
  Chunk(b, "BBBB", 2, 0, 109);
  Chunk(b, "CCCC", 3, 1, 73);
  EXPECT_EQ(Walk(Save(dir, b)),
            Chain({"37 AAAA 1 -2 -3 0 -5 -6 -7 73", "73 BBBB 2 -2 -3 0 -5 -6 -7 109",
                   "109 CCCC 3 -2 -3 1 -5 -6 -7 73"},
                  ChainEnd::kRevisit));

  // A long cycle through many chunks is still walked once; a walk stops when
  // asked.
  Bytes ring = Header();
  for (int i = 0; i < 1000; ++i)
    Chunk(ring, "RING", i, 0, i < 999 ? Here(ring) + 36 : 37 + 36 * 500);
  const std::string ring_path = Save(dir, ring, "ring.qgl");
  const Chain all = Walk(ring_path), three = Walk(ring_path, 3);
  EXPECT_EQ(all.first.size(), 1000u);
  EXPECT_EQ(all.second, ChainEnd::kRevisit);
  EXPECT_EQ(three.first.size(), 3u);
  EXPECT_EQ(three.second, ChainEnd::kStopped);
  // Ends at the end of the file or at a position below 1.
  EXPECT_EQ(Walk(Save(dir, Chunk(b = Header(), "TAIL", 0, 0, 5000))).second, ChainEnd::kEndOfFile);
  EXPECT_EQ(Walk(Save(dir, Chunk(b = Header(), "NEG!", 0, 0, -36))).second, ChainEnd::kBadPosition);
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
  // Header tag, chunk count and file length; a chunk's value 2 is its body's
  // length (204 + 2 + "A title"), its next the byte after its body.
  const FileHeader h = ReadFileHeader(*BinaryFile::Open(path, BinaryFile::Access::kRead));
  EXPECT_EQ(std::tie(h.magic, h.version, h.reserved_a, h.header_tag, h.value1, h.value2,
                     h.reserved_b, h.value3, h.value4, h.complete),
            std::make_tuple("KIVO", 4, 0, "QELO", 2, 324, 0, 0, 0, true));
  EXPECT_EQ(Walk(path), Chain({"37 PIFC 1 213 0 1 0 0 0 286", "286 XTRA 5 3 0 0 0 0 0 325"},
                              ChainEnd::kEndOfFile));
}

}  // namespace
}  // namespace quelo
