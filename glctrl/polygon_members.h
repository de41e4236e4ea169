// PolygonMembers: collect a polygon corner by corner into a polygon buffer
// (the program-wide SharedPolygonBuffer() for every control), triangulate it
// with the facetter and draw the triangles with edge flags, so that outlines
// in GL_LINE mode show the polygon's border and not the cut diagonals.
#pragma once

#include <GL/glu.h>

#include <span>

#include "common/numbers.h"
#include "facet/facetter.h"

namespace quelo {

struct RecordingSwitches;

// The marking drawn inside each triangle. OpenGL_Ctrl exposes it as its own
// public fields.
struct PolygonMarking {
  Long TessFlag_DoInTri = 0;  // 1..4 select a marking inside each triangle
  Long TessInTriColor = 0;    // packed marking colour
};

class PolygonMembers {
 public:
  PolygonMembers(const RecordingSwitches& switches, const PolygonMarking& marking,
                 PolygonBuffer& buffer)
      : switches_(switches), marking_(marking), buffer_(buffer) {}

  void BeginPoly(Integer corner_count);
  void Vector3d(double x, double y, double z);
  // Takes elements 1, 2, 3 of a 1-based array; a shorter array raises 9.
  void Vector3dv(std::span<const double> v);
  // Closes, triangulates and draws the polygon, with the marking inside each
  // triangle. Shows "Error in tessEndPoly" for each failing statement and
  // goes on.
  void EndPoly();

  // Registers callbacks that send the tessellator's output to GL.
  static void SetTessCallbacks(GLUtesselator* tess);

 private:
  const RecordingSwitches& switches_;
  const PolygonMarking& marking_;
  PolygonBuffer& buffer_;
  Facetter facetter_;
  Integer vertex_counter_ = 0;
  Single centre_[4] = {0, 0, 0, 0};  // indices 1..3 used
};

}  // namespace quelo
