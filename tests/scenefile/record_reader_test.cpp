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

// Each record as "position op length action", the way the reader handed it out.
std::vector<std::string> Summary(const testing::Decoded& d) {
  std::vector<std::string> out;
  for (const Record& r : d.records) {
    out.push_back(std::to_string(r.position) + " " + std::to_string(r.op) + " " +
                  std::to_string(r.length) + " " + RecordActionName(r.action));
  }
  return out;
}

using Lines = std::vector<std::string>;

TEST(RecordRoundTrip, EveryOperationReadsBackAsWrittenAndRewritesToTheSameBytes) {
  TempDir dir;
  const std::string original = WriteEveryOperationFile(dir);
  const auto d = testing::DecodeFile(original);
  ASSERT_EQ(d.form, StreamForm::kFramed);
  // Each op with its arguments in table order; true is stored as -1.
  // clang-format off
  const std::vector<std::pair<Long, std::vector<double>>> want = {
      {15, {7}}, {1, {4}}, {3, {0.1f, 0.2f, 0.3f}}, {4, {1.0f, -2.5f, 3.75f}},
      {5, {1032, 4609, 0.25f, -1.5f, 3e-7f, 1e30f}}, {6, {1028, 6913}}, {7, {2305}},
      {8, {0, 0, -1}}, {9, {-1}}, {9, {0}}, {10, {0x00123456}}, {11, {5}},
      {13, {1.0 / 3.0, -2e100, 7.0}}, {14, {-0.5, 0.125, 1e-300}}, {12, {}}, {2, {}},
      {16, {-7}}, {0, {}}};
  // clang-format on
  Lines expected;
  Long at = kFirst;
  for (const auto& [op, args] : want) {
    const Long length = FindOp(op)->length;
    expected.push_back(std::to_string(at) + " " + std::to_string(op) + " " +
                       std::to_string(length) + (op == 0 ? " stop" : " play"));
    at += 8 + length;
  }
  ASSERT_EQ(Summary(d), expected);
  for (std::size_t i = 0; i < want.size(); ++i) {
    std::vector<double> args;
    VisitFields(d.records[i], [&args](auto v) { args.push_back(static_cast<double>(v)); });
    EXPECT_EQ(args, want[i].second) << i;
    EXPECT_EQ(d.records[i].ArgCount(), args.size()) << i;
  }
  // oglMaterialfv keeps face and pname as Longs, then the four Singles.
  EXPECT_EQ(d.records[4].longs, (std::array<Long, 2>{1032, 4609}));
  EXPECT_EQ(d.records[4].singles, (std::array<Single, 4>{0.25f, -1.5f, 3e-7f, 1e30f}));

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

TEST(StreamHead, IsTheFramedMarkThenAnUnframedPictureOfTwentyThreeLines) {
  const auto& head = StreamHeadBytes();
  // -1 (the framed mark), little-endian; the first vertex's x = 1.0f after
  // -1, 1, 1, 4.
  EXPECT_EQ(std::vector<unsigned char>(head.begin(), head.begin() + 20),
            Bytes().L(-1).L(1).L(1).L(4).S(1.0f).data());
  // Decoded from byte 5 on, the picture is begin(lines), 46 vertices in the
  // plane x = 1, end, stop.
  TempDir dir;
  const auto d = DecodeBytes(dir, std::vector<unsigned char>(head.begin() + 4, head.end()));
  ASSERT_EQ(d.form, StreamForm::kUnframed);
  ASSERT_EQ(d.records.size(), 49u);
  EXPECT_EQ(d.records[0].op, kOpBegin);
  EXPECT_EQ(d.records[0].longs[0], 1);
  for (std::size_t i = 1; i <= 46; ++i) {
    ASSERT_EQ(d.records[i].op, kOpVertex3f);
    EXPECT_EQ(d.records[i].singles[0], 1.0f);
  }
  EXPECT_EQ(d.records[47].op, kOpEnd);
  EXPECT_EQ(d.records[48].action, RecordAction::kStop);
}

TEST(RecordReader, FirstLongDecidesTheForm) {
  TempDir dir;
  // Another negative value: nothing at all, even with records after it.
  for (Long mark : {-5, std::numeric_limits<Long>::min()}) {
    const auto none = DecodeBytes(dir, Bytes().L(mark).L(1).L(1).L(0).data());
    EXPECT_EQ(none.form, StreamForm::kNone);
    EXPECT_TRUE(none.records.empty());
  }
  // Non-negative: the first Long is already the first op.
  const auto unframed = DecodeBytes(dir, Bytes().L(2).L(0).data());
  EXPECT_EQ(unframed.form, StreamForm::kUnframed);
  EXPECT_EQ(Summary(unframed), (Lines{"1 2 -1 play", "5 0 -1 stop"}));
  // -1 is framed, and the 752 bytes after it are not read, whatever they hold.
  Bytes framed;
  framed.L(-1);
  for (int i = 0; i < 188; ++i) framed.L(-5);
  framed.L(4).L(12).S(1).S(2).S(3).L(0).L(0);
  const auto f = DecodeBytes(dir, framed.data());
  EXPECT_EQ(f.form, StreamForm::kFramed);
  EXPECT_EQ(Summary(f), (Lines{"757 4 12 play", "777 0 0 stop"}));
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
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::min()), nullptr);
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::max()), nullptr);
  TempDir dir;
  auto b = Framed();
  b.L(17).L(0);
  b.L(-1).L(4).L(99);
  b.L(0x40000000).L(0);
  b.L(0).L(4).L(0);  // op 0 with a length is no end of stream
  b.L(2).L(0);
  b.L(0).L(0);
  b.L(2).L(0);  // after the end: never read
  EXPECT_EQ(Summary(DecodeBytes(dir, b.data())),
            (Lines{"757 17 0 skip", "765 -1 4 skip", "777 1073741824 0 skip", "785 0 4 skip",
                   "797 2 0 play", "805 0 0 stop"}));
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
  ASSERT_EQ(Summary(d), (Lines{"1 1 -1 play", "9 15 -1 skip", "13 4 -1 play", "29 16 -1 skip",
                               "33 -1 -1 skip", "37 2 -1 play", "41 0 -1 stop"}));
  EXPECT_EQ(d.records[2].singles, (std::array<Single, 4>{1, 2, 3, 0}));
}

TEST(RecordReader, EndOfFileOrANegativeLengthEndsTheStream) {
  TempDir dir;
  auto summary = [&](const Bytes& b) { return Summary(DecodeBytes(dir, b.data())); };
  // Framed: no end record at all, or a skipped record whose length runs past
  // the end.
  EXPECT_EQ(summary(Framed().L(2).L(0)), Lines{"757 2 0 play"});
  EXPECT_EQ(summary(Framed().L(99).L(1000).L(2).L(0)), Lines{"757 99 1000 skip"});
  // A head cut short; an empty stream, which is unframed.
  EXPECT_EQ(summary(Bytes().L(-1).L(1).L(1)), Lines{});
  EXPECT_EQ(DecodeBytes(dir, {}).form, StreamForm::kUnframed);
  EXPECT_EQ(DecodeBytes(dir, {}).records.size(), 0u);
  // Unframed: cut inside a Double payload.
  EXPECT_EQ(summary(Bytes().L(2).L(13).D(1).D(2).L(0)), Lines{"1 2 -1 play"});
  // -16 would lead back to the op 2 record: a negative length stops instead,
  // even for a known op and for op 0.
  EXPECT_EQ(summary(Framed().L(2).L(0).L(99).L(-16).L(2).L(0)),
            (Lines{"757 2 0 play", "765 99 -16 stop"}));
  EXPECT_EQ(summary(Framed().L(9).L(-4).L(2).L(0)), Lines{"757 9 -4 stop"});
  EXPECT_EQ(summary(Framed().L(0).L(-8).L(2).L(0)), Lines{"757 0 -8 stop"});
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
  const Lines full = Summary(testing::DecodeFile(dir.File("all.bin")));
  std::size_t previous = 0;
  for (std::size_t n = 0; n <= full_bytes.size(); ++n) {
    const auto d = DecodeBytes(dir, {full_bytes.begin(), full_bytes.begin() + n});
    const Lines got = Summary(d);
    ASSERT_LE(got.size(), full.size()) << n;
    ASSERT_GE(got.size(), previous) << n;
    ASSERT_EQ(got, Lines(full.begin(), full.begin() + got.size())) << n;
    if (!got.empty()) {
      const Record& r = d.records.back();
      ASSERT_LE(static_cast<std::size_t>(r.position - 1 + 8 + r.length), n) << n;
    }
    previous = got.size();
  }
  EXPECT_EQ(previous, full.size());
}

}  // namespace
}  // namespace quelo
