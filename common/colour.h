// The packed colour 0x00BBGGRR and its split into three channel values.
#pragma once

#include "common/numbers.h"

namespace quelo {

struct ColourSplit {
  Single red;
  Single green;
  Single blue;
};

// red = (c mod 256) / 255, green = ((c div 256) mod 256) / 255,
// blue = ((c div 65536) mod 256) / 255, with signed division and remainder
// (the remainder takes the dividend's sign), so negative colours give
// negative channels rather than being masked.
ColourSplit SplitColour(Long packed);

}  // namespace quelo
