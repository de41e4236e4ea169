#include <gtest/gtest.h>

#include <tuple>

#include "support/recorded_messages.h"

namespace quelo {
namespace {

TEST(Messages, WarningBoxDefaultsItsTitleAndTheStderrBoxPrintsOneLine) {
  {
    ScopedRecordedMessages rec;
    WarningBox("File Empty!");
    WarningBox("x", "Own");
    MsgBox("Error in InitRC");
    std::vector<std::tuple<std::string, std::string, MessageIcon>> shown;
    for (const auto& e : rec.boxes().entries) shown.emplace_back(e.text, e.title, e.icon);
    EXPECT_EQ(shown, (decltype(shown){{"File Empty!", "Warning:", MessageIcon::kExclamation},
                                      {"x", "Own", MessageIcon::kExclamation},
                                      {"Error in InitRC", "", MessageIcon::kNone}}));
  }
  ::testing::internal::CaptureStderr();
  MsgBox("Error in tessEndPoly");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "message: Error in tessEndPoly\n");
}

}  // namespace
}  // namespace quelo
