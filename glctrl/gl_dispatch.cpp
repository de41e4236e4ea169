#include "glctrl/gl_dispatch.h"

namespace quelo {
namespace {

// The real entry points are linked (libOpenGL and libGLU, no X libraries), so
// the table is complete before any context exists; GL calls without a current
// context do nothing.
GLDispatch MakeRealTable() {
  GLDispatch d;
#define QUELO_GL_ENTRY(ret, name, params, args, trace) d.name = &::name;
#include "glctrl/generated/gl_api.list"
  return d;
}

const GLDispatch* g_current = nullptr;

}  // namespace

const GLDispatch& RealGL() {
  static const GLDispatch kReal = MakeRealTable();
  return kReal;
}

const GLDispatch& GL() {
  return g_current != nullptr ? *g_current : RealGL();
}

const GLDispatch* SetGLDispatch(const GLDispatch* table) {
  const GLDispatch* previous = g_current != nullptr ? g_current : &RealGL();
  g_current = table;
  return previous;
}

}  // namespace quelo
