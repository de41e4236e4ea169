// BitmapText: text drawn at the raster position with the glyphs of the
// surface's font, rasterised with FreeType into one glBitmap display list per
// character and drawn by one glCallLists over the text's character codes.
// These calls go to GL directly, never to a stream.
#pragma once

#include <string>

#include "common/numbers.h"

namespace quelo {

class ControlContext;

class BitmapText {
 public:
  explicit BitmapText(const ControlContext& context) : context_(context) {}

  // Draws text with the 96 lists at list_base, made on the first call (0:
  // none yet) and kept even when the glyphs fail, so later calls do not try
  // again.
  void PrintAt(Long& list_base, const std::string& text, double x, double y, double z);
  // Makes 96 new lists for this one text and never frees them. wide: the
  // glyphs are taken as Unicode characters, else as ANSI codes.
  void TextOut(bool wide, const std::string& text, double x, double y);

 private:
  const ControlContext& context_;
};

}  // namespace quelo
