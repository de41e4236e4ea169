#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "glctrl/gl_dispatch.h"

namespace quelo {
namespace {

using Lines = std::vector<std::string>;

// Every argument kind, each call followed in the trace by the line it must give.
TEST(TraceFormat, ArgumentsByKindNameAndCount) {
  const GLfloat colour[4] = {1, 0.5f, 0, 1}, shininess = 32;
  GLfloat m[16] = {};
  for (int i = 0; i < 16; ++i) m[i] = static_cast<GLfloat>(i);
  const GLubyte pairs[4] = {1, 2, 0, 255};
  ScopedTracingGL trace;
  const GLDispatch& gl = GL();
  gl.glColor4ub(255, 0, 72, 1);       // numbers, not characters
  gl.glColor3f(0.1f, 1e-45f, -0.0f);  // shortest texts that read back
  gl.glVertex3d(0.1, 1e300, 1.0 / 3);
  gl.glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, 7);
  gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);  // bit 1: GL_CURRENT_BIT elsewhere
  gl.glClear(GL_COLOR_BUFFER_BIT | 0x40000000u);     // a bit without a name: one number
  gl.glBegin(GL_POINTS);                             // 0 and 1 are several names
  gl.glHint(0, 1);
  gl.glEnable(0x12345);
  gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  gl.glTexImage2D(GL_TEXTURE_2D, 0, 3, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
  // Arrays as long as the function, the pname or the count and type say.
  gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, colour);
  gl.glMaterialfv(GL_BACK, GL_SHININESS, &shininess);  // reading four would overrun it
  gl.glLoadMatrixf(m);
  gl.glVertex3fv(nullptr);
  gl.glCallLists(2, GL_2_BYTES, pairs);  // high byte first
  EXPECT_EQ(trace.Lines(),
            (Lines{"glColor4ub(255, 0, 72, 1)", "glColor3f(0.1, 1e-45, -0)",
                   "glVertex3d(0.1, 1e+300, 0.3333333333333333)",
                   "glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, 7)",
                   "glClear(GL_DEPTH_BUFFER_BIT|GL_COLOR_BUFFER_BIT)",
                   "glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT)", "glClear(1073758208)",
                   "glBegin(GL_POINTS)", "glHint(0, 1)", "glEnable(74565)",
                   "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                   "glTexImage2D(GL_TEXTURE_2D, 0, 3, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, NULL)",
                   "glMaterialfv(GL_FRONT, GL_DIFFUSE, [1, 0.5, 0, 1])",
                   "glMaterialfv(GL_BACK, GL_SHININESS, [32])",
                   "glLoadMatrixf([0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15])",
                   "glVertex3fv(NULL)", "glCallLists(2, GL_2_BYTES, [258, 255])"}));
}

// Checks both tables' entries of one entry point and calls the tracing one
// with every argument value-initialised (numbers 0, pointers NULL).
template <class R, class... A>
void CheckEntry(const char* name, R (*real)(A...), R (*tracing)(A...)) {
  EXPECT_NE(real, nullptr) << name;
  ASSERT_NE(tracing, nullptr) << name;
  EXPECT_NE(reinterpret_cast<void*>(tracing), reinterpret_cast<void*>(real)) << name;
  tracing(A{}...);
}

TEST(TraceTables, EveryEntryPointIsFilledAndTracedUnderItsName) {
  const GLDispatch& real = RealGL();
  std::vector<std::string> names;
  ScopedTracingGL trace;
  const GLDispatch& tracing = GL();
#define QUELO_GL_ENTRY(ret, name, params, args, trace) \
  CheckEntry(#name, real.name, tracing.name);          \
  names.push_back(#name);
#include "glctrl/generated/gl_api.list"

  // GL 1.1 has 336 entry points; the program uses 12 GLU functions.
  EXPECT_EQ(names.size(), 336u + 12u);
  Lines lines = trace.Lines();
  ASSERT_EQ(lines.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(lines[i].rfind(names[i] + "(", 0), 0u) << lines[i];
    EXPECT_EQ(lines[i].back(), ')') << lines[i];
  }
}

TEST(TraceTables, ScopesNestRestoreTheRealTableAndCountListNamesAfresh) {
  EXPECT_EQ(&GL(), &RealGL());
  std::ostringstream out;
  {
    ScopedTracingGL outer(&out);
    EXPECT_EQ(GL().glGenLists(3), 1u);
    EXPECT_EQ(GL().glGenLists(0), 0u);
    EXPECT_EQ(GL().glGenLists(2), 4u);  // the range of 3 took 1, 2, 3
    {
      ScopedTracingGL inner;
      EXPECT_EQ(GL().glGenLists(1), 1u);
      EXPECT_EQ(inner.Lines(), (Lines{"glGenLists(1)"}));
    }
    GL().glFinish();
    EXPECT_EQ(outer.Lines(),
              (Lines{"glGenLists(3)", "glGenLists(0)", "glGenLists(2)", "glFinish()"}));
  }
  EXPECT_EQ(out.str(), "glGenLists(3)\nglGenLists(0)\nglGenLists(2)\nglFinish()\n");
  EXPECT_EQ(&GL(), &RealGL());
}

}  // namespace
}  // namespace quelo
