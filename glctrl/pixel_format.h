// Pixel formats as the control sees them: the 40-byte PIXELFORMATDESCRIPTOR
// with its flag values, the logical palette, the settings file KIVOhogl.ini,
// and the order in which a surface numbers its framebuffer configurations.
//
// Surfaces describe every configuration they offer as a descriptor, so the
// control's choice rules (control_context.cpp) run unchanged over GLX FBConfigs,
// EGL configs and the made-up tables of the tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/numbers.h"

namespace quelo {

// The pixel-format descriptor, field for field: 40 bytes, natural alignment,
// no padding; flag values as the format numbering documents them.
struct PIXELFORMATDESCRIPTOR {
  std::uint16_t nSize = 0;
  std::uint16_t nVersion = 0;
  std::uint32_t dwFlags = 0;
  std::uint8_t iPixelType = 0;
  std::uint8_t cColorBits = 0;
  std::uint8_t cRedBits = 0;
  std::uint8_t cRedShift = 0;
  std::uint8_t cGreenBits = 0;
  std::uint8_t cGreenShift = 0;
  std::uint8_t cBlueBits = 0;
  std::uint8_t cBlueShift = 0;
  std::uint8_t cAlphaBits = 0;
  std::uint8_t cAlphaShift = 0;
  std::uint8_t cAccumBits = 0;
  std::uint8_t cAccumRedBits = 0;
  std::uint8_t cAccumGreenBits = 0;
  std::uint8_t cAccumBlueBits = 0;
  std::uint8_t cAccumAlphaBits = 0;
  std::uint8_t cDepthBits = 0;
  std::uint8_t cStencilBits = 0;
  std::uint8_t cAuxBuffers = 0;
  std::uint8_t iLayerType = 0;
  std::uint8_t bReserved = 0;
  std::uint32_t dwLayerMask = 0;
  std::uint32_t dwVisibleMask = 0;
  std::uint32_t dwDamageMask = 0;
};
static_assert(sizeof(PIXELFORMATDESCRIPTOR) == 40);
static_assert(offsetof(PIXELFORMATDESCRIPTOR, cDepthBits) == 23);
static_assert(offsetof(PIXELFORMATDESCRIPTOR, dwLayerMask) == 28);

// dwFlags bits.
constexpr std::uint32_t PFD_DOUBLEBUFFER = 0x1;
constexpr std::uint32_t PFD_STEREO = 0x2;
constexpr std::uint32_t PFD_DRAW_TO_WINDOW = 0x4;
constexpr std::uint32_t PFD_DRAW_TO_BITMAP = 0x8;
constexpr std::uint32_t PFD_SUPPORT_GDI = 0x10;
constexpr std::uint32_t PFD_SUPPORT_OPENGL = 0x20;
constexpr std::uint32_t PFD_GENERIC_FORMAT = 0x40;
constexpr std::uint32_t PFD_NEED_PALETTE = 0x80;
constexpr std::uint32_t PFD_NEED_SYSTEM_PALETTE = 0x100;
constexpr std::uint32_t PFD_SWAP_EXCHANGE = 0x200;
constexpr std::uint32_t PFD_SWAP_COPY = 0x400;
constexpr std::uint32_t PFD_SWAP_LAYER_BUFFERS = 0x800;
constexpr std::uint32_t PFD_GENERIC_ACCELERATED = 0x1000;
// iPixelType.
constexpr std::uint8_t PFD_TYPE_RGBA = 0;
constexpr std::uint8_t PFD_TYPE_COLORINDEX = 1;
// iLayerType.
constexpr std::uint8_t PFD_MAIN_PLANE = 0;

struct PALETTEENTRY {
  std::uint8_t peRed = 0;
  std::uint8_t peGreen = 0;
  std::uint8_t peBlue = 0;
  std::uint8_t peFlags = 0;
};

struct LOGPALETTE {
  std::uint16_t palVersion = 0;
  std::uint16_t palNumEntries = 0;
  std::vector<PALETTEENTRY> palPalEntry;
};

// The palette of a need-palette format: version 0x300, 2^cColorBits entries,
// each channel i / 2^shift masked to its bits and scaled to 0..255 with
// signed 16-bit products. Raises 6 (an entry count, maximum or product beyond
// its type: colour bits above 14, channel bits above 8, 8-bit channels) and
// 11 (a channel of 0 bits).
LOGPALETTE BuildPalette(const PIXELFORMATDESCRIPTOR& pfd);

// The two fields of KIVOhogl.ini, both little-endian signed 32-bit. A field
// that the file does not hold completely reads 0; bytes after the eighth are
// ignored.
struct PixelFormatSettings {
  bool file_found = false;
  Long PreferAccelerated = 0;  // -1 asks for an accelerated format
  Long PixelFormatIndex = 0;   // a format index to use as it stands; <= 0 none
};
inline constexpr const char* kSettingsFileName = "KIVOhogl.ini";

// The settings file's path in directory: cut at the first NUL, "/" appended
// unless present, then KIVOhogl.ini.
std::string SettingsFilePath(std::string directory);

// Reads directory/KIVOhogl.ini. No file is not an error (both fields 0); a
// file that exists but cannot be read raises the file error (53, 75, 57).
PixelFormatSettings ReadPixelFormatSettings(const std::string& directory);

// One framebuffer configuration while a surface builds its format list: its
// descriptor plus what the descriptor cannot say, for the ordering.
struct FormatCandidate {
  PIXELFORMATDESCRIPTOR pfd;
  int samples = 0;      // multisample count; 0 for none
  bool slow = false;    // a caveat (slow or non-conformant)
  int visual_rank = 0;  // 0 the screen's own kind of visual, higher worse
  int swap_rank = 0;    // 0 swap keeps the back buffer, 1 undefined, 2 exchange
  bool srgb = false;    // sRGB-capable
  int native = 0;       // the platform's own handle or position, carried along
};

// 8 bits per colour channel, a depth buffer of at least 24 bits, no
// multisampling, no caveat, RGBA: what format 1 and the first double-buffered
// format must be whenever the platform offers one.
bool IsGoodPlainFormat(const FormatCandidate& c);

// Puts the candidates in the program's own order: good plain formats first
// and, within them, double-buffered first; then the rest, closest to plain
// first. Ties keep the platform's order.
void SortFormats(std::vector<FormatCandidate>& candidates);

// The channel shifts of a packed ARGB pixel with the given channel sizes
// (blue lowest), for platforms that do not report masks.
void SetPackedShifts(PIXELFORMATDESCRIPTOR& pfd);

// A filled-in descriptor: size 40, version 1, main plane, the given flags.
PIXELFORMATDESCRIPTOR NewDescriptor(std::uint32_t flags);

// The flag bits as text ("DRAW_TO_WINDOW|SUPPORT_OPENGL|DOUBLEBUFFER").
std::string FlagNames(std::uint32_t flags);

}  // namespace quelo
