#include "glctrl/bitmap_text.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "glctrl/control_context.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/surface.h"

namespace quelo {

namespace {

// Fonts are resolved and opened once per process and kept.
class FontCache {
 public:
  ~FontCache() {
    for (auto& [key, face] : faces_) {
      if (face != nullptr) FT_Done_Face(face);
    }
    if (library_ != nullptr) FT_Done_FreeType(library_);
    if (config_ != nullptr) FcConfigDestroy(config_);
  }

  // The face of font, sized; nullptr when the font cannot be found or read.
  FT_Face Face(const SurfaceFont& font) {
    if (library_ == nullptr && FT_Init_FreeType(&library_) != 0) {
      library_ = nullptr;
      return nullptr;
    }
    std::string file;
    int index = 0;
    if (!font.name.empty() && font.name[0] == '/') {
      file = font.name;
    } else {
      auto [known, fresh] = matches_.try_emplace(font.name);
      if (fresh && !Match(font.name, known->second.first, known->second.second)) {
        known->second.first.clear();
      }
      if (known->second.first.empty()) return nullptr;
      file = known->second.first;
      index = known->second.second;
    }
    const std::string key = file + '\n' + std::to_string(index);
    auto [it, fresh] = faces_.try_emplace(key, nullptr);
    if (fresh && FT_New_Face(library_, file.c_str(), index, &it->second) != 0) {
      it->second = nullptr;
    }
    FT_Face face = it->second;
    if (face == nullptr) return nullptr;
    // Points at 96 dots per inch, in 26.6 fixed point.
    const double points = font.points > 0 && std::isfinite(font.points) ? font.points : 10;
    const auto size = static_cast<FT_F26Dot6>(std::lround(std::min(points, 1000.0) * 64));
    if (FT_Set_Char_Size(face, 0, size, 96, 96) != 0) return nullptr;
    return face;
  }

 private:
  // The file fontconfig picks for a font name. A configuration of our own, not
  // the process-wide one, so that it can be freed again and the toolkit's
  // fonts are left alone.
  bool Match(const std::string& name, std::string& file, int& index) {
    if (config_ == nullptr) config_ = FcInitLoadConfigAndFonts();
    if (config_ == nullptr) return false;
    FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>(name.c_str()));
    if (pattern == nullptr) return false;
    FcConfigSubstitute(config_, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(config_, pattern, &result);
    FcPatternDestroy(pattern);
    if (match == nullptr) return false;
    FcChar8* path = nullptr;
    const bool found = FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch;
    if (found) file = reinterpret_cast<const char*>(path);
    if (FcPatternGetInteger(match, FC_INDEX, 0, &index) != FcResultMatch) index = 0;
    FcPatternDestroy(match);
    return found;
  }

  FcConfig* config_ = nullptr;
  std::map<std::string, std::pair<std::string, int>> matches_;  // name -> file, index
  FT_Library library_ = nullptr;
  std::map<std::string, FT_Face> faces_;
};

FontCache& Fonts() {
  static FontCache cache;
  return cache;
}

// The Unicode character of an ANSI (Windows-1252) code.
FT_ULong AnsiToUnicode(int code) {
  static const unsigned short k80to9F[32] = {
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  if (code >= 0x80 && code <= 0x9F) return k80to9F[code - 0x80];
  return static_cast<FT_ULong>(code);
}

// Makes lists list_base .. list_base + count - 1 hold the glyphs of characters
// first .. first + count - 1 of the surface's font, each a glBitmap that
// advances the raster position. wide: the codes are Unicode, else ANSI.
// False, with no list touched, when there is no surface, no list range or no
// usable font.
bool UseFontBitmaps(DrawingSurface* dc, bool wide, int first, int count, GLuint list_base) {
  if (dc == nullptr || count <= 0 || list_base == 0) return false;
  FT_Face face = Fonts().Face(dc->Font());
  if (face == nullptr) return false;

  const GLDispatch& gl = GL();
  // Bitmap rows are padded to 4 bytes and MSB first: GL's default unpacking,
  // set here whatever the program changed.
  gl.glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  gl.glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_FALSE);
  gl.glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);
  gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  gl.glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  gl.glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
  gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
  std::vector<GLubyte> bits;
  for (int k = 0; k < count; ++k) {
    const int code = first + k;
    const FT_ULong character = wide ? static_cast<FT_ULong>(code) : AnsiToUnicode(code);
    GLsizei width = 0, rows = 0;
    GLfloat xorig = 0, yorig = 0, xmove = 0;
    bits.assign(4, 0);
    if (FT_Load_Char(face, character, FT_LOAD_RENDER | FT_LOAD_MONOCHROME | FT_LOAD_TARGET_MONO) ==
        0) {
      const FT_GlyphSlot glyph = face->glyph;
      const FT_Bitmap& bitmap = glyph->bitmap;
      xmove = static_cast<GLfloat>(glyph->advance.x) / 64.0f;
      if (bitmap.pixel_mode == FT_PIXEL_MODE_MONO && bitmap.width > 0 && bitmap.rows > 0) {
        width = static_cast<GLsizei>(bitmap.width);
        rows = static_cast<GLsizei>(bitmap.rows);
        xorig = static_cast<GLfloat>(-glyph->bitmap_left);
        yorig = static_cast<GLfloat>(rows - glyph->bitmap_top);
        const std::size_t stride = (bitmap.width + 31) / 32 * 4;
        const std::size_t used = (bitmap.width + 7) / 8;
        bits.assign(stride * bitmap.rows, 0);
        // FreeType's rows run top-down, glBitmap's bottom-up.
        for (unsigned r = 0; r < bitmap.rows; ++r) {
          const unsigned char* src = bitmap.buffer + static_cast<std::ptrdiff_t>(r) * bitmap.pitch;
          std::copy(src, src + used, bits.begin() + (bitmap.rows - 1 - r) * stride);
        }
      }
    }
    gl.glNewList(list_base + static_cast<GLuint>(k), GL_COMPILE);
    gl.glBitmap(width, rows, xorig, yorig, xmove, 0, bits.data());
    gl.glEndList();
  }
  gl.glPopClientAttrib();
  return true;
}

// The text as one byte per character, its ANSI code. The text is UTF-8; a
// byte that starts no valid sequence stands for itself. Raises 9 for an empty
// text (an array of no elements) and 6 for a character beyond 255.
std::vector<GLubyte> AnsiBytes(const std::string& text) {
  if (text.empty()) Raise(kErrSubscript);
  std::vector<GLubyte> bytes;
  bytes.reserve(text.size());
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n;) {
    unsigned long code = s[i];
    std::size_t length = 1;
    auto continuation = [&](std::size_t j) { return j < n && (s[j] & 0xC0) == 0x80; };
    if (code >= 0xC2 && code <= 0xDF && continuation(i + 1)) {
      code = ((code & 0x1F) << 6) | (s[i + 1] & 0x3F);
      length = 2;
    } else if (code >= 0xE0 && code <= 0xEF && continuation(i + 1) && continuation(i + 2)) {
      const unsigned long c = ((code & 0x0F) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3F);
      if (c >= 0x800) code = c, length = 3;
    } else if (code >= 0xF0 && code <= 0xF4 && continuation(i + 1) && continuation(i + 2) &&
               continuation(i + 3)) {
      const unsigned long c = ((code & 0x07) << 18) | ((s[i + 1] & 0x3Fu) << 12) |
                              ((s[i + 2] & 0x3Fu) << 6) | (s[i + 3] & 0x3F);
      if (c >= 0x10000 && c <= 0x10FFFF) code = c, length = 4;
    }
    if (code > 255) Raise(kErrOverflow);
    bytes.push_back(static_cast<GLubyte>(code));
    i += length;
  }
  return bytes;
}

// Draws the bytes at the raster position with the lists of base.
void CallTextLists(Long base, const std::string& text, double x, double y, double z) {
  const GLDispatch& gl = GL();
  gl.glListBase(static_cast<GLuint>(base - 32));
  const std::vector<GLubyte> bytes = AnsiBytes(text);
  gl.glRasterPos3f(CheckSingle(x), CheckSingle(y), CheckSingle(z));
  gl.glCallLists(static_cast<GLsizei>(bytes.size()), GL_UNSIGNED_BYTE, bytes.data());
}

}  // namespace

void BitmapText::PrintAt(Long& list_base, const std::string& text, double x, double y, double z) {
  if (list_base == 0) {
    list_base = static_cast<Long>(GL().glGenLists(96));
    if (!UseFontBitmaps(context_.Surface(), false, 32, 96, static_cast<GLuint>(list_base))) {
      return;
    }
  }
  CallTextLists(list_base, text, x, y, z);
}

void BitmapText::TextOut(bool wide, const std::string& text, double x, double y) {
  const GLuint base = GL().glGenLists(96);
  if (UseFontBitmaps(context_.Surface(), wide, 32, 96, base)) {
    CallTextLists(static_cast<Long>(base), text, x, y, 0.0);
  }
}

}  // namespace quelo
