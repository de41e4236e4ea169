#include "scenefile/stream_head.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace quelo {
namespace {

using testing::Bytes;

TEST(StreamHead, IsTheFramedMarkThenAnUnframedPictureOfTwentyThreeLines) {
  const auto& head = StreamHeadBytes();
  // -1 (the framed mark), little-endian; the first vertex's x = 1.0f after
  // -1, 1, 1, 4.
  EXPECT_EQ(head[0], 0xFF);
  EXPECT_EQ(head[3], 0xFF);
  EXPECT_EQ(head[16], 0x00);
  EXPECT_EQ(head[18], 0x80);
  EXPECT_EQ(head[19], 0x3F);
  // Decoded from byte 5 on, the picture is begin(lines), 46 vertices in the
  // plane x = 1, end, stop.
  testing::TempDir dir;
  const auto d =
      testing::DecodeBytes(dir, std::vector<unsigned char>(head.begin() + 4, head.end()));
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

}  // namespace
}  // namespace quelo
