// Facetter: triangulates the polygon of a PolygonBuffer by projecting it onto
// its own plane and clipping ears, and flags each triangle's border edges.
//
// Every step is computed in single precision, as the triangles users see
// depend on it, and every array access is checked. Two clippers give the very
// same triangles: the straightforward one (about n^3 steps), which is the
// definition, and the fast one (fast_clipper.cpp), which answers its questions
// through a grid and a heap and hands a polygon back to the straightforward
// one whenever it cannot prove that its answer is the same.
//
// Run-time errors (RuntimeError) that can come out of every function here:
// 9 for an index past an array's bound (among others, a polygon of four or
// more corners on one line), 6 for a floating-point overflow or 0/0, 11 for a
// division by zero, 5 for the square root of a negative number.
#pragma once

#include <cstdint>
#include <vector>

#include "common/numbers.h"
#include "facet/bounded_array.h"
#include "facet/polygon_buffer.h"

namespace quelo {

struct FacetTriangle {
  Long corner[3] = {0, 0, 0};  // corner numbers of the polygon buffer
  Long edge_flags = 0;         // 1: first->second, 2: second->third, 4: third->first on the border
};

// A 2-D point of the projected polygon or of the working ring.
struct FacetPoint {
  Single x = 0;
  Single y = 0;
  Single weight = 0;       // sine of half the turning angle; > 0 convex, < 0 reflex
  bool cut = false;        // the edge leaving this corner is a diagonal, not a border edge
  Single edge_length = 0;  // see BuildRing for which edge
  Long corner = 0;         // the input corner (corner number of the polygon buffer)
};

// Whether ring point d lies in the triangle a, b, c (positions in `ring`);
// the triangle's border counts as inside, the triangle's own corners (by
// input corner number) do not.
bool InsideTriangle(const BoundedArray<FacetPoint>& ring, Long a, Long b, Long c, Long d);

class Facetter {
 public:
  // Triangulates `polygon` into triangles(). Lowers its corner count while
  // clipping. Raises RuntimeError where the clipper meets a fault; triangles()
  // then holds what was set before it.
  void Run(PolygonBuffer& polygon);
  // The same with the straightforward clipper only.
  void RunStraightforward(PolygonBuffer& polygon);

  // Entries 1..m in clipping order; entry 0 is unused.
  const std::vector<FacetTriangle>& triangles() const { return triangles_; }

  // The steps of Run, for tests and benchmarks.

  // The plane projection: sets order(), corner_map() and points() from the
  // polygon buffer (copying corner n into corner 0 first). Leaves points()
  // untouched when the Newell normal has zero length. The in-plane axes are
  // random (seeded with n, so repeatable) but orthonormal.
  void ProjectOntoPlane(PolygonBuffer& polygon);
  // The ear clipper for n = polygon.corner_count >= 4 corners of points()
  // read through order(): BuildRing, then the fast clipper.
  void ClipEars(PolygonBuffer& polygon);
  void ClipEarsStraightforward(PolygonBuffer& polygon);

  // The steps before the clipping proper, over n corners of points() read
  // through order(). The signed area A (twice the area, positive when the
  // corners run counter-clockwise) goes to `area`. Returns the ring 0..n:
  // entry i has the x, y of corner i, its sharpness weight, cut false, corner
  // order(i), and the length of the edge leaving it (for A < 0, of the edge
  // arriving at it); entry 0 repeats entry n.
  BoundedArray<FacetPoint> BuildRing(Integer n, Single& area) const;

  // Clips ears off `ring` (positions 1..n) until three corners are left and
  // fills triangles(); lowers `corner_count` with the ring size. `area` is the
  // ring's signed area from BuildRing; only its sign is used.
  void ClipRingStraightforward(BoundedArray<FacetPoint>& ring, Integer n, Single area,
                               Integer& corner_count);
  // The same through the ear index; false (with triangles() and
  // `corner_count` left to be redone) where it cannot vouch for the result.
  bool ClipRingFast(const BoundedArray<FacetPoint>& ring, Integer n, Single area,
                    Integer& corner_count);

  // The projected corners 0..n (entry 0 repeats entry n); only x and y are
  // set. A single entry 0 when the polygon's normal has zero length.
  BoundedArray<FacetPoint>& points() { return points_; }
  // Identity maps 0..n set by the projection: the clipper reads the corner
  // order through order() and maps ring corners back through corner_map().
  BoundedArray<Integer>& order() { return order_; }
  BoundedArray<Integer>& corner_map() { return corner_map_; }
  // Starts over with no triangles (as Run does first).
  void ClearTriangles() { triangles_.assign(1, FacetTriangle{}); }

  // (xa - xb)(yc - yd) - (xc - xd)(ya - yb) over points() a..d.
  Single OrientationProduct(Long a, Long b, Long c, Long d) const;

 private:
  void Prepare(PolygonBuffer& polygon);
  void FacetSmallPolygon(Integer n);
  void SeedRandom(std::uint32_t seed) { random_state_ = seed; }
  Single Random01();

  std::vector<FacetTriangle> triangles_ = std::vector<FacetTriangle>(1);
  BoundedArray<FacetPoint> points_{0};
  BoundedArray<Integer> order_{0};
  BoundedArray<Integer> corner_map_{0};
  // The generator of the random in-plane axis: SplitMix64, because every
  // polygon seeds it (twice), and seeding a Mersenne Twister costs more than
  // triangulating a small polygon.
  std::uint64_t random_state_ = 0;

  friend class StraightforwardClipper;
};

}  // namespace quelo
