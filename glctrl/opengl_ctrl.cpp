#include "glctrl/opengl_ctrl.h"

#include "common/binary_file.h"
#include "facet/polygon_buffer.h"

namespace quelo {

// Every control fills the one shared polygon buffer, so a polygon begun by
// one control can be ended by another. The rendering context is released by
// auxShutDown, which the host calls before it drops the control.
OpenGL_Ctrl::OpenGL_Ctrl() : polygons_(*this, *this, SharedPolygonBuffer()) {}
OpenGL_Ctrl::~OpenGL_Ctrl() = default;

void OpenGL_Ctrl::FileOpen(const std::string& FileName) {
  player_.ClearDisabledBlocks();
  recorder_.Open(FileName);
}

Long OpenGL_Ctrl::FileGoto(Long PntrAddr) {
  recorder_.Goto(PntrAddr);
  return 0;
}

Long OpenGL_Ctrl::auxShutDown() {
  context_.ShutDown();
  return 0;
}

Long OpenGL_Ctrl::auxTextOutA(const std::string& text, double X, double Y) {
  text_.TextOut(false, text, X, Y);
  return 0;
}

Long OpenGL_Ctrl::auxTextOutW(const std::string& text, double X, double Y) {
  text_.TextOut(true, text, X, Y);
  return 0;
}

}  // namespace quelo
