#include "glctrl/pixel_format.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <tuple>

#include "common/binary_file.h"
#include "common/runtime_error.h"

namespace quelo {

namespace {

// A value stored into a byte: beyond 0..255 it is an overflow.
std::uint8_t CheckedByte(double v) {
  if (!(v >= 0 && v <= 255)) Raise(kErrOverflow);
  return static_cast<std::uint8_t>(v);
}

// One channel of entry i: the index shifted down, masked, scaled to 0..255.
std::uint8_t PaletteChannel(Integer i, std::uint8_t shift, std::uint8_t max) {
  const std::uint8_t raw = CheckedByte(std::floor(i / std::pow(2.0, shift)));
  const Integer scaled = IntMul(static_cast<Integer>(raw & max), 255);
  if (max == 0) Raise(kErrDivisionByZero);
  return CheckedByte(scaled / max);
}

}  // namespace

LOGPALETTE BuildPalette(const PIXELFORMATDESCRIPTOR& pfd) {
  LOGPALETTE pal;
  pal.palVersion = 0x300;
  const Integer n = CInt(std::pow(2.0, pfd.cColorBits));
  pal.palNumEntries = static_cast<std::uint16_t>(n);
  const std::uint8_t red_max = CheckedByte(std::pow(2.0, pfd.cRedBits) - 1);
  const std::uint8_t green_max = CheckedByte(std::pow(2.0, pfd.cGreenBits) - 1);
  const std::uint8_t blue_max = CheckedByte(std::pow(2.0, pfd.cBlueBits) - 1);
  pal.palPalEntry.resize(static_cast<std::size_t>(n));
  for (Integer i = 0; i <= n - 1; ++i) {
    PALETTEENTRY& e = pal.palPalEntry[static_cast<std::size_t>(i)];
    e.peRed = PaletteChannel(i, pfd.cRedShift, red_max);
    e.peGreen = PaletteChannel(i, pfd.cGreenShift, green_max);
    e.peBlue = PaletteChannel(i, pfd.cBlueShift, blue_max);
    e.peFlags = 0;
  }
  return pal;
}

std::string SettingsFilePath(std::string directory) {
  const auto nul = directory.find('\0');
  if (nul != std::string::npos) directory.resize(nul);
  if (directory.empty() || directory.back() != '/') directory += '/';
  return directory + kSettingsFileName;
}

PixelFormatSettings ReadPixelFormatSettings(const std::string& directory) {
  PixelFormatSettings s;
  const std::string path = SettingsFilePath(directory);
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return s;
  s.file_found = true;
  auto file = BinaryFile::Open(path, BinaryFile::Access::kRead);
  // A partly present field counts as absent, not as its first bytes.
  const Long length = file->Length();
  if (length >= 4) s.PreferAccelerated = file->ReadLong();
  if (length >= 8) s.PixelFormatIndex = file->ReadLong();
  return s;
}

bool IsGoodPlainFormat(const FormatCandidate& c) {
  const auto& p = c.pfd;
  return p.iPixelType == PFD_TYPE_RGBA && p.cRedBits == 8 && p.cGreenBits == 8 &&
         p.cBlueBits == 8 && p.cDepthBits >= 24 && c.samples == 0 && !c.slow;
}

void SortFormats(std::vector<FormatCandidate>& candidates) {
  auto key = [](const FormatCandidate& c) {
    const auto& p = c.pfd;
    const int colour_distance =
        std::abs(p.cRedBits - 8) + std::abs(p.cGreenBits - 8) + std::abs(p.cBlueBits - 8);
    // 24 bits first, then deeper, then shallower ones down to none.
    const int depth_rank = p.cDepthBits >= 24 ? p.cDepthBits - 24 : 1000 - p.cDepthBits;
    return std::make_tuple(!IsGoodPlainFormat(c), !(p.dwFlags & PFD_DOUBLEBUFFER), c.slow,
                           c.samples, p.iPixelType != PFD_TYPE_RGBA, colour_distance, depth_rank,
                           c.visual_rank, c.swap_rank, p.cAccumBits, p.cAuxBuffers,
                           -int{p.cStencilBits}, p.cAlphaBits, c.srgb);
  };
  std::stable_sort(
      candidates.begin(), candidates.end(),
      [&](const FormatCandidate& a, const FormatCandidate& b) { return key(a) < key(b); });
}

void SetPackedShifts(PIXELFORMATDESCRIPTOR& pfd) {
  pfd.cBlueShift = 0;
  pfd.cGreenShift = pfd.cBlueBits;
  pfd.cRedShift = static_cast<std::uint8_t>(pfd.cBlueBits + pfd.cGreenBits);
  pfd.cAlphaShift =
      pfd.cAlphaBits ? static_cast<std::uint8_t>(pfd.cRedShift + pfd.cRedBits) : std::uint8_t{0};
}

PIXELFORMATDESCRIPTOR NewDescriptor(std::uint32_t flags) {
  PIXELFORMATDESCRIPTOR pfd;
  pfd.nSize = sizeof(PIXELFORMATDESCRIPTOR);
  pfd.nVersion = 1;
  pfd.dwFlags = flags;
  pfd.iLayerType = PFD_MAIN_PLANE;
  return pfd;
}

std::string FlagNames(std::uint32_t flags) {
  static const std::pair<std::uint32_t, const char*> kNames[] = {
      {PFD_DRAW_TO_WINDOW, "DRAW_TO_WINDOW"},
      {PFD_DRAW_TO_BITMAP, "DRAW_TO_BITMAP"},
      {PFD_SUPPORT_GDI, "SUPPORT_GDI"},
      {PFD_SUPPORT_OPENGL, "SUPPORT_OPENGL"},
      {PFD_DOUBLEBUFFER, "DOUBLEBUFFER"},
      {PFD_STEREO, "STEREO"},
      {PFD_GENERIC_FORMAT, "GENERIC_FORMAT"},
      {PFD_GENERIC_ACCELERATED, "GENERIC_ACCELERATED"},
      {PFD_NEED_PALETTE, "NEED_PALETTE"},
      {PFD_NEED_SYSTEM_PALETTE, "NEED_SYSTEM_PALETTE"},
      {PFD_SWAP_EXCHANGE, "SWAP_EXCHANGE"},
      {PFD_SWAP_COPY, "SWAP_COPY"},
      {PFD_SWAP_LAYER_BUFFERS, "SWAP_LAYER_BUFFERS"},
  };
  std::string text;
  std::uint32_t rest = flags;
  for (const auto& [bit, name] : kNames) {
    if (flags & bit) {
      if (!text.empty()) text += '|';
      text += name;
      rest &= ~bit;
    }
  }
  if (rest != 0) {
    if (!text.empty()) text += '|';
    text += std::to_string(rest);
  }
  return text.empty() ? "0" : text;
}

}  // namespace quelo
