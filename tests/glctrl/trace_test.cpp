#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "glctrl/gl_dispatch.h"
#include "glctrl/opengl_ctrl.h"

namespace quelo {
namespace {

using Lines = std::vector<std::string>;

// The single line that f produces under a fresh tracing table.
template <class F>
std::string TraceOne(F&& f) {
  ScopedTracingGL trace;
  f(GL());
  Lines lines = trace.Lines();
  return lines.size() == 1 ? lines[0] : "<" + std::to_string(lines.size()) + " lines>";
}

TEST(TraceFormat, ScalarsAndMasksByKind) {
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glVertex3f(1, 2.5f, -3); }), "glVertex3f(1, 2.5, -3)");
  // Integers of every width in decimal, unsigned bytes not as characters.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glColor4ub(255, 0, 72, 1); }), "glColor4ub(255, 0, 72, 1)");
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glRecti(-7, 0, 2147483647, -2147483647 - 1); }),
            "glRecti(-7, 0, 2147483647, -2147483648)");
  // Shortest texts that read back: no float noise, doubles in full.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glColor3f(0.1f, 1e-45f, -0.0f); }),
            "glColor3f(0.1, 1e-45, -0)");
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glVertex3d(0.1, 1e300, 1.0 / 3); }),
            "glVertex3d(0.1, 1e+300, 0.3333333333333333)");
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, 7); }),
            "glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, 7)");
  // Bit masks as names.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT); }),
            "glClear(GL_DEPTH_BUFFER_BIT|GL_COLOR_BUFFER_BIT)");
  // Bit 1 is GL_CURRENT_BIT for server attributes, a client bit here.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT); }),
            "glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT)");
  // A mask with a bit that has no name stays one number.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glClear(GL_COLOR_BUFFER_BIT | 0x40000000u); }),
            "glClear(1073758208)");
}

TEST(TraceFormat, EnumsByNameInContext) {
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glPolygonMode(GL_FRONT_AND_BACK, GL_LINE); }),
            "glPolygonMode(GL_FRONT_AND_BACK, GL_LINE)");
  // 0 and 1 are several names: the parameter decides.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glBegin(GL_POINTS); }), "glBegin(GL_POINTS)");
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glDrawArrays(GL_LINES, 0, 2); }),
            "glDrawArrays(GL_LINES, 0, 2)");
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glHint(0, 1); }), "glHint(0, 1)");
  // Unknown values in decimal.
  EXPECT_EQ(TraceOne([](auto& gl) { gl.glEnable(0x12345); }), "glEnable(74565)");
  // Parameter values that are names for some pnames only.
  EXPECT_EQ(TraceOne([](auto& gl) {
              gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
            }),
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)");
  EXPECT_EQ(TraceOne([](auto& gl) {
              gl.glTexImage2D(GL_TEXTURE_2D, 0, 3, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
            }),
            "glTexImage2D(GL_TEXTURE_2D, 0, 3, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, NULL)");
}

TEST(TraceFormat, ArraysSizedByFunctionPnameCountAndType) {
  const GLfloat colour[4] = {1, 0.5f, 0, 1};
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glMaterialfv(GL_FRONT, GL_DIFFUSE, colour); }),
            "glMaterialfv(GL_FRONT, GL_DIFFUSE, [1, 0.5, 0, 1])");
  const GLfloat shininess = 32;  // one value: reading four would overrun it
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glMaterialfv(GL_BACK, GL_SHININESS, &shininess); }),
            "glMaterialfv(GL_BACK, GL_SHININESS, [32])");
  const GLdouble v[3] = {1.5, -2, 1e-9};
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glVertex3dv(v); }), "glVertex3dv([1.5, -2, 1e-09])");
  GLfloat m[16] = {};
  for (int i = 0; i < 16; ++i) m[i] = static_cast<GLfloat>(i);
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glLoadMatrixf(m); }),
            "glLoadMatrixf([0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15])");
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glVertex3fv(nullptr); }), "glVertex3fv(NULL)");
}

TEST(TraceFormat, ArraysSizedByCountAndType) {
  const GLubyte hello[5] = {72, 65, 76, 76, 79};
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glCallLists(5, GL_UNSIGNED_BYTE, hello); }),
            "glCallLists(5, GL_UNSIGNED_BYTE, [72, 65, 76, 76, 79])");
  // Pairs of bytes are one name each, high byte first.
  const GLubyte pairs[4] = {1, 2, 0, 255};
  EXPECT_EQ(TraceOne([&](auto& gl) { gl.glCallLists(2, GL_2_BYTES, pairs); }),
            "glCallLists(2, GL_2_BYTES, [258, 255])");
}

TEST(TraceResults, ListNamesCountUpFromOnePerScope) {
  {
    ScopedTracingGL trace;
    EXPECT_EQ(GL().glGenLists(3), 1u);
    EXPECT_EQ(GL().glGenLists(1), 4u);  // the range of 3 took 1, 2, 3
    EXPECT_EQ(GL().glGenLists(0), 0u);
    EXPECT_EQ(GL().glGenLists(2), 5u);
    EXPECT_EQ(trace.Lines(),
              (Lines{"glGenLists(3)", "glGenLists(1)", "glGenLists(0)", "glGenLists(2)"}));
  }
  ScopedTracingGL again;
  EXPECT_EQ(GL().glGenLists(1), 1u);
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

TEST(DispatchTables, EveryEntryPointIsFilledAndTracedUnderItsName) {
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

TEST(DispatchTables, ScopesNestAndRestoreTheRealTable) {
  EXPECT_EQ(&GL(), &RealGL());
  std::ostringstream out;
  {
    ScopedTracingGL outer(&out);
    GL().glLoadIdentity();
    {
      ScopedTracingGL inner;
      GL().glFlush();
      EXPECT_EQ(inner.Lines(), (Lines{"glFlush()"}));
    }
    GL().glFinish();
    EXPECT_EQ(outer.Lines(), (Lines{"glLoadIdentity()", "glFinish()"}));
    outer.Clear();
    EXPECT_TRUE(outer.Lines().empty());
  }
  EXPECT_EQ(out.str(), "glLoadIdentity()\nglFinish()\n");
  EXPECT_EQ(&GL(), &RealGL());
}

TEST(PassThrough, CallsGlWhateverTheRecordingSwitchesSay) {
  OpenGL_Ctrl ctrl;
  ctrl.DontSendToGL = true;  // honoured by the recording methods only
  ScopedTracingGL trace;
  ctrl.oglEnable(GL_CULL_FACE);
  ctrl.oglTranslatef(1, 2, 3);
  const GLdouble v[3] = {4, 5, 6};
  ctrl.oglVertex3dv(v);
  EXPECT_EQ(ctrl.oglGenLists(2), 1u);
  ctrl.ogluLookAt(0, 0, 10, 0, 0, 0, 0, 1, 0);
  EXPECT_EQ(ctrl.oglGetError(), static_cast<GLenum>(GL_NO_ERROR));
  EXPECT_EQ(trace.Lines(),
            (Lines{"glEnable(GL_CULL_FACE)", "glTranslatef(1, 2, 3)", "glVertex3dv([4, 5, 6])",
                   "glGenLists(2)", "gluLookAt(0, 0, 10, 0, 0, 0, 0, 1, 0)", "glGetError()"}));
}

}  // namespace
}  // namespace quelo
