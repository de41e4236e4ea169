#include "support/recorded_messages.h"

#include <gtest/gtest.h>

namespace quelo {
namespace {

TEST(Messages, WarningBoxDefaultsItsTitle) {
  ScopedRecordedMessages rec;
  WarningBox("File Empty!");
  WarningBox("x", "Own");
  MsgBox("Error in InitRC");
  ASSERT_EQ(rec.boxes().entries.size(), 3u);
  EXPECT_EQ(rec.boxes().entries[0].title, "Warning:");
  EXPECT_EQ(rec.boxes().entries[0].icon, MessageIcon::kExclamation);
  EXPECT_EQ(rec.boxes().entries[1].title, "Own");
  EXPECT_EQ(rec.boxes().entries[2].title, "");
  EXPECT_EQ(rec.boxes().entries[2].icon, MessageIcon::kNone);
}

TEST(Messages, StderrBoxPrintsOneLine) {
  ::testing::internal::CaptureStderr();
  MsgBox("Error in tessEndPoly");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "message: Error in tessEndPoly\n");
}

}  // namespace
}  // namespace quelo
