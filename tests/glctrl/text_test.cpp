// Bitmap text through the tracing table: which lists are made, when, and what
// is called to draw a string.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"
#include "support/error_of.h"
#include "support/fake_surface.h"

namespace quelo {
namespace {

using testing::ErrorOf;

long CountPrefix(const std::vector<std::string>& lines, const std::string& prefix) {
  return std::count_if(lines.begin(), lines.end(),
                       [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
}

class TextTest : public ::testing::Test {
 protected:
  TextTest() {
    ctrl.ExtHDC(&surface);
    GL().glGenLists(100);  // so that list names and offsets are told apart
  }
  ScopedTracingGL trace;
  FakeSurface surface;
  OpenGL_Ctrl ctrl;
};

TEST_F(TextTest, FntPrintAtMakesItsListsOnceAndCallsTheCharacterCodes) {
  ctrl.fntPrintAt("HALLO", 0, 0, 0);
  EXPECT_EQ(ctrl.FontListBase, 101);
  ctrl.fntPrintAt("A", 1, 2, 3);
  const auto lines = trace.Lines();
  EXPECT_EQ(CountPrefix(lines, "glGenLists("), 2);  // the fixture's and the font's
  EXPECT_EQ(CountPrefix(lines, "glNewList("), 96);
  EXPECT_EQ(CountPrefix(lines, "glBitmap("), 96);
  // List base 101 - 32 = 69; "A" (65) calls list 134 = FontListBase + 33.
  const std::vector<std::string> tail(lines.end() - 3, lines.end());
  EXPECT_EQ(tail, (std::vector<std::string>{"glListBase(69)", "glRasterPos3f(1, 2, 3)",
                                            "glCallLists(1, GL_UNSIGNED_BYTE, [65])"}));
  EXPECT_EQ(CountPrefix(lines, "glCallLists(5, GL_UNSIGNED_BYTE, [72, 65, 76, 76, 79])"), 1);
  EXPECT_EQ(CountPrefix(lines, "glNewList(196, "), 1);  // the last of the 96
  EXPECT_EQ(CountPrefix(lines, "glNewList(197, "), 0);
}

TEST_F(TextTest, EveryTextOutCallMakes96NewListsAndDrawsAtZ0) {
  ctrl.auxTextOutA("ab", 1.5, 2);
  ctrl.auxTextOutA("ab", 1.5, 2);
  EXPECT_EQ(ctrl.auxTextOutW("c", -1, 4), 0);
  const auto lines = trace.Lines();
  EXPECT_EQ(CountPrefix(lines, "glGenLists(96)"), 3);
  std::set<std::string> names;
  for (const auto& l : lines) {
    if (l.rfind("glNewList(", 0) == 0) names.insert(l);
  }
  EXPECT_EQ(names.size(), 3u * 96u);
  EXPECT_EQ(CountPrefix(lines, "glRasterPos3f(1.5, 2, 0)"), 2);
  EXPECT_EQ(CountPrefix(lines, "glRasterPos3f(-1, 4, 0)"), 1);
  EXPECT_EQ(CountPrefix(lines, "glListBase(69)"), 1);   // 101 - 32
  EXPECT_EQ(CountPrefix(lines, "glListBase(165)"), 1);  // 197 - 32
  EXPECT_EQ(CountPrefix(lines, "glListBase(261)"), 1);  // 293 - 32
  EXPECT_EQ(ctrl.FontListBase, 0);  // the text-out calls leave fntPrintAt's lists alone
}

TEST_F(TextTest, CharactersAreSentAsSingleByteCodes) {
  ctrl.fntPrintAt("\xC3\xA9\x01 ~", 0, 0, 0);  // e-acute (UTF-8), a control code, " ~"
  EXPECT_EQ(trace.Lines().back(), "glCallLists(4, GL_UNSIGNED_BYTE, [233, 1, 32, 126])");
  ctrl.fntPrintAt("\xE9", 0, 0, 0);  // a lone Latin-1 byte stands for itself
  EXPECT_EQ(trace.Lines().back(), "glCallLists(1, GL_UNSIGNED_BYTE, [233])");
  // The euro sign has no code below 256: nothing more is drawn.
  EXPECT_EQ(ErrorOf([&] { ctrl.fntPrintAt("a\xE2\x82\xAC", 0, 0, 0); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([&] { ctrl.auxTextOutW("\xE2\x82\xAC", 0, 0); }), kErrOverflow);
  EXPECT_EQ(CountPrefix(trace.Lines(), "glCallLists("), 2);
}

TEST_F(TextTest, FontThatFailsLeavesFontListBaseSetAndIsNotRetried) {
  surface.SetFont({"/nonexistent/quelo-no-font.ttf", 10});
  ctrl.fntPrintAt("HALLO", 0, 0, 0);
  EXPECT_EQ(ctrl.FontListBase, 101);
  auto lines = trace.Lines();
  EXPECT_EQ(CountPrefix(lines, "glNewList("), 0);
  EXPECT_EQ(CountPrefix(lines, "glCallLists("), 0);
  // Later calls draw with whatever the lists hold.
  ctrl.fntPrintAt("A", 0, 0, 0);
  lines = trace.Lines();
  EXPECT_EQ(CountPrefix(lines, "glGenLists("), 2);
  EXPECT_EQ(lines.back(), "glCallLists(1, GL_UNSIGNED_BYTE, [65])");
  // The text-out calls draw nothing, and an empty text is then no error.
  const auto before = lines.size();
  EXPECT_EQ(ctrl.auxTextOutA("", 0, 0), 0);
  EXPECT_EQ(ctrl.auxTextOutW("x", 0, 0), 0);
  lines = trace.Lines();
  EXPECT_EQ(std::vector<std::string>(lines.begin() + static_cast<long>(before), lines.end()),
            (std::vector<std::string>{"glGenLists(96)", "glGenLists(96)"}));
}

}  // namespace
}  // namespace quelo
