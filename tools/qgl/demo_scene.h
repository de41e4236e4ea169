// The bundled demo scene: a small house with a door and windows, a roof, a
// chimney, a tree and a fence, a machine part drawn with back-face culling,
// the scene's own axes (block 0) and a ground grid (block 1), recorded through
// the control as any producer of scene files would.
#pragma once

#include <string>

namespace quelo {

// Writes the demo scene to path (replacing the file). File errors are
// RuntimeErrors.
void WriteDemoScene(const std::string& path);

}  // namespace quelo
