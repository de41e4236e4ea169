#include "scenefile/record_reader.h"

#include <gtest/gtest.h>

#include <limits>

#include "common/runtime_error.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/bytes.h"
#include "support/error_of.h"

namespace quelo {
namespace {

using testing::Bytes;
using testing::DecodeBytes;
using testing::TempDir;

constexpr Long kFirst = 757;  // first framed record of a stream at position 1

Bytes Framed() {
  return std::move(Bytes().Raw(StreamHeadBytes()));
}

// Writes one record of every operation through the named writers.
void WriteEveryOperation(BinaryFile& f) {
  const Single params[4] = {0.25f, -1.5f, 3e-7f, 1e30f};
  WriteStreamHead(f);
  WriteBlockBeginRecord(f, 7);
  WriteBeginRecord(f, 4);
  WriteColor3fRecord(f, 0.1f, 0.2f, 0.3f);
  WriteVertex3fRecord(f, 1.0f, -2.5f, 3.75f);
  WriteMaterialfvRecord(f, 1032, 4609, params);
  WritePolygonModeRecord(f, 1028, 6913);
  WriteFrontFaceRecord(f, 2305);
  WriteNormal3fRecord(f, 0.0f, 0.0f, -1.0f);
  WriteEdgeFlagRecord(f, true);
  WriteEdgeFlagRecord(f, false);
  WriteColorLongRecord(f, 0x00123456);
  WriteTessBeginPolyRecord(f, 5);
  WriteTessVector3dRecord(f, 1.0 / 3.0, -2e100, 7.0);
  WriteTessVector3dvRecord(f, -0.5, 0.125, 1e-300);
  WriteTessEndPolyRecord(f);
  WriteEndRecord(f);
  WriteBlockEndRecord(f, -7);
  WriteEndOfSeqRecord(f);
}

std::string WriteEveryOperationFile(const TempDir& dir) {
  const std::string path = dir.File("all.bin");
  auto f = BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
  WriteEveryOperation(*f);
  return path;
}

TEST(RecordRoundTrip, EveryOperationReadsBackAsWrittenAndRewritesToTheSameBytes) {
  TempDir dir;
  const std::string original = WriteEveryOperationFile(dir);
  const auto d = testing::DecodeFile(original);
  ASSERT_EQ(d.form, StreamForm::kFramed);
  const Long ops[] = {15, 1, 3, 4, 5, 6, 7, 8, 9, 9, 10, 11, 13, 14, 12, 2, 16, 0};
  ASSERT_EQ(d.records.size(), std::size(ops));
  Long at = kFirst;
  for (std::size_t i = 0; i < d.records.size(); ++i) {
    const Record& r = d.records[i];
    EXPECT_EQ(r.op, ops[i]);
    EXPECT_EQ(r.position, at);
    EXPECT_EQ(r.length, OpTable()[static_cast<std::size_t>(r.op)].length);
    EXPECT_EQ(r.action, r.op == 0 ? RecordAction::kStop : RecordAction::kPlay);
    at += 8 + r.length;
  }
  const auto& R = d.records;
  EXPECT_EQ(R[0].longs[0], 7);
  EXPECT_EQ(R[1].longs[0], 4);
  EXPECT_EQ(R[2].singles, (std::array<Single, 4>{0.1f, 0.2f, 0.3f, 0}));
  EXPECT_EQ(R[3].singles, (std::array<Single, 4>{1.0f, -2.5f, 3.75f, 0}));
  EXPECT_EQ(R[4].longs, (std::array<Long, 2>{1032, 4609}));
  EXPECT_EQ(R[4].singles, (std::array<Single, 4>{0.25f, -1.5f, 3e-7f, 1e30f}));
  EXPECT_EQ(R[5].longs, (std::array<Long, 2>{1028, 6913}));
  EXPECT_EQ(R[6].longs[0], 2305);
  EXPECT_EQ(R[7].singles[2], -1.0f);
  EXPECT_EQ(R[8].longs[0], -1);  // true is stored as -1
  EXPECT_EQ(R[9].longs[0], 0);
  EXPECT_EQ(R[10].longs[0], 0x00123456);
  EXPECT_EQ(R[11].longs[0], 5);
  EXPECT_EQ(R[12].doubles, (std::array<double, 3>{1.0 / 3.0, -2e100, 7.0}));
  EXPECT_EQ(R[13].doubles, (std::array<double, 3>{-0.5, 0.125, 1e-300}));
  EXPECT_EQ(R[16].longs[0], -7);
  // Fields in table order: oglMaterialfv is face, pname, then the four values.
  ASSERT_EQ(R[4].ArgCount(), 6u);
  std::vector<double> fields;
  VisitFields(R[4], [&fields](auto v) { fields.push_back(static_cast<double>(v)); });
  EXPECT_EQ(fields, (std::vector<double>{1032, 4609, 0.25, -1.5, 3e-7f, 1e30f}));
  EXPECT_EQ(R[17].ArgCount(), 0u);

  const std::string copy = dir.File("copy.bin");
  {
    auto f = BinaryFile::Open(copy, BinaryFile::Access::kReadWrite);
    WriteStreamHead(*f);
    for (const Record& r : d.records) WriteRecord(*f, r);
  }
  EXPECT_EQ(testing::ReadAll(copy), testing::ReadAll(original));
  // A record of no known operation is refused before anything is written.
  auto f = BinaryFile::Open(copy, BinaryFile::Access::kReadWrite);
  f->Seek(f->Length() + 1);
  Record unknown;
  unknown.op = kOpCount;
  EXPECT_EQ(testing::ErrorOf([&] { WriteRecord(*f, unknown); }), kErrInvalidCall);
  EXPECT_EQ(f->Position(), f->Length() + 1);
}

TEST(RecordReader, FirstLongDecidesTheForm) {
  TempDir dir;
  // Another negative value: nothing at all, even with records after it.
  auto none = DecodeBytes(dir, Bytes().L(-5).L(1).L(1).L(0).data());
  EXPECT_EQ(none.form, StreamForm::kNone);
  EXPECT_TRUE(none.records.empty());
  auto min = DecodeBytes(dir, Bytes().L(std::numeric_limits<Long>::min()).L(0).data());
  EXPECT_EQ(min.form, StreamForm::kNone);
  // Non-negative: the first Long is already the first op.
  auto unframed = DecodeBytes(dir, Bytes().L(2).L(0).data());
  EXPECT_EQ(unframed.form, StreamForm::kUnframed);
  ASSERT_EQ(unframed.records.size(), 2u);
  EXPECT_EQ(unframed.records[0].op, kOpEnd);
  EXPECT_EQ(unframed.records[0].position, 1);
  // -1 is framed, and the 752 bytes after it are not read, whatever they hold.
  Bytes framed;
  framed.L(-1);
  for (int i = 0; i < 188; ++i) framed.L(-5);
  framed.L(4).L(12).S(1).S(2).S(3).L(0).L(0);
  auto f = DecodeBytes(dir, framed.data());
  EXPECT_EQ(f.form, StreamForm::kFramed);
  ASSERT_EQ(f.records.size(), 2u);
  EXPECT_EQ(f.records[0].position, kFirst);
  EXPECT_EQ(f.records[0].action, RecordAction::kPlay);
}

// Only the table's exact length plays; one byte more or less is skipped whole
// (its payload is not read as arguments), and the next record is found at
// H + length.
TEST(RecordReader, EveryCodePlaysOnlyAtItsExactLength) {
  TempDir dir;
  for (Long op = 1; op < kOpCount; ++op) {
    const Long exact = FindOp(op)->length;
    for (Long length : {exact - 1, exact, exact + 1}) {
      if (length < 0) continue;
      SCOPED_TRACE(::testing::Message() << "op " << op << ", length " << length);
      auto b = Framed();
      b.L(op).L(length).Raw(std::vector<unsigned char>(static_cast<std::size_t>(length), 0x3F));
      b.L(kOpEnd).L(0).L(0).L(0);
      const auto d = DecodeBytes(dir, b.data());
      ASSERT_EQ(d.records.size(), 3u);
      EXPECT_EQ(d.records[0].action, length == exact ? RecordAction::kPlay : RecordAction::kSkip);
      EXPECT_EQ(d.records[0].ArgCount() == 0, length != exact || exact == 0);
      if (length != exact) {
        EXPECT_EQ(d.records[0].longs[0], 0);
      }
      EXPECT_EQ(d.records[1].op, kOpEnd);
      EXPECT_EQ(d.records[1].position, kFirst + 8 + length);
    }
  }
}

TEST(RecordReader, UnknownCodesAndOpZeroWithALengthAreSkipped) {
  TempDir dir;
  auto b = Framed();
  b.L(17).L(0);
  b.L(-1).L(4).L(99);
  b.L(0x40000000).L(0);
  b.L(0).L(4).L(0);  // op 0 with a length is no end of stream
  b.L(2).L(0);
  b.L(0).L(0);
  b.L(2).L(0);  // after the end: never read
  const auto d = DecodeBytes(dir, b.data());
  ASSERT_EQ(d.records.size(), 6u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(d.records[i].action, RecordAction::kSkip) << i;
  EXPECT_EQ(d.records[3].op, 0);
  EXPECT_EQ(d.records[3].length, 4);
  EXPECT_EQ(d.records[4].op, kOpEnd);
  EXPECT_EQ(d.records[4].action, RecordAction::kPlay);
  EXPECT_EQ(d.records[5].action, RecordAction::kStop);
}

TEST(RecordReader, BlockCodesAreUnknownInTheUnframedForm) {
  TempDir dir;
  Bytes b;
  b.L(1).L(4);                  // begin(quads)
  b.L(15).L(4).S(1).S(2).S(3);  // 15 passed over as one Long: 4 is the next op
  b.L(16).L(-1).L(2);           // 16 and -1 (unsigned above 14) passed over
  b.L(0).L(2);
  const auto d = DecodeBytes(dir, b.data());
  ASSERT_EQ(d.form, StreamForm::kUnframed);
  const Long ops[] = {1, 15, 4, 16, -1, 2, 0};
  const RecordAction acts[] = {RecordAction::kPlay, RecordAction::kSkip, RecordAction::kPlay,
                               RecordAction::kSkip, RecordAction::kSkip, RecordAction::kPlay,
                               RecordAction::kStop};
  ASSERT_EQ(d.records.size(), std::size(ops));
  for (std::size_t i = 0; i < std::size(ops); ++i) {
    EXPECT_EQ(d.records[i].op, ops[i]) << i;
    EXPECT_EQ(d.records[i].action, acts[i]) << i;
    EXPECT_EQ(d.records[i].length, -1) << i;
  }
  EXPECT_EQ(d.records[1].position, 9);
  EXPECT_EQ(d.records[2].position, 13);
  EXPECT_EQ(d.records[2].singles[2], 3.0f);
}

TEST(RecordReader, EndOfFileEndsTheStreamAlsoMidRecord) {
  TempDir dir;
  // Framed: no end record at all.
  auto open_end = Framed();
  open_end.L(2).L(0);
  EXPECT_EQ(DecodeBytes(dir, open_end.data()).records.size(), 1u);
  // Framed: a skipped record whose length runs past the end.
  auto long_skip = Framed();
  long_skip.L(99).L(1000).L(2).L(0);
  EXPECT_EQ(DecodeBytes(dir, long_skip.data()).records.size(), 1u);
  // A head cut short.
  EXPECT_TRUE(DecodeBytes(dir, Bytes().L(-1).L(1).L(1).data()).records.empty());
  // Unframed: cut inside a Double payload.
  Bytes un;
  un.L(2).L(13).D(1).D(2).L(0);
  const auto du = DecodeBytes(dir, un.data());
  ASSERT_EQ(du.records.size(), 1u);
  EXPECT_EQ(du.records[0].op, kOpEnd);
  // An empty stream is unframed and empty.
  const auto empty = DecodeBytes(dir, {});
  EXPECT_EQ(empty.form, StreamForm::kUnframed);
  EXPECT_TRUE(empty.records.empty());
}

TEST(RecordReader, NegativeLengthEndsTheStreamInsteadOfLooping) {
  TempDir dir;
  auto b = Framed();
  b.L(2).L(0).L(99).L(-16).L(2).L(0);  // -16 would lead back to the op 2 record
  const auto d = DecodeBytes(dir, b.data());
  ASSERT_EQ(d.records.size(), 2u);
  EXPECT_EQ(d.records[1].length, -16);
  EXPECT_EQ(d.records[1].action, RecordAction::kStop);
  // Even for a known op and for op 0.
  auto z = Framed();
  z.L(0).L(-8).L(2).L(0);
  const auto dz = DecodeBytes(dir, z.data());
  ASSERT_EQ(dz.records.size(), 1u);
  EXPECT_EQ(dz.records[0].action, RecordAction::kStop);
}

TEST(RecordReader, NextPositionBeyondALongIsAnOverflowError) {
  TempDir dir;
  auto b = Framed();
  b.L(99).L(std::numeric_limits<Long>::max() - 4).L(0).L(0);
  const std::string path = dir.File("big.bin");
  testing::WriteAll(path, b.data());
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  RecordReader reader(*f);
  Record rec;
  ASSERT_TRUE(reader.Next(rec));  // the record itself is still handed out
  EXPECT_EQ(rec.action, RecordAction::kSkip);
  EXPECT_EQ(testing::ErrorOf([&] { reader.Next(rec); }), kErrOverflow);
  // Just inside the range: the seek lands past the end and the stream ends.
  auto ok = Framed();
  ok.L(99).L(std::numeric_limits<Long>::max() - 757 - 8).L(0).L(0);
  EXPECT_EQ(DecodeBytes(dir, ok.data()).records.size(), 1u);
}

// Every prefix of a valid stream: the reader returns a prefix of the full
// record list and never more than fits into the bytes it was given.
TEST(RecordReader, EveryTruncationYieldsAPrefixOfTheRecords) {
  TempDir dir;
  const auto full_bytes = testing::ReadAll(WriteEveryOperationFile(dir));
  const auto full = testing::DecodeFile(dir.File("all.bin"));
  std::size_t previous = 0;
  for (std::size_t n = 0; n <= full_bytes.size(); ++n) {
    const std::vector<unsigned char> cut(full_bytes.begin(), full_bytes.begin() + n);
    const auto d = DecodeBytes(dir, cut);
    ASSERT_LE(d.records.size(), full.records.size()) << n;
    ASSERT_GE(d.records.size(), previous) << n;
    for (std::size_t i = 0; i < d.records.size(); ++i) {
      const Record& r = d.records[i];
      ASSERT_EQ(r.op, full.records[i].op) << n;
      ASSERT_EQ(r.position, full.records[i].position) << n;
      ASSERT_LE(static_cast<std::size_t>(r.position - 1 + 8 + r.length), n) << n;
    }
    previous = d.records.size();
  }
  EXPECT_EQ(previous, full.records.size());
}

// Garbage after a valid head never hangs the reader and never makes it read
// a record outside the file.
TEST(RecordReader, ArbitraryBytesEndInBoundedSteps) {
  TempDir dir;
  std::uint32_t seed = 12345;
  auto next = [&seed] {
    seed = seed * 1664525u + 1013904223u;
    return seed >> 8;
  };
  for (int round = 0; round < 200; ++round) {
    auto b = Framed();
    const int longs = static_cast<int>(next() % 64);
    for (int i = 0; i < longs; ++i) {
      // Mostly small codes and lengths so that records get decoded.
      const std::uint32_t r = next();
      b.L(r % 4 == 0 ? static_cast<Long>(next()) : static_cast<Long>(r % 40) - 4);
    }
    const auto d = DecodeBytes(dir, b.data());
    ASSERT_LT(d.records.size(), 100000u);
    for (const Record& r : d.records) {
      ASSERT_GE(r.position, kFirst);
      ASSERT_LE(static_cast<std::size_t>(r.position) + 7, b.size());
    }
  }
}

}  // namespace
}  // namespace quelo
