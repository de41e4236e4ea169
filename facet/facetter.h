// GLFacetter: triangulates the polygon of a PolygonBuffer by
// projecting it onto its own plane and clipping ears, and flags each
// triangle's border edges.
//
// This is the plain reference version: every step in single precision as the
// triangles users see depend on it, every array access checked. All state is
// module-wide and single-threaded, like the polygon buffer it reads.
//
// Run-time errors (RuntimeError) that can come out of every function here:
// 9 for an index past an array's bound (among others, a polygon of four or
// more corners on one line), 6 for a floating-point overflow or 0/0, 11 for a
// division by zero, 5 for the square root of a negative number.
#pragma once

#include <vector>

#include "common/numbers.h"
#include "facet/bounded_array.h"
#include "facet/polygon_buffer.h"

namespace quelo {

struct FacetTriangle {
  Long corner[3] = {0, 0, 0};  // corner numbers of the polygon buffer
  Long edge_flags = 0;         // 1: first->second, 2: second->third, 4: third->first on the border
};

// Entries 1..m are the triangles in clipping order; entry 0 is unused.
extern std::vector<FacetTriangle> FacetTriangles;

// Runs the facetter on `polygon`. Lowers its corner count while clipping. Raises RuntimeError (9
// index range, 6/11/5 floating-point faults) where the clipper meets them; FacetTriangles then
// holds what was set before the fault.
void RunFacetter(PolygonBuffer& polygon);

// A 2-D point of the projected polygon or of the working ring.
struct FacetPoint {
  Single x = 0;
  Single y = 0;
  Single weight = 0;       // sine of half the turning angle; > 0 convex, < 0 reflex
  bool cut = false;        // the edge leaving this corner is a diagonal, not a border edge
  Single edge_length = 0;  // see BuildFacetRing for which edge
  Long corner = 0;         // the input corner (corner number of the polygon buffer)
};

// The projected corners 0..n (entry 0 repeats entry n); only x and y are set.
// A single entry 0 when the polygon's normal has zero length.
extern BoundedArray<FacetPoint> FacetPoints;
// Identity maps 0..n set by the projection: the clipper reads the corner
// order through FacetOrder and maps ring corners back through FacetCornerMap.
extern BoundedArray<Integer> FacetOrder;
extern BoundedArray<Integer> FacetCornerMap;

// The plane projection: sets FacetOrder, FacetCornerMap and FacetPoints from
// the polygon buffer (copying corner n into corner 0 first). Leaves FacetPoints
// untouched when the Newell normal has zero length. The in-plane axes are
// random (seeded with n, so repeatable) but orthonormal.
void ProjectOntoPlane(PolygonBuffer& polygon);

// The ear clipper for n = polygon.corner_count >= 4 corners of FacetPoints read
// through FacetOrder: BuildFacetRing, then ClipRing.
void ClipEars(PolygonBuffer& polygon);

// The steps before the clipping proper, over n corners of FacetPoints read
// through FacetOrder. The signed area A (twice the area, positive when the
// corners run counter-clockwise) goes to `area`. Returns the ring 0..n:
// entry i has the x, y of corner i, its sharpness weight, cut false, corner
// FacetOrder(i), and the length of the edge leaving it (for A < 0, of the
// edge arriving at it); entry 0 repeats entry n.
BoundedArray<FacetPoint> BuildFacetRing(Integer n, Single& area);

// Clips ears off `ring` (positions 1..n) until three corners are left and
// fills FacetTriangles; lowers `corner_count` with the ring size. `area` is
// the ring's signed area from BuildFacetRing; only its sign is used.
void ClipRing(BoundedArray<FacetPoint>& ring, Integer n, Single area, Integer& corner_count);

// (xa - xb)(yc - yd) - (xc - xd)(ya - yb) over FacetPoints(a..d).
Single OrientationProduct(Long a, Long b, Long c, Long d);

// Whether ring point d lies in the triangle a, b, c (positions in `ring`);
// the triangle's border counts as inside, the triangle's own corners (by
// input corner number) do not.
bool InsideTriangle(const BoundedArray<FacetPoint>& ring, Long a, Long b, Long c, Long d);

}  // namespace quelo
