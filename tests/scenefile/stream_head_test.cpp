#include "scenefile/stream_head.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace quelo {
namespace {

using testing::Bytes;

// The "Unknown" picture's (b, c) offsets, typed out column by column from the
// format's table of 46 vertices.
constexpr int kBC[46][2] = {
    {0, 0},  {0, 4},  {0, 0},  {3, 0},  {3, 0},  {3, 4},  {4, 0},  {4, 2},  {4, 1},  {6, 2},
    {6, 0},  {6, 2},  {7, 0},  {7, 4},  {7, 1},  {9, 2},  {7, 1},  {9, 0},  {10, 0}, {10, 2},
    {10, 1}, {12, 2}, {12, 0}, {12, 2}, {13, 0}, {13, 2}, {13, 2}, {15, 2}, {15, 2}, {15, 0},
    {15, 0}, {13, 0}, {16, 0}, {16, 2}, {16, 0}, {17, 1}, {17, 1}, {18, 0}, {18, 0}, {18, 2},
    {19, 0}, {19, 2}, {19, 1}, {21, 2}, {21, 0}, {21, 2},
};

TEST(StreamHead, IsTheFramedMarkAndTheUnknownPictureByteForByte) {
  Bytes want;
  want.L(-1).L(1).L(1);
  for (const auto& bc : kBC) {
    want.L(4).S(1.0f).S(static_cast<float>(1 + bc[0])).S(static_cast<float>(1 + bc[1]));
  }
  want.L(2).L(0);
  ASSERT_EQ(want.size(), 756u);
  const auto& head = StreamHeadBytes();
  EXPECT_EQ(std::vector<unsigned char>(head.begin(), head.end()), want.data());
  // A few bytes pinned literally, so that a wrong float encoding cannot slip by.
  EXPECT_EQ(head[0], 0xFF);
  EXPECT_EQ(head[3], 0xFF);
  // First vertex x = 1.0f = 0x3F800000, little-endian, after -1, 1, 1, 4.
  EXPECT_EQ(head[16], 0x00);
  EXPECT_EQ(head[18], 0x80);
  EXPECT_EQ(head[19], 0x3F);
}

TEST(StreamHead, WriterPutsItAtTheCurrentPosition) {
  testing::TempDir dir;
  const std::string path = dir.File("head.bin");
  {
    auto f = BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
    f->WriteBytes("abc", 3);
    WriteStreamHead(*f);
    EXPECT_EQ(f->Position(), 3 + 756 + 1);
  }
  const auto bytes = testing::ReadAll(path);
  ASSERT_EQ(bytes.size(), 759u);
  EXPECT_TRUE(std::equal(bytes.begin() + 3, bytes.end(), StreamHeadBytes().begin()));
}

TEST(StreamHead, PictureIsAnUnframedStreamOfTwentyThreeLines) {
  testing::TempDir dir;
  const auto& head = StreamHeadBytes();
  // Decoded from byte 5 on, the picture is begin(lines), 46 vertices, end, stop.
  const auto d =
      testing::DecodeBytes(dir, std::vector<unsigned char>(head.begin() + 4, head.end()));
  ASSERT_EQ(d.form, StreamForm::kUnframed);
  ASSERT_EQ(d.records.size(), 49u);
  EXPECT_EQ(d.records[0].op, kOpBegin);
  EXPECT_EQ(d.records[0].longs[0], 1);
  for (std::size_t i = 0; i < 46; ++i) {
    const Record& r = d.records[1 + i];
    ASSERT_EQ(r.op, kOpVertex3f);
    EXPECT_EQ(r.singles[0], 1.0f);
    EXPECT_EQ(r.singles[1], static_cast<float>(1 + kBC[i][0]));
    EXPECT_EQ(r.singles[2], static_cast<float>(1 + kBC[i][1]));
  }
  EXPECT_EQ(d.records[47].op, kOpEnd);
  EXPECT_EQ(d.records[48].action, RecordAction::kStop);
}

}  // namespace
}  // namespace quelo
