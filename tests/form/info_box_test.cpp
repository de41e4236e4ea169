// The about box's texts and resource figures, and the cursor pictures.
#include <set>

#include <gtest/gtest.h>

#include "form/cursor_pictures.h"
#include "form/info_box.h"
#include "support/temp_dir.h"

namespace quelo::testing {
namespace {

void WriteText(const std::string& path, const std::string& text) {
  WriteAll(path, std::vector<unsigned char>(text.begin(), text.end()));
}

TEST(InfoBoxFigures, EachClickAppendsTheFigurePreferringMemAvailable) {
  TempDir dir;
  const auto meminfo = dir.File("meminfo");
  WriteText(
      meminfo,
      "MemTotal:       16000000 kB\nMemFree:            1000 kB\nMemAvailable:    7654321 kB\n");
  InfoBox box(meminfo);
  const std::string before = box.Info_Lbl();
  box.Info_Lbl_Click();
  const std::string figures =
      "\nMemory Free: 7,654,321 KB\nSystem Free: No Information Available\n"
      "GDI Free: No Information Available\nUser Free: No Information Available";
  EXPECT_EQ(box.Info_Lbl(), before + figures);
  box.Info_Lbl_Click();
  EXPECT_EQ(box.Info_Lbl(), before + figures + figures);

  WriteText(meminfo, "MemTotal: 2048 kB\nMemFree: 999 kB\n");
  EXPECT_EQ(InfoBox(meminfo).FreeMemoryKB(), 999u);
  // A readable file without a figure is not replaced by the system's.
  WriteText(meminfo, "MemTotal: 2048 kB\nMemFree: lots\n");
  InfoBox unreadable(meminfo);
  unreadable.Info_Lbl_Click();
  EXPECT_NE(unreadable.Info_Lbl().find("\nMemory Free: No Information Available\n"),
            std::string::npos);
}

TEST(CursorPictures, SixDistinctPicturesVisibleOnAnyBackground) {
  std::set<std::vector<std::uint8_t>> seen;
  for (auto kind : kAllCursorKinds) {
    const auto& p = GetCursorPicture(kind);
    ASSERT_EQ(p.rgba.size(), std::size_t{32 * 32 * 4});
    EXPECT_TRUE(p.hot_x >= 0 && p.hot_x < 32 && p.hot_y >= 0 && p.hot_y < 32);
    int black = 0, white = 0;
    for (std::size_t i = 0; i < p.rgba.size(); i += 4) {
      if (p.rgba[i + 3] == 0) continue;
      if (p.rgba[i] == 0 && p.rgba[i + 1] == 0 && p.rgba[i + 2] == 0) ++black;
      if (p.rgba[i] == 255 && p.rgba[i + 1] == 255 && p.rgba[i + 2] == 255) ++white;
    }
    // Black strokes with a white rim, so dark scenes do not swallow them.
    EXPECT_GT(black, 20);
    EXPECT_GT(white, 20);
    seen.insert(p.rgba);
  }
  EXPECT_EQ(seen.size(), kAllCursorKinds.size());
}

}  // namespace
}  // namespace quelo::testing
