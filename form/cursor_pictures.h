// The six cursor pictures of the mouse modes, as plain RGBA pixels so that
// the toolkit side only wraps them and tests can look at them.
//
// Each picture is 32 x 32 pixels, rows top to bottom, four bytes per pixel
// (red, green, blue, alpha; alpha 0 = transparent). The hot spot is the pixel
// that the mouse position refers to.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace quelo {

enum class CursorKind {
  kPick,      // Pick_Img: no mode chosen, a plain arrow
  kSpot,      // Spot_Img: centre on the clicked point, a cross-hair target
  kDrag,      // Drag_Img: pan, an open hand
  kDragging,  // Dragging_Img: pan while the button is held, a closed hand
  kZoom,      // Zoom_Img: zoom in to a rectangle, a magnifier with a plus
  kCram,      // Cram_Img: zoom out into a rectangle, a magnifier with a minus
};

inline constexpr std::array<CursorKind, 6> kAllCursorKinds = {
    CursorKind::kPick,     CursorKind::kSpot, CursorKind::kDrag,
    CursorKind::kDragging, CursorKind::kZoom, CursorKind::kCram};

struct CursorPicture {
  static constexpr int kSize = 32;
  int hot_x = 0;
  int hot_y = 0;
  std::vector<std::uint8_t> rgba;  // kSize * kSize * 4 bytes
};

// The picture of one cursor; built once, then shared.
const CursorPicture& GetCursorPicture(CursorKind kind);

}  // namespace quelo
