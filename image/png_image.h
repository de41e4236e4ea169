// Pictures as files: 8-bit RGB images read from and written to PNG (libpng),
// and the comparison that the picture tests use against their baselines.
//
// Failures (a missing, unreadable or malformed file, a file that cannot be
// written) throw ImageFileError with libpng's reason; nothing is half-read.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace quelo {

class ImageFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Rows top-down, 3 bytes a pixel (R, G, B).
struct RgbImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgb;

  const std::uint8_t* Pixel(int x, int y) const {
    return &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
  }
};

// From 4-byte RGBA rows (top-down): the alpha is dropped, so a picture drawn
// on a background cleared with alpha 0 is kept opaque.
RgbImage RgbFromRgba(int width, int height, const std::vector<std::uint8_t>& rgba);

// Writes an 8-bit RGB PNG.
void WritePng(const std::string& path, const RgbImage& image);
// Reads any PNG, converted to 8-bit RGB (alpha composited on black).
RgbImage ReadPng(const std::string& path);

struct ImageDifference {
  bool same_size = false;
  long differing_pixels = 0;  // pixels with a channel off by more than the tolerance
  int max_channel_delta = 0;  // over all pixels
};

// Compares two pictures channel by channel. When diff is given and the sizes
// agree, it receives a picture of the differences: differing pixels red, the
// others a faint grey copy of `expected`.
ImageDifference CompareImages(const RgbImage& actual, const RgbImage& expected, int tolerance,
                              RgbImage* diff = nullptr);

}  // namespace quelo
