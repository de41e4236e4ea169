// Helpers for the facetter's tests: loading polygons into the shared polygon
// buffer or straight into the projected points, and reading the result back.
#pragma once

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "facet/facetter.h"
#include "facet/polygon_buffer.h"
#include "support/error_of.h"

namespace quelo::testing {

using Corner3 = std::array<double, 3>;
using Corner2 = std::array<double, 2>;

// The facetter the tests run and look into.
inline Facetter& TheFacetter() {
  static Facetter facetter;
  return facetter;
}

// The buffer the tests fill and the facetter reads: the program's shared one,
// as the polygon members use it.
inline PolygonBuffer& Buffer() {
  return SharedPolygonBuffer();
}

// Puts a polygon into the buffer as tessBeginPoly and tessVector3d would.
inline void LoadPolygon(const std::vector<Corner3>& corners) {
  const auto n = static_cast<Long>(corners.size());
  Buffer().vertices.Recreate(n);
  Buffer().corner_count = static_cast<Integer>(n);
  for (Long i = 1; i <= n; ++i) {
    for (Long k = 1; k <= 3; ++k) {
      Buffer().vertices(k, i) =
          corners[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(k - 1)];
    }
  }
}

// A flat polygon in the plane z = 0.
inline void LoadFlatPolygon(const std::vector<Corner2>& corners) {
  std::vector<Corner3> corners3;
  for (const auto& c : corners) corners3.push_back({c[0], c[1], 0.0});
  LoadPolygon(corners3);
}

// Sets TheFacetter().points(), TheFacetter().order(), TheFacetter().corner_map() and the corner
// count as the projection would for a polygon that already lies in the x-y plane, so that the
// clipper sees these exact coordinates (no random axes).
inline void LoadProjected(const std::vector<Corner2>& corners) {
  const auto n = static_cast<Long>(corners.size());
  Buffer().corner_count = static_cast<Integer>(n);
  TheFacetter().points().Recreate(n);
  TheFacetter().order().Recreate(n);
  TheFacetter().corner_map().Recreate(n);
  for (Long i = 0; i <= n; ++i) {
    TheFacetter().order()(i) = static_cast<Integer>(i);
    TheFacetter().corner_map()(i) = static_cast<Integer>(i);
  }
  for (Long i = 1; i <= n; ++i) {
    TheFacetter().points()(i).x = static_cast<Single>(corners[static_cast<std::size_t>(i - 1)][0]);
    TheFacetter().points()(i).y = static_cast<Single>(corners[static_cast<std::size_t>(i - 1)][1]);
  }
  TheFacetter().points()(0) = TheFacetter().points()(n);
  TheFacetter().ClearTriangles();
}

// TheFacetter().triangles() 1..m as "(a,b,c)fF" items separated by spaces.
inline std::string Triangles() {
  std::string text;
  for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
    const FacetTriangle& tri = TheFacetter().triangles()[t];
    if (!text.empty()) text += ' ';
    text += "(" + std::to_string(tri.corner[0]) + "," + std::to_string(tri.corner[1]) + "," +
            std::to_string(tri.corner[2]) + ")f" + std::to_string(tri.edge_flags);
  }
  return text;
}

// Twice the signed area of the 2-D triangle a, b, c.
inline double Cross2(const Corner2& a, const Corner2& b, const Corner2& c) {
  return (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
}

// Twice the signed area of a 2-D ring (positive counter-clockwise).
inline double RingArea2(const std::vector<Corner2>& ring) {
  double sum = 0;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const Corner2& a = ring[i];
    const Corner2& b = ring[(i + 1) % ring.size()];
    sum += a[0] * b[1] - b[0] * a[1];
  }
  return sum;
}

// Twice the signed area of result triangle t over the 1-based corners of ring.
inline double TriangleArea2(const std::vector<Corner2>& ring, std::size_t t) {
  const FacetTriangle& tri = TheFacetter().triangles()[t];
  auto at = [&](int k) { return ring[static_cast<std::size_t>(tri.corner[k] - 1)]; };
  return Cross2(at(0), at(1), at(2));
}

}  // namespace quelo::testing
