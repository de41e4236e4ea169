#include "glctrl/opengl_ctrl.h"

namespace quelo {

// The members start as declared; the rendering context is released by
// auxShutDown, which the host calls before it drops the control.
OpenGL_Ctrl::OpenGL_Ctrl() = default;
OpenGL_Ctrl::~OpenGL_Ctrl() = default;

}  // namespace quelo
