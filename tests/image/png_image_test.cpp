#include "image/png_image.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/temp_dir.h"

namespace quelo {
namespace {

RgbImage Filled(int w, int h, std::uint8_t v) {
  return {w, h, std::vector<std::uint8_t>(static_cast<std::size_t>(w) * h * 3, v)};
}

TEST(PngImage, WritesAndReadsBackEveryByteAndDropsTheAlphaOfRgba) {
  testing::TempDir dir;
  RgbImage img = Filled(5, 3, 0);
  for (std::size_t i = 0; i < img.rgb.size(); ++i) img.rgb[i] = static_cast<std::uint8_t>(i * 7);
  WritePng(dir.File("a.png"), img);
  const RgbImage back = ReadPng(dir.File("a.png"));
  EXPECT_EQ(std::tie(back.width, back.height, back.rgb), std::tie(img.width, img.height, img.rgb));

  EXPECT_EQ(RgbFromRgba(2, 1, {255, 255, 255, 0, 1, 2, 3, 255}).rgb,
            (std::vector<std::uint8_t>{255, 255, 255, 1, 2, 3}));
  EXPECT_THROW(RgbFromRgba(2, 2, {1, 2, 3, 4}), ImageFileError);
}

TEST(PngImage, BadFilesAreErrorsWithTheirPath) {
  testing::TempDir dir;
  testing::WriteAll(dir.File("junk.png"), {'n', 'o', 't', ' ', 'p', 'n', 'g'});
  try {
    ReadPng(dir.File("junk.png"));
    FAIL() << "junk read as a picture";
  } catch (const ImageFileError& e) {
    EXPECT_NE(std::string(e.what()).find("junk.png"), std::string::npos);
  }
  EXPECT_THROW(ReadPng(dir.File("missing.png")), ImageFileError);
  EXPECT_THROW(WritePng(dir.File("no/dir.png"), Filled(1, 1, 0)), ImageFileError);
  EXPECT_THROW(WritePng(dir.File("empty.png"), RgbImage{}), ImageFileError);
}

TEST(PngImage, ComparisonCountsPixelsBeyondTheToleranceAndPaintsThemRed) {
  const RgbImage expected = Filled(4, 2, 100);
  RgbImage actual = expected;
  actual.rgb[0] = 110;  // pixel 0, within a tolerance of 10
  actual.rgb[5] = 89;   // pixel 1, beyond it
  actual.rgb[23] = 0;   // pixel 7
  RgbImage diff;
  const ImageDifference d = CompareImages(actual, expected, 10, &diff);
  EXPECT_TRUE(d.same_size);
  EXPECT_EQ(d.differing_pixels, 2);
  EXPECT_EQ(d.max_channel_delta, 100);
  std::vector<bool> red;
  for (std::size_t i = 0; i < diff.rgb.size(); i += 3) {
    red.push_back(diff.rgb[i] == 255 && diff.rgb[i + 1] == 0 && diff.rgb[i + 2] == 0);
  }
  EXPECT_EQ(red, (std::vector<bool>{false, true, false, false, false, false, false, true}));
  EXPECT_FALSE(CompareImages(Filled(4, 3, 100), expected, 10).same_size);
}

}  // namespace
}  // namespace quelo
