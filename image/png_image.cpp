#include "image/png_image.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace quelo {

namespace {

// libpng's simplified API keeps its state in png_image; free it on every path.
class PngImage {
 public:
  PngImage() {
    std::memset(&image_, 0, sizeof image_);
    image_.version = PNG_IMAGE_VERSION;
  }
  ~PngImage() { png_image_free(&image_); }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;
  png_image* get() { return &image_; }
  std::string Message() const { return image_.message; }

 private:
  png_image image_;
};

// Larger pictures are not ours: refuse them before allocating.
constexpr png_uint_32 kMaxSide = 16384;

}  // namespace

RgbImage RgbFromRgba(int width, int height, const std::vector<std::uint8_t>& rgba) {
  RgbImage out;
  out.width = width;
  out.height = height;
  const std::size_t pixels = static_cast<std::size_t>(width) * height;
  if (rgba.size() < pixels * 4) throw ImageFileError("picture smaller than its size");
  out.rgb.resize(pixels * 3);
  for (std::size_t i = 0; i < pixels; ++i) {
    out.rgb[i * 3] = rgba[i * 4];
    out.rgb[i * 3 + 1] = rgba[i * 4 + 1];
    out.rgb[i * 3 + 2] = rgba[i * 4 + 2];
  }
  return out;
}

void WritePng(const std::string& path, const RgbImage& image) {
  if (image.width <= 0 || image.height <= 0 ||
      image.rgb.size() < static_cast<std::size_t>(image.width) * image.height * 3) {
    throw ImageFileError(path + ": no picture to write");
  }
  PngImage png;
  png.get()->width = static_cast<png_uint_32>(image.width);
  png.get()->height = static_cast<png_uint_32>(image.height);
  png.get()->format = PNG_FORMAT_RGB;
  if (!png_image_write_to_file(png.get(), path.c_str(), 0, image.rgb.data(), 0, nullptr)) {
    throw ImageFileError(path + ": " + png.Message());
  }
}

RgbImage ReadPng(const std::string& path) {
  PngImage png;
  if (!png_image_begin_read_from_file(png.get(), path.c_str())) {
    throw ImageFileError(path + ": " + png.Message());
  }
  if (png.get()->width == 0 || png.get()->height == 0 || png.get()->width > kMaxSide ||
      png.get()->height > kMaxSide) {
    throw ImageFileError(path + ": picture size out of range");
  }
  png.get()->format = PNG_FORMAT_RGB;
  RgbImage out;
  out.width = static_cast<int>(png.get()->width);
  out.height = static_cast<int>(png.get()->height);
  out.rgb.resize(PNG_IMAGE_SIZE(*png.get()));
  png_color black{0, 0, 0};
  if (!png_image_finish_read(png.get(), &black, out.rgb.data(), 0, nullptr)) {
    throw ImageFileError(path + ": " + png.Message());
  }
  return out;
}

ImageDifference CompareImages(const RgbImage& actual, const RgbImage& expected, int tolerance,
                              RgbImage* diff) {
  ImageDifference result;
  result.same_size = actual.width == expected.width && actual.height == expected.height &&
                     actual.rgb.size() == expected.rgb.size();
  if (!result.same_size) return result;
  if (diff != nullptr) {
    diff->width = actual.width;
    diff->height = actual.height;
    diff->rgb.assign(actual.rgb.size(), 0);
  }
  const std::size_t pixels = actual.rgb.size() / 3;
  for (std::size_t i = 0; i < pixels; ++i) {
    int delta = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      delta = std::max(delta, std::abs(int{actual.rgb[i * 3 + c]} - int{expected.rgb[i * 3 + c]}));
    }
    result.max_channel_delta = std::max(result.max_channel_delta, delta);
    const bool differs = delta > tolerance;
    if (differs) ++result.differing_pixels;
    if (diff != nullptr) {
      for (std::size_t c = 0; c < 3; ++c) {
        const auto faint = static_cast<std::uint8_t>(191 + expected.rgb[i * 3 + c] / 4);
        diff->rgb[i * 3 + c] = differs ? (c == 0 ? 255 : 0) : faint;
      }
    }
  }
  return result;
}

}  // namespace quelo
