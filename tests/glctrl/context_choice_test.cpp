// The control's context members on made-up format tables: the choice of the
// format with and without KIVOhogl.ini, the palette and the context lifecycle.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "glctrl/opengl_ctrl.h"
#include "glctrl/pixel_format.h"
#include "support/bytes.h"
#include "support/fake_surface.h"
#include "support/recorded_messages.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::TempDir;
using testing::WriteAll;

constexpr std::uint32_t kWin = FakeSurface::kWindowGL;  // window, OpenGL, double
constexpr std::uint32_t kGeneric = PFD_GENERIC_FORMAT;

PIXELFORMATDESCRIPTOR F(std::uint32_t flags, int colour = 24, int depth = 24) {
  return FakeSurface::Format(flags, colour, depth);
}
// Plain generic, generic accelerated, hardware (no generic bit), single-buffered,
// without a window, for bitmaps only.
const PIXELFORMATDESCRIPTOR kPlain = F(kWin | kGeneric),
                            kAccel = F(kWin | kGeneric | PFD_GENERIC_ACCELERATED), kIcd = F(kWin),
                            kSingle = F((kWin & ~PFD_DOUBLEBUFFER) | kGeneric),
                            kNoWindow = F((kWin & ~PFD_DRAW_TO_WINDOW) | kGeneric),
                            kBitmap = F(PFD_DRAW_TO_BITMAP | kGeneric);

bool SameDescriptor(const PIXELFORMATDESCRIPTOR& a, const PIXELFORMATDESCRIPTOR& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

class ChoiceTest : public ::testing::Test {
 protected:
  ChoiceTest() { ctrl.SettingsDirectory = dir.path().string(); }
  void Settings(const std::vector<unsigned char>& bytes) {
    WriteAll(dir.File("KIVOhogl.ini"), bytes);
  }

  TempDir dir;
  OpenGL_Ctrl ctrl;
  std::vector<PIXELFORMATDESCRIPTOR> mixed = {kSingle, kIcd,      kPlain, kAccel,
                                              kPlain,  kNoWindow, kPlain};
};

// The choice rules, each a row: the settings file (none when empty), the
// formats, and the index chosen.
TEST_F(ChoiceTest, ChoiceRules) {
  auto file = [](Long prefer, Long index) { return testing::Bytes().L(prefer).L(index).data(); };
  auto cut = [](std::vector<unsigned char> bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
  };
  struct Row {
    const char* rule;
    std::vector<unsigned char> settings;
    std::vector<PIXELFORMATDESCRIPTOR> formats;
    Long chosen;
  };
  const Row rows[] = {
      {"no file: first plain generic, even when hardware exists", {}, mixed, 3},
      {"prefer: an installable client driver", file(-1, 0), mixed, 2},
      {"prefer: generic accelerated", file(-1, 0), {kPlain, kAccel, kIcd}, 2},
      {"prefer, nothing accelerated: first plain", file(-1, 0), {kSingle, kPlain, kPlain}, 2},
      {"prefer, no window format: one", file(-1, 0), {kNoWindow, kBitmap}, 1},
      {"a fallback must lie below the count", file(-1, 0), {kSingle, kBitmap, kPlain}, 1},
      {"only -1 means prefer: 1", file(1, 0), mixed, 3},
      {"only -1 means prefer: -2", file(-2, 0), mixed, 3},
      {"index below the count, even without a window", file(0, 6), mixed, 6},
      {"index below the count, preference not asked", file(-1, 1), mixed, 1},
      {"index equal to the count is ignored", file(0, 7), mixed, 3},
      {"index beyond the count is ignored", file(0, 70), mixed, 3},
      {"ignored index: the fallback, if below count", file(-1, 3), {kSingle, kPlain, kSingle}, 1},
      {"negative index: the walk finds a plain generic first", file(0, -3), mixed, 3},
      {"negative index: nothing plain, the fallback as it is", file(0, -3), {kIcd, kIcd}, -3},
      {"three bytes count as none", cut(file(-1, 6), 3), mixed, 3},
      {"seven bytes: the index is not read from part of it", cut(file(-1, 6), 7), mixed, 2},
      {"longer files: the first two Longs", testing::Bytes().L(0).L(6).L(5).L(-1).data(), mixed, 6},
      {"no formats give one", {}, {}, 1},
      {"no formats give one, also with an index", file(-1, 1), {}, 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.rule);
    std::filesystem::remove(dir.File("KIVOhogl.ini"));
    if (!row.settings.empty()) Settings(row.settings);
    FakeSurface surface(row.formats);
    EXPECT_EQ(ctrl.prv_ChoosePixelFormat(surface), row.chosen);
  }
}

// The chosen index is set with the descriptor the choice read last; a format
// that needs a palette gets one, 3-3-2 here.
TEST_F(ChoiceTest, SetDCPixelFormatSetsTheChosenIndexAndItsPalette) {
  std::vector<PIXELFORMATDESCRIPTOR> table = mixed;
  table[2] = F(kWin | kGeneric | PFD_NEED_PALETTE, 8, 16);
  FakeSurface walked(table), pinned(table);
  ctrl.ExtHDC(&walked);
  ScopedRecordedMessages messages;
  ctrl.SetDCPixelFormat();
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(walked.log, (std::vector<std::string>{"SetPixelFormat(3)", "CreatePalette(256)",
                                                  "SelectPalette(7, false)", "RealizePalette()"}));
  ASSERT_EQ(walked.set_descriptors.size(), 1u);
  EXPECT_TRUE(SameDescriptor(walked.set_descriptors[0], table[2]));
  const LOGPALETTE& pal = walked.palettes.at(0);
  EXPECT_EQ(pal.palVersion, 0x300);
  ASSERT_EQ(pal.palPalEntry.size(), 256u);
  auto rgb = [&](int i) {
    const PALETTEENTRY& e = pal.palPalEntry[static_cast<std::size_t>(i)];
    return std::vector<int>{e.peRed, e.peGreen, e.peBlue, e.peFlags};
  };
  EXPECT_EQ(rgb(255), (std::vector<int>{255, 255, 255, 0}));
  EXPECT_EQ(rgb(0x92), (std::vector<int>{72, 72, 170, 0}));  // red and green 2 of 7, blue 2 of 3

  // A pinned index stops the choice early, after reading format 1.
  Settings(testing::Bytes().L(0).L(5).data());
  ctrl.ExtHDC(&pinned);
  ctrl.SetDCPixelFormat();
  EXPECT_EQ(pinned.log, std::vector<std::string>{"SetPixelFormat(5)"});
  EXPECT_EQ(pinned.GetPixelFormat(), 5);
  EXPECT_TRUE(SameDescriptor(pinned.set_descriptors.at(0), table[0]));
}

TEST_F(ChoiceTest, ContextIsMadeOnceAndFollowsTheSurface) {
  FakeSurface first(mixed), second(mixed);
  ctrl.ExtHDC(&first);
  ScopedRecordedMessages messages;
  EXPECT_TRUE(ctrl.InitRC());
  EXPECT_TRUE(ctrl.InitRC());
  ctrl.auxMakeCurrent();  // already current: nothing
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(first.log,
            (std::vector<std::string>{"SetPixelFormat(3)", "CreateContext()", "MakeCurrent(1)",
                                      "SetPixelFormat(3)", "MakeCurrent(1)"}));
  EXPECT_EQ(CurrentSurface(), &first);

  first.log.clear();
  ctrl.auxMakeNoneCurrent();
  EXPECT_EQ(CurrentSurface(), nullptr);
  ctrl.auxMakeCurrent();
  EXPECT_EQ(first.log,
            (std::vector<std::string>{"ReleaseCurrent()", "SetPixelFormat(3)", "MakeCurrent(1)"}));
  EXPECT_EQ(CurrentSurface(), &first);

  // A new device context: its format is set, and the same context goes there.
  ctrl.ExtHDC(&second);
  ctrl.auxMakeCurrent();
  EXPECT_EQ(second.log, (std::vector<std::string>{"SetPixelFormat(3)", "MakeCurrent(1)"}));
  EXPECT_EQ(CurrentSurface(), &second);
  EXPECT_EQ(first.current(), nullptr);
  EXPECT_EQ(first.contexts_made + second.contexts_made, 1);

  EXPECT_EQ(ctrl.auxShutDown(), 0);
  EXPECT_EQ(ctrl.ExtHDC(), nullptr);
  EXPECT_EQ(CurrentSurface(), nullptr);
  EXPECT_EQ(first.contexts_alive(), 0);
}

TEST_F(ChoiceTest, FailuresShowTheirMessageAndKeepNothing) {
  ScopedRecordedMessages messages;
  EXPECT_FALSE(ctrl.InitRC());  // no surface
  EXPECT_EQ(messages.Texts(),
            (std::vector<std::string>{"Error in SetDCPixelFormat", "Cannot Create Context"}));
  messages.boxes().entries.clear();
  FakeSurface surface(mixed);
  surface.fail_create_context = true;
  ctrl.ExtHDC(&surface);
  EXPECT_FALSE(ctrl.InitRC());
  EXPECT_EQ(messages.Texts(), std::vector<std::string>{"Cannot Create Context"});
  EXPECT_EQ(messages.boxes().entries.at(0).title, "");
  surface.fail_create_context = false;
  EXPECT_TRUE(ctrl.InitRC());  // no context was kept, so it is tried again
  EXPECT_EQ(surface.contexts_made, 1);
  ctrl.auxShutDown();

  messages.boxes().entries.clear();
  std::filesystem::create_directory(dir.File("KIVOhogl.ini"));  // unreadable
  FakeSurface unset(mixed);
  ctrl.ExtHDC(&unset);
  ctrl.SetDCPixelFormat();
  EXPECT_EQ(messages.Texts(), std::vector<std::string>{"Error in SetDCPixelFormat"});
  EXPECT_EQ(unset.GetPixelFormat(), 0);
}

FormatCandidate Candidate(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t depth,
                          bool doubled, int samples, bool slow, int native) {
  FormatCandidate c;
  c.pfd =
      NewDescriptor(PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | (doubled ? PFD_DOUBLEBUFFER : 0u));
  c.pfd.cRedBits = r, c.pfd.cGreenBits = g, c.pfd.cBlueBits = b, c.pfd.cDepthBits = depth;
  c.samples = samples, c.slow = slow, c.native = native;
  return c;
}

TEST(FormatOrder, GoodPlainDoubleBufferedFormatsComeFirst) {
  // A driver's own order: 10-bit, single-buffered and depth-0 configurations
  // before the plain ones.
  std::vector<FormatCandidate> list = {
      Candidate(10, 10, 10, 0, false, 0, false, 1), Candidate(10, 10, 10, 24, true, 0, false, 2),
      Candidate(8, 8, 8, 0, true, 0, false, 3),     Candidate(8, 8, 8, 24, false, 0, false, 4),
      Candidate(8, 8, 8, 24, true, 4, false, 5),    Candidate(8, 8, 8, 24, true, 0, true, 6),
      Candidate(5, 6, 5, 16, true, 0, false, 7),    Candidate(8, 8, 8, 16, true, 0, false, 8),
      Candidate(8, 8, 8, 32, true, 0, false, 9),    Candidate(8, 8, 8, 24, true, 0, false, 10)};
  SortFormats(list);
  std::vector<int> order;
  for (const auto& c : list) order.push_back(c.native);
  EXPECT_EQ(order, (std::vector<int>{10, 9, 4, 8, 3, 2, 7, 5, 6, 1}));
  EXPECT_TRUE(IsGoodPlainFormat(list[0]));
  EXPECT_TRUE(IsGoodPlainFormat(list[2]));
  EXPECT_FALSE(IsGoodPlainFormat(list[3]));
}

}  // namespace
}  // namespace quelo
