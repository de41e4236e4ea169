#include "common/colour.h"

namespace quelo {

ColourSplit SplitColour(Long c) {
  // The division is done in double precision and then stored as Single.
  return ColourSplit{static_cast<Single>((c % 256) / 255.0),
                     static_cast<Single>(((c / 256) % 256) / 255.0),
                     static_cast<Single>(((c / 65536) % 256) / 255.0)};
}

}  // namespace quelo
