// tessEndPoly's handler shows "Error in tessEndPoly" for any run-time error
// and resumes with the next statement: every statement below that can fail
// runs inside its own Statement(), and drawing goes on with whatever the
// failing statement left behind.
#include "glctrl/polygon_members.h"

#include <vector>

#include "common/binary_file.h"
#include "common/colour.h"
#include "common/messages.h"
#include "common/numbers.h"
#include "common/runtime_error.h"
#include "facet/facetter.h"
#include "facet/polygon_buffer.h"
#include "glctrl/gl_dispatch.h"
#include "glctrl/recorder.h"
#include "scenefile/record_writer.h"

namespace quelo {
namespace {

// One statement of tessEndPoly under its handler.
template <class F>
void Statement(F&& statement) {
  try {
    statement();
  } catch (const RuntimeError&) {
    MsgBox("Error in tessEndPoly");
  }
}

using Triangles = std::vector<FacetTriangle>;

// The upper bound of the triangle list (entry 0 is never drawn).
Long TriangleUpper(const Triangles& triangles) {
  return static_cast<Long>(triangles.size()) - 1;
}

// Corner j (0..2) of triangle i.
Long CornerOf(const Triangles& triangles, Long i, int j) {
  return triangles[static_cast<std::size_t>(i)].corner[j];
}

bool EdgeFlagOf(const Triangles& triangles, Long i, int j) {
  return (triangles[static_cast<std::size_t>(i)].edge_flags & (1 << j)) != 0;
}

// GLU tessellator callbacks of SetTessCallbacks.
void GLAPIENTRY TessBeginCallback(GLenum type) {
  GL().glBegin(type);
}
void GLAPIENTRY TessEndCallback() {
  GL().glEnd();
}
void GLAPIENTRY TessVertexCallback(void* vertex_data) {
  GL().glVertex3dv(static_cast<const GLdouble*>(vertex_data));
}

}  // namespace

void PolygonMembers::BeginPoly(Integer corner_count) {
  if (switches_.SendToFile) WriteTessBeginPolyRecord(StreamFileOf(switches_), corner_count);
  if (switches_.DontSendToGL) return;
  buffer_.corner_count = corner_count;
  buffer_.vertices.Recreate(corner_count);  // zero-filled; a negative count raises 9
  vertex_counter_ = 0;
}

void PolygonMembers::Vector3d(double x, double y, double z) {
  if (switches_.SendToFile) WriteTessVector3dRecord(StreamFileOf(switches_), x, y, z);
  if (switches_.DontSendToGL) return;
  // The counter goes up first: a corner beyond the announced count raises 9
  // with the counter already increased.
  vertex_counter_ = IntAdd(vertex_counter_, 1);
  buffer_.vertices(1, vertex_counter_) = x;
  buffer_.vertices(2, vertex_counter_) = y;
  buffer_.vertices(3, vertex_counter_) = z;
}

void PolygonMembers::Vector3dv(std::span<const double> v) {
  // Elements 1 to 3 of the caller's 1-based array; index 0 is not read.
  auto element = [&v](std::size_t k) {
    if (k >= v.size()) Raise(kErrSubscript);
    return v[k];
  };
  if (switches_.SendToFile) {
    WriteTessVector3dvRecord(StreamFileOf(switches_), element(1), element(2), element(3));
  }
  if (switches_.DontSendToGL) return;
  vertex_counter_ = IntAdd(vertex_counter_, 1);
  buffer_.vertices(1, vertex_counter_) = element(1);
  buffer_.vertices(2, vertex_counter_) = element(2);
  buffer_.vertices(3, vertex_counter_) = element(3);
}

void PolygonMembers::EndPoly() {
  if (switches_.SendToFile) WriteTessEndPolyRecord(StreamFileOf(switches_));
  if (switches_.DontSendToGL) return;
  const GLDispatch& gl = GL();

  // Close the ring: corner 0 is the corner before corner 1.
  for (Long k = 1; k <= 3; ++k) {
    Statement([this, k] { buffer_.vertices(k, 0) = buffer_.vertices(k, buffer_.corner_count); });
  }
  vertex_counter_ = 0;
  Statement([this] { facetter_.Run(buffer_); });
  const Triangles& triangles = facetter_.triangles();

  // The triangles, each corner with the edge flag of the edge leaving it.
  gl.glBegin(GL_TRIANGLES);
  const Long upper = TriangleUpper(triangles);
  for (Long i = 1; i <= upper; ++i) {
    for (int j = 0; j < 3; ++j) {
      gl.glEdgeFlag(EdgeFlagOf(triangles, i, j) ? GL_TRUE : GL_FALSE);
      Statement([this, &gl, &triangles, i, j] {
        Long c = CornerOf(triangles, i, j);
        gl.glVertex3d(buffer_.vertices(1, c), buffer_.vertices(2, c), buffer_.vertices(3, c));
      });
    }
  }
  gl.glEnd();

  // The marking inside each triangle. centre_ is Single on purpose: the
  // centre is rounded to single precision although the corners are Doubles.
  auto centre = [this, &triangles](Long i) {
    for (Long k = 1; k <= 3; ++k) {
      Statement([this, &triangles, i, k] {
        double sum = CheckDouble(buffer_.vertices(k, CornerOf(triangles, i, 0)) +
                                 buffer_.vertices(k, CornerOf(triangles, i, 1)));
        sum = CheckDouble(sum + buffer_.vertices(k, CornerOf(triangles, i, 2)));
        centre_[k] = CheckSingle(DivDouble(sum, 3.0));
      });
    }
  };
  // Mode 1 and 2: the triangle shrunk to two thirds about its centre.
  auto inner_triangles = [&](bool with_edge_flags) {
    gl.glBegin(GL_TRIANGLES);
    for (Long i = 1; i <= upper; ++i) {
      centre(i);
      for (int j = 0; j < 3; ++j) {
        if (with_edge_flags) gl.glEdgeFlag(EdgeFlagOf(triangles, i, j) ? GL_TRUE : GL_FALSE);
        Statement([&] {
          Long c = CornerOf(triangles, i, j);
          auto shrunk = [&](Long k) {
            double twice = CheckDouble(2.0 * buffer_.vertices(k, c));
            return DivDouble(CheckDouble(twice + double{centre_[k]}), 3.0);
          };
          double x = shrunk(1);
          double y = shrunk(2);
          double z = shrunk(3);
          gl.glVertex3d(x, y, z);
        });
      }
    }
    gl.glEnd();
  };
  // Mode 3 and 4: three strokes from halfway to each corner to the centre.
  auto strokes = [&] {
    for (Long i = 1; i <= upper; ++i) {
      centre(i);
      gl.glBegin(GL_LINES);
      for (int j = 0; j < 3; ++j) {
        Statement([&] {
          Long c = CornerOf(triangles, i, j);
          auto halfway = [&](Long k) {
            return DivDouble(CheckDouble(double{centre_[k]} + buffer_.vertices(k, c)), 2.0);
          };
          double x = halfway(1);
          double y = halfway(2);
          double z = halfway(3);
          gl.glVertex3d(x, y, z);
        });
        gl.glVertex3d(centre_[1], centre_[2], centre_[3]);
      }
      gl.glEnd();
    }
  };
  auto marking_colour = [&] {
    ColourSplit c = SplitColour(marking_.TessInTriColor);
    gl.glColor3f(c.red, c.green, c.blue);  // left in force afterwards
  };

  if (marking_.TessFlag_DoInTri == 1) {
    marking_colour();
    inner_triangles(true);
  } else if (marking_.TessFlag_DoInTri == 2) {
    marking_colour();
    inner_triangles(false);  // the edge flag in force is the last one set
  } else if (marking_.TessFlag_DoInTri == 3) {
    marking_colour();
    strokes();
  } else if (marking_.TessFlag_DoInTri == 4) {
    marking_colour();
    gl.glEnable(GL_LINE_STIPPLE);
    gl.glLineStipple(4, static_cast<GLushort>(0x1111));
    strokes();
    gl.glDisable(GL_LINE_STIPPLE);
  }
}

void PolygonMembers::SetTessCallbacks(GLUtesselator* tess) {
  const GLDispatch& gl = GL();
  gl.gluTessCallback(tess, GLU_TESS_BEGIN, reinterpret_cast<_GLUfuncptr>(&TessBeginCallback));
  gl.gluTessCallback(tess, GLU_TESS_END, reinterpret_cast<_GLUfuncptr>(&TessEndCallback));
  gl.gluTessCallback(tess, GLU_TESS_VERTEX, reinterpret_cast<_GLUfuncptr>(&TessVertexCallback));
}

}  // namespace quelo
