// The pass-through methods, expanded from the entry-point list: each calls its
// GL or GLU entry point and records nothing. The entry points of the stream
// vocabulary have recording methods instead (StreamRecorder).
#include "glctrl/generated/gl_passthrough.h"

#include "glctrl/gl_dispatch.h"

namespace quelo {

#define QUELO_GL_ENTRY(ret, name, params, args, trace) \
  ret GLPassThrough::o##name params {                  \
    return GL().name args;                             \
  }
#define QUELO_GL_ENTRY_RECORDED(ret, name, params, args, trace)
#include "glctrl/generated/gl_api.list"

}  // namespace quelo
