#include "scenefile/records.h"

#include <gtest/gtest.h>

#include <limits>

namespace quelo {
namespace {

TEST(RecordTable, CodesOutsideZeroToSixteenAreUnknown) {
  EXPECT_EQ(FindOp(17), nullptr);
  EXPECT_EQ(FindOp(-1), nullptr);
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::min()), nullptr);
  EXPECT_EQ(FindOp(std::numeric_limits<Long>::max()), nullptr);
  EXPECT_NE(FindOp(16), nullptr);
}

}  // namespace
}  // namespace quelo
