// The facetter on polygons whose triangulation is worked out by hand. The
// ear clipper is fed exact coordinates through LoadProjected where a test
// depends on exact ties; whole runs (random in-plane axes) use shapes whose
// choices are clear by a wide margin.
#include "facet/facetter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "facet/polygon_buffer.h"
#include "facet_support.h"

namespace quelo {
namespace {

using testing::Buffer;
using testing::Corner2;
using testing::Corner3;
using testing::ErrorOf;
using testing::LoadFlatPolygon;
using testing::LoadPolygon;
using testing::LoadProjected;
using testing::TheFacetter;
using testing::Triangles;

// An irregular concave hexagon, corner 4 reflex. Worked out by hand, with
// the sharpest angle each ear would leave (in its triangle or at its two
// neighbours afterwards): pass 1 clips corner 3 (53.1 degrees, at corner 2;
// the other ears leave 39.1 degrees or less). Pass 2 clips corner 5 (39.1,
// at corner 6; corner 6's ear leaves 35.8, corner 1's 26.6, corner 2's
// 22.8). In the last quadrilateral 1, 2, 4, 6 the diagonal 2-6 would leave
// 10.3 degrees, the diagonal 1-4 none below 22.8; of its two equal ears the
// one at corner 2 comes first.
const std::vector<Corner2> kHexagon = {{0, 0}, {7, 1}, {9, 5}, {5, 3}, {3, 7}, {-2, 4}};
const char kHexagonTriangles[] = "(2,3,4)f3 (4,5,6)f3 (1,2,4)f1 (6,1,4)f1";

// An L of area 3, corner 4 reflex; symmetric about y = x, so its ears tie.
const std::vector<Corner2> kLShape = {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}};
// Ties: pass 1 corners 3 and 5 (score 0.924), pass 2 corners 2 and 5, pass 3
// corners 1 and 5; the first of each pair is clipped.
const char kLShapeTriangles[] = "(2,3,4)f3 (1,2,4)f1 (6,1,4)f1 (6,4,5)f6";

// Mirrors a polygon at the line y = x: same corner numbers, opposite turn.
std::vector<Corner2> MirroredAtDiagonal(const std::vector<Corner2>& ring) {
  std::vector<Corner2> mirrored;
  for (const auto& c : ring) mirrored.push_back({c[1], c[0]});
  return mirrored;
}

// Rotates a flat polygon by `angle` about `axis` (unit) and moves it by `offset`.
std::vector<Corner3> Tilted(const std::vector<Corner2>& ring, const Corner3& axis, double angle,
                            const Corner3& offset) {
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  std::vector<Corner3> result;
  for (const auto& p2 : ring) {
    const Corner3 p = {p2[0], p2[1], 0};
    const double dot = axis[0] * p[0] + axis[1] * p[1] + axis[2] * p[2];
    const Corner3 cross = {axis[1] * p[2] - axis[2] * p[1], axis[2] * p[0] - axis[0] * p[2],
                           axis[0] * p[1] - axis[1] * p[0]};
    Corner3 q;
    for (std::size_t k = 0; k < 3; ++k) {
      q[k] = p[k] * c + cross[k] * s + axis[k] * dot * (1 - c) + offset[k];
    }
    result.push_back(q);
  }
  return result;
}

// True when some ring corner other than the triangle's own lies strictly
// inside one of the result triangles.
bool SomeTriangleHoldsACorner(const std::vector<Corner2>& ring) {
  for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
    const auto& tri = TheFacetter().triangles()[t];
    const Corner2& a = ring[static_cast<std::size_t>(tri.corner[0] - 1)];
    const Corner2& b = ring[static_cast<std::size_t>(tri.corner[1] - 1)];
    const Corner2& c = ring[static_cast<std::size_t>(tri.corner[2] - 1)];
    for (const Corner2& d : ring) {
      const double d1 = testing::Cross2(a, b, d);
      const double d2 = testing::Cross2(b, c, d);
      const double d3 = testing::Cross2(c, a, d);
      if ((d1 > 0 && d2 > 0 && d3 > 0) || (d1 < 0 && d2 < 0 && d3 < 0)) return true;
    }
  }
  return false;
}

// Every triangle turns like the ring (or is flat) and their areas add up.
void ExpectOrientedCover(const std::vector<Corner2>& ring) {
  const double area = testing::RingArea2(ring);
  double sum = 0;
  for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
    const double tri = testing::TriangleArea2(ring, t);
    EXPECT_GE(tri * area, 0) << "triangle " << t << " turns against the polygon";
    sum += std::abs(tri);
  }
  EXPECT_NEAR(sum, std::abs(area), 1e-9 * std::abs(area));
}

// --- Polygons of fewer than four corners ---

TEST(FacetterSmall, FewerThanTwoCornersGiveNoTriangle) {
  for (const auto& corners : {std::vector<Corner3>{}, std::vector<Corner3>{{1, 2, 3}}}) {
    LoadPolygon(corners);
    EXPECT_EQ(ErrorOf([] { TheFacetter().Run(Buffer()); }), 0);
    EXPECT_EQ(TheFacetter().triangles().size(), 1u);
    EXPECT_EQ(Buffer().corner_count, static_cast<Integer>(corners.size()));
  }
}

TEST(FacetterSmall, TwoAndThreeCornersGiveOneBorderTriangle) {
  LoadPolygon({{0, 0, 0}, {1, 0, 0}, {0, 1, 1}});
  TheFacetter().Run(Buffer());
  EXPECT_EQ(Triangles(), "(1,2,3)f7");
  EXPECT_EQ(Buffer().corner_count, 3);

  // Two corners: a degenerate triangle whose third corner is the second.
  LoadPolygon({{0, 0, 0}, {1, 0, 0}});
  TheFacetter().Run(Buffer());
  EXPECT_EQ(Triangles(), "(1,2,2)f7");
  EXPECT_EQ(Buffer().corner_count, 2);

  // Three corners on a line have no plane, but need none.
  LoadPolygon({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});
  EXPECT_EQ(ErrorOf([] { TheFacetter().Run(Buffer()); }), 0);
  EXPECT_EQ(Triangles(), "(1,2,3)f7");
}

// --- Run-time errors ---

TEST(FacetterErrors, FourCornersWithoutAPlaneRaiseSubscriptOutOfRange) {
  const std::vector<std::vector<Corner3>> no_plane = {
      {{0, 0, 0}, {1, 2, 3}, {2, 4, 6}, {3, 6, 9}},                  // on one line
      {{5, 5, 5}, {5, 5, 5}, {5, 5, 5}, {5, 5, 5}},                  // one point
      {{0, 0, 0}, {1e-24, 0, 0}, {1e-24, 1e-24, 0}, {0, 1e-24, 0}},  // normal underflows
  };
  for (const auto& corners : no_plane) {
    LoadPolygon(corners);
    EXPECT_EQ(ErrorOf([] { TheFacetter().Run(Buffer()); }), kErrSubscript);
    EXPECT_EQ(TheFacetter().triangles().size(), 1u);  // nothing to draw
    EXPECT_EQ(TheFacetter().points().Upper(), 0);
  }
}

TEST(FacetterErrors, CoordinatesBeyondSinglePrecisionRaiseOverflow) {
  LoadPolygon({{0, 0, 0}, {1e39, 0, 0}, {1, 1, 0}, {0, 1, 0}});  // not a Single at all
  EXPECT_EQ(ErrorOf([] { TheFacetter().Run(Buffer()); }), kErrOverflow);
  LoadPolygon({{0, 0, 0}, {3e19, 0, 0}, {3e19, 3e19, 0}, {0, 3e19, 0}});  // squares overflow
  EXPECT_EQ(ErrorOf([] { TheFacetter().Run(Buffer()); }), kErrOverflow);
  EXPECT_EQ(TheFacetter().triangles().size(), 1u);
}

TEST(FacetterErrors, PolygonBufferChecksItsBounds) {
  Buffer().vertices.Recreate(2);
  EXPECT_EQ(Buffer().vertices.Upper(), 2);
  EXPECT_EQ(Buffer().vertices(3, 2), 0.0);
  Buffer().vertices(1, 1) = 4.5;
  EXPECT_EQ(Buffer().vertices(1, 1), 4.5);
  EXPECT_EQ(ErrorOf([] { Buffer().vertices(1, 3); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([] { Buffer().vertices(4, 0); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([] { Buffer().vertices(1, -1); }), kErrSubscript);
  EXPECT_EQ(ErrorOf([] { Buffer().vertices.Recreate(-1); }), kErrSubscript);
  Buffer().vertices.Recreate(1);  // recreated zero-filled
  EXPECT_EQ(Buffer().vertices(1, 1), 0.0);
}

// --- Whole runs in space ---

TEST(FacetterRun, ProjectionKeepsDistancesAndRepeats) {
  const auto corners = Tilted(kHexagon, {0.6, 0, 0.8}, 1.1, {3, -2, 5});
  LoadPolygon(corners);
  TheFacetter().ProjectOntoPlane(Buffer());
  ASSERT_EQ(TheFacetter().points().Upper(), 6);
  EXPECT_EQ(TheFacetter().points()(0).x, TheFacetter().points()(6).x);
  EXPECT_EQ(TheFacetter().points()(0).y, TheFacetter().points()(6).y);
  for (Long i = 0; i <= 6; ++i) {
    EXPECT_EQ(TheFacetter().order()(i), i);
    EXPECT_EQ(TheFacetter().corner_map()(i), i);
  }
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = i + 1; j < 6; ++j) {
      const double dx = TheFacetter().points()(static_cast<Long>(i + 1)).x -
                        TheFacetter().points()(static_cast<Long>(j + 1)).x;
      const double dy = TheFacetter().points()(static_cast<Long>(i + 1)).y -
                        TheFacetter().points()(static_cast<Long>(j + 1)).y;
      const double d2 =
          std::hypot(kHexagon[i][0] - kHexagon[j][0], kHexagon[i][1] - kHexagon[j][1]);
      EXPECT_NEAR(std::hypot(dx, dy), d2, 1e-5 * d2);
    }
  }
  // The axes are seeded with the corner count: the same polygon projects the same.
  const Single x1 = TheFacetter().points()(1).x;
  const Single y1 = TheFacetter().points()(1).y;
  TheFacetter().ProjectOntoPlane(Buffer());
  EXPECT_EQ(TheFacetter().points()(1).x, x1);
  EXPECT_EQ(TheFacetter().points()(1).y, y1);
}

TEST(FacetterRun, ConvexPolygonHasOnlyConvexCornersAndIsCovered) {
  const std::vector<Corner2> convex = {{0, 0}, {6, -1}, {10, 2}, {9, 6}, {4, 8}, {-1, 4}};
  LoadFlatPolygon(convex);
  TheFacetter().ProjectOntoPlane(Buffer());
  Single area = 0;
  const auto ring = TheFacetter().BuildRing(6, area);
  EXPECT_GT(area, 0);
  for (Long i = 1; i <= 6; ++i) EXPECT_GT(ring(i).weight, 0) << "corner " << i;
  TheFacetter().Run(Buffer());
  EXPECT_EQ(TheFacetter().triangles().size(), 5u);
  ExpectOrientedCover(convex);
  EXPECT_EQ(Buffer().corner_count, 3);
}

TEST(FacetterRun, ConcaveHexagonInTheXYPlane) {
  LoadFlatPolygon(kHexagon);
  TheFacetter().Run(Buffer());
  EXPECT_EQ(Triangles(), kHexagonTriangles);
  EXPECT_EQ(Buffer().corner_count, 3);
  ExpectOrientedCover(kHexagon);
  EXPECT_FALSE(SomeTriangleHoldsACorner(kHexagon));
}

TEST(FacetterRun, TiltedPlanesGiveTheSameTriangles) {
  const double s = std::numbers::sqrt2 / 2;
  const std::vector<std::pair<Corner3, double>> tilts = {
      {{1, 0, 0}, 0.5}, {{0, 1, 0}, 1.2}, {{s, s, 0}, std::numbers::pi / 2}, {{0.6, 0, 0.8}, 2.5}};
  for (const auto& [axis, angle] : tilts) {
    LoadPolygon(Tilted(kHexagon, axis, angle, {10, -20, 7}));
    TheFacetter().Run(Buffer());
    EXPECT_EQ(Triangles(), kHexagonTriangles) << "angle " << angle;
    EXPECT_EQ(Buffer().corner_count, 3);
  }
}

TEST(FacetterRun, ClockwisePolygonGivesClockwiseTriangles) {
  // The mirror image with the same corner numbers runs clockwise; the plane
  // is found from the corners, so the same ears come off, still clockwise.
  std::vector<Corner2> clockwise;
  for (const auto& c : kHexagon) clockwise.push_back({-c[0], c[1]});
  LoadFlatPolygon(clockwise);
  TheFacetter().Run(Buffer());
  EXPECT_EQ(Triangles(), kHexagonTriangles);
  ASSERT_LT(testing::RingArea2(clockwise), 0);
  ExpectOrientedCover(clockwise);
}

// --- The ear clipper on exact coordinates ---

TEST(FacetterClipper, SquareTiesGoToTheFirstEar) {
  // All four ears score alike (their sharpest corner is 45 degrees).
  LoadProjected({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), "(4,1,2)f3 (4,2,3)f6");
  EXPECT_EQ(Buffer().corner_count, 3);
}

TEST(FacetterClipper, RhombusTakesTheEarWithTheLowestScore) {
  // Corners 1 and 3 are obtuse (152 degrees): the ears at 2 and 4 cut the
  // long diagonal 1-3 away from the sharp corners and score 0.788, the ears
  // at 1 and 3 leave 14-degree angles and score 0.993. Of 2 and 4, 2 is first.
  LoadProjected({{4, -1}, {8, 0}, {4, 1}, {0, 0}});
  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), "(1,2,3)f3 (4,1,3)f5");
}

TEST(FacetterClipper, LShapeNeverClipsItsReflexCorner) {
  LoadProjected(kLShape);
  Single area = 0;
  const auto ring = TheFacetter().BuildRing(6, area);
  EXPECT_EQ(area, 6);  // twice the area
  const Single half_right = static_cast<Single>(std::sqrt(0.5));
  for (Long i : {1, 2, 3, 5, 6}) EXPECT_NEAR(ring(i).weight, half_right, 1e-7);
  EXPECT_NEAR(ring(4).weight, -half_right, 1e-7);
  EXPECT_EQ(ring(2).edge_length, 1);  // the edge leaving corner 2

  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), kLShapeTriangles);
  // Corner 4 is clipped by none of the ears; only the last triangle, what
  // is left of the ring, has it in the middle.
  for (std::size_t t = 1; t + 1 < TheFacetter().triangles().size(); ++t) {
    EXPECT_NE(TheFacetter().triangles()[t].corner[1], 4);
  }
  EXPECT_FALSE(SomeTriangleHoldsACorner(kLShape));
  ExpectOrientedCover(kLShape);
}

TEST(FacetterClipper, ClockwiseLShapeMirrorsTheCounterClockwiseOne) {
  const auto clockwise = MirroredAtDiagonal(kLShape);
  LoadProjected(clockwise);
  Single area = 0;
  const auto ring = TheFacetter().BuildRing(6, area);
  EXPECT_EQ(area, -6);
  EXPECT_NEAR(ring(4).weight, -std::sqrt(0.5), 1e-7);  // still reflex
  // A clockwise ring keeps the length of the edge arriving at each corner.
  EXPECT_EQ(ring(2).edge_length, 2);
  EXPECT_EQ(ring(6).edge_length, 1);

  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), kLShapeTriangles);
  ExpectOrientedCover(clockwise);
}

TEST(FacetterClipper, CornerAfterTheNewDiagonalTakesItsNewWeight) {
  // Corner 2 is reflex. Pass 1 clips the last corner, 5 (sharpest angle left
  // 18.4 degrees; the other ears leave 10.3 or less). Pass 2 clips corner 1,
  // the first of the two equal ears on the diagonal 2-4; corner 4 is then the
  // ring's last position and corner 2, now at position 1, follows it and turns
  // convex. Only with that new weight is it the corner clipped last.
  const std::vector<Corner2> pentagon = {{-4, 7}, {-5, 5}, {-6, 5}, {-4, -1}, {8, -2}};
  LoadProjected(pentagon);
  Single area = 0;
  EXPECT_LT(TheFacetter().BuildRing(5, area)(2).weight, 0);
  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), "(4,5,1)f3 (4,1,2)f2 (4,2,3)f6");
  ExpectOrientedCover(pentagon);
}

TEST(FacetterClipper, RepeatedCornerIsNeverAnEar) {
  // A unit square with corner 2 given twice. Corners 2 and 3 touch the
  // zero-length edge: weight 0. The doubled point lies on the border of
  // every ear next to it, so pass 1 finds only corner 5, and pass 2 none at
  // all: the last choice, position 5, is clipped again, reaching past the
  // shrunken ring to corner 5 once more. Then only corner 1 is left to clip.
  const std::vector<Corner2> square = {{0, 0}, {1, 0}, {1, 0}, {1, 1}, {0, 1}};
  LoadProjected(square);
  Single area = 0;
  const auto ring = TheFacetter().BuildRing(5, area);
  EXPECT_EQ(ring(2).edge_length, 0);
  EXPECT_EQ(ring(2).weight, 0);
  EXPECT_EQ(ring(3).weight, 0);
  EXPECT_GT(ring(1).weight, 0);

  TheFacetter().ClipEars(Buffer());
  EXPECT_EQ(Triangles(), "(4,5,1)f3 (4,5,2)f2 (3,1,2)f7");
  EXPECT_EQ(Buffer().corner_count, 3);
  ExpectOrientedCover(square);
}

TEST(FacetterClipper, ZeroDiagonalIsClippedAtOnce) {
  // Corners 4 and 6 coincide, so the spike corner 5 has a zero diagonal. A
  // fresh ring gives the spike weight 0; a weight left over from earlier
  // clips makes it an ear that is taken at once, although corner 2, met
  // earlier, qualifies too. Its candidate values were never computed, so
  // corners 4 and 6 get weight 0 and are never clipped afterwards.
  const std::vector<Corner2> spiked = {{0, 0}, {4, 0}, {7, 3}, {4, 4}, {2, 6}, {4, 4}};
  LoadProjected(spiked);
  Single area = 0;
  auto ring = TheFacetter().BuildRing(6, area);
  EXPECT_EQ(ring(5).weight, 0);
  ring(5).weight = 0.5f;

  TheFacetter().ClipRingStraightforward(ring, 6, area, Buffer().corner_count);
  // Pass 2 clips corner 2; pass 3 finds no ear (the double point is on every
  // candidate) and clips position 2, now corner 3, again; corner 1 goes last.
  EXPECT_EQ(Triangles(), "(4,5,6)f3 (1,2,3)f3 (1,3,4)f2 (6,1,4)f1");
  EXPECT_EQ(Buffer().corner_count, 3);
  ExpectOrientedCover(spiked);
}

// --- The inside-triangle test and the orientation product ---

// A ring with the triangle at positions 1..3 and test points from 4 on.
BoundedArray<FacetPoint> RingOf(const std::vector<Corner2>& points) {
  BoundedArray<FacetPoint> ring(static_cast<Long>(points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    FacetPoint& p = ring(static_cast<Long>(i + 1));
    p.x = static_cast<Single>(points[i][0]);
    p.y = static_cast<Single>(points[i][1]);
    p.corner = static_cast<Long>(i + 1);
  }
  return ring;
}

TEST(FacetterInside, BorderCountsAsInside) {
  auto ring = RingOf({{0, 0},
                      {4, 0},
                      {0, 4},  // triangle
                      {1, 1},
                      {2, 0},
                      {0, 2},
                      {2, 2},
                      {4, 0},  // inside or on it
                      {3, 3},
                      {-1, 1},
                      {1, -1},
                      {5, 0}});  // outside
  for (Long d = 4; d <= 8; ++d) EXPECT_TRUE(InsideTriangle(ring, 1, 2, 3, d)) << d;
  for (Long d = 9; d <= 12; ++d) EXPECT_FALSE(InsideTriangle(ring, 1, 2, 3, d)) << d;
  // The clockwise listing of the same triangle.
  EXPECT_TRUE(InsideTriangle(ring, 1, 3, 2, 4));
  EXPECT_FALSE(InsideTriangle(ring, 1, 3, 2, 9));
  // A point that is one of the triangle's input corners is never inside.
  ring(4).corner = 2;
  EXPECT_FALSE(InsideTriangle(ring, 1, 2, 3, 4));
}

TEST(FacetterInside, FlatTriangleHoldsThePointsBetweenItsEnds) {
  auto ring = RingOf({{0, 0},
                      {2, 0},
                      {4, 0},  // on one line
                      {3, 0},
                      {1, 0},
                      {0, 0},  // on the segments (or at a)
                      {5, 0},
                      {-1, 0},
                      {1, 1}});
  for (Long d = 4; d <= 6; ++d) EXPECT_TRUE(InsideTriangle(ring, 1, 2, 3, d)) << d;
  for (Long d = 7; d <= 9; ++d) EXPECT_FALSE(InsideTriangle(ring, 1, 2, 3, d)) << d;
  // A point at the far end, with the nearer end listed last.
  auto far_end = RingOf({{0, 0}, {4, 0}, {2, 0}, {4, 0}});
  EXPECT_TRUE(InsideTriangle(far_end, 1, 2, 3, 4));
  // A vertical line: the x components are 0 and skipped.
  auto vertical = RingOf({{1, 0}, {1, 2}, {1, 3}, {1, 2.5}, {1, 4}});
  EXPECT_TRUE(InsideTriangle(vertical, 1, 2, 3, 4));
  EXPECT_FALSE(InsideTriangle(vertical, 1, 2, 3, 5));
  // All three corners at one point: nothing else is inside.
  auto point = RingOf({{1, 1}, {1, 1}, {1, 1}, {2, 2}});
  EXPECT_FALSE(InsideTriangle(point, 1, 2, 3, 4));
}

TEST(FacetterInside, OrientationProductOverProjectedPoints) {
  LoadProjected({{1, 2}, {4, 3}, {-2, 5}, {0.5, -1}});
  // (x1 - x2)(y3 - y4) - (x3 - x4)(y1 - y2) = (-3)(6) - (-2.5)(-1)
  EXPECT_EQ(TheFacetter().OrientationProduct(1, 2, 3, 4), -20.5f);
  EXPECT_EQ(TheFacetter().OrientationProduct(0, 4, 1, 2), 0.0f);  // entry 0 repeats entry 4
  EXPECT_EQ(ErrorOf([] { TheFacetter().OrientationProduct(1, 2, 3, 5); }), kErrSubscript);
}

}  // namespace
}  // namespace quelo
