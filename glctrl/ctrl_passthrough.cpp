// The pass-through methods: each calls its GL or GLU entry point and records
// nothing, whatever SendToFile and DontSendToGL say. Expanded from the same
// list as the declarations in ogl_passthrough.inc; the recording methods of
// the stream vocabulary are written by hand in ctrl_record.cpp.
#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"

namespace quelo {

#define QUELO_GL_ENTRY(ret, name, params, args, trace) \
  ret OpenGL_Ctrl::o##name params {                    \
    return GL().name args;                             \
  }
#define QUELO_GL_ENTRY_RECORDED(ret, name, params, args, trace)
#include "glctrl/gl_api.list"

}  // namespace quelo
