#include "image/png_image.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/temp_dir.h"

namespace quelo {
namespace {

RgbImage Filled(int w, int h, std::uint8_t v) {
  RgbImage img;
  img.width = w;
  img.height = h;
  img.rgb.assign(static_cast<std::size_t>(w) * h * 3, v);
  return img;
}

TEST(PngImage, WritesAndReadsBackEveryByte) {
  testing::TempDir dir;
  RgbImage img = Filled(5, 3, 0);
  for (std::size_t i = 0; i < img.rgb.size(); ++i) img.rgb[i] = static_cast<std::uint8_t>(i * 7);
  WritePng(dir.File("a.png"), img);
  const RgbImage back = ReadPng(dir.File("a.png"));
  EXPECT_EQ(back.width, 5);
  EXPECT_EQ(back.height, 3);
  EXPECT_EQ(back.rgb, img.rgb);
}

TEST(PngImage, RgbaDropsTheAlpha) {
  const RgbImage img = RgbFromRgba(2, 1, {255, 255, 255, 0, 1, 2, 3, 255});
  EXPECT_EQ(img.rgb, (std::vector<std::uint8_t>{255, 255, 255, 1, 2, 3}));
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

TEST(PngImage, ComparisonCountsPixelsBeyondTheTolerance) {
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
  const std::uint8_t red[3] = {255, 0, 0};
  EXPECT_TRUE(std::equal(red, red + 3, diff.Pixel(1, 0)));
  EXPECT_TRUE(std::equal(red, red + 3, diff.Pixel(3, 1)));
  EXPECT_FALSE(std::equal(red, red + 3, diff.Pixel(0, 0)));
  EXPECT_FALSE(CompareImages(Filled(4, 3, 100), expected, 10).same_size);
}

}  // namespace
}  // namespace quelo
