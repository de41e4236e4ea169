#include "facet/facetter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "common/runtime_error.h"
#include "facet/polygon_buffer.h"

#include "facet/facetter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "common/runtime_error.h"
#include "facet/facet_math.h"
#include "facet/polygon_buffer.h"

namespace quelo {

using namespace facet_math;

namespace {

// Length of the edge a -> b with the squares in double precision, as Single.
Single EdgeLength(const FacetPoint& a, const FacetPoint& b) {
  const Single dy = Sub(a.y, b.y);
  const Single dx = Sub(a.x, b.x);
  const double dy2 = CheckDouble(static_cast<double>(dy) * dy);
  const double dx2 = CheckDouble(static_cast<double>(dx) * dx);
  return CheckSingle(SqrtDouble(CheckDouble(dy2 + dx2)));
}

// A clock reading to re-seed the axis generator with.
std::uint32_t ClockSeed() {
  return static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// The dot product of corner `corner` of the Single copy q with axis (ax, ay, az).
Single Dot(const BoundedTable<Single>& q, Long corner, Single ax, Single ay, Single az) {
  return Add(Add(Mul(q(1, corner), ax), Mul(q(2, corner), ay)), Mul(q(3, corner), az));
}

}  // namespace

// The working state of one straightforward clipping run: every pass scans
// the whole ring. Its tables are indexed by ring position and keep their
// values from pass to pass, also where the corner at a position has changed.
class StraightforwardClipper {
 public:
  // Prepares the tables for a ring of n corners.
  StraightforwardClipper(Facetter& facetter, BoundedArray<FacetPoint>& ring, Integer n, Single area,
                         Integer& corner_count)
      : facetter_(facetter),
        ring_(ring),
        corner_count_(corner_count),
        size_(n),
        area_(area),
        clipped_(n - 2, 3),
        edge_bits_(n - 2),
        diagonal_(n),
        candidate_(n, 3) {}

  // Clips until three corners are left, then writes the triangles.
  void Run() {
    for (;;) {
      ChooseEar();
      if (!ClipChosen()) break;
    }
    WriteTriangles();
  }

 private:
  // Position 0 stands for the ring's current last corner.
  Long Wrap(Long position) const { return position == 0 ? size_ : position; }

  // The stored length of the ring edge from -> to: kept with the corner it
  // leaves, or with the corner it arrives at for a negative area.
  Single StoredLength(Long from, Long to) const {
    return area_ < 0 ? ring_(to).edge_length : ring_(from).edge_length;
  }

  // Picks the ear with the lowest score, the first of equal ones;
  // when none qualifies, chosen_ keeps the previous pass's choice.
  void ChooseEar() {
    Single best = 2.0f;
    for (Long i = 1; i <= size_; ++i) {
      const Long p = Wrap(i - 1);
      const Long q = Wrap((i + 1) % size_);
      if (!(ring_(i).weight > 0)) continue;
      clipped_(0, 1) = CInt(p);
      clipped_(0, 2) = CInt(i);
      clipped_(0, 3) = CInt(q);
      if (size_ == 3) {
        chosen_ = i;
        return;
      }
      diagonal_(i) = DiagonalLength(ring_(p), ring_(q));
      if (diagonal_(i) == 0) {
        chosen_ = i;
        return;
      }
      if (ContainsRingPoint(p, i, q)) continue;
      const Single score = Score(p, i, q);
      if (score < best) {
        best = score;
        chosen_ = i;
      }
    }
  }

  // Whether any ring point lies in the triangle p, i, q; the first one found
  // settles it.
  bool ContainsRingPoint(Long p, Long i, Long q) const {
    for (Long k = 1; k <= size_; ++k) {
      if (InsideTriangle(ring_, p, i, q, k)) return true;
    }
    return false;
  }

  // The four candidate weights of the ear at i, kept for its clip; returns
  // the largest, the sharpest corner the clip would leave.
  Single Score(Long p, Long i, Long q) {
    const Long before_p = Wrap(p - 1);
    const Long after_q = Wrap((i + 2) % size_);
    const Single dg = diagonal_(i);
    // p after the clip: before_p -> p -> q.
    candidate_(i, 0) =
        CornerWeight(ring_(before_p), ring_(p), ring_(q), StoredLength(before_p, p), dg, area_);
    // p inside the ear, walked q -> p -> i.
    candidate_(i, 1) = CornerWeight(ring_(q), ring_(p), ring_(i), dg, StoredLength(p, i), area_);
    // q inside the ear, walked i -> q -> p.
    candidate_(i, 2) = CornerWeight(ring_(i), ring_(q), ring_(p), StoredLength(i, q), dg, area_);
    // q after the clip: p -> q -> after_q.
    candidate_(i, 3) =
        CornerWeight(ring_(p), ring_(q), ring_(after_q), dg, StoredLength(q, after_q), area_);
    return std::max({candidate_(i, 0), candidate_(i, 1), candidate_(i, 2), candidate_(i, 3)});
  }

  // Records the chosen ear's triangle and removes its corner;
  // false when the ring is used up.
  bool ClipChosen() {
    const Long b = chosen_;
    const Long p_raw = b - 1;  // 0 means the last corner, whichever that is then
    const Long p = Wrap(p_raw);
    const Long q = Wrap((b + 1) % size_);
    ++count_;
    clipped_(count_, 1) = CInt(ring_(p).corner);
    clipped_(count_, 2) = CInt(ring_(b).corner);
    clipped_(count_, 3) = CInt(ring_(q).corner);
    Integer bits = 0;
    if (!ring_(p).cut) bits = static_cast<Integer>(bits + 1);
    if (!ring_(b).cut) bits = static_cast<Integer>(bits + 2);
    // Before the last clip the third edge is always the new diagonal.
    if (size_ == 3 && !ring_(q).cut) bits = static_cast<Integer>(bits + 4);
    edge_bits_(count_) = bits;

    if (size_ <= 3) return false;
    size_ = IntSub(size_, 1);
    corner_count_ = size_;
    for (Long k = b; k <= size_; ++k) ring_(k) = ring_(k + 1);
    const Long after_gap = Wrap(p_raw);
    const Long next = after_gap == size_ ? 1 : after_gap + 1;
    // The new diagonal after_gap -> next, stored where StoredLength looks.
    if (area_ < 0) {
      ring_(next).edge_length = diagonal_(b);
    } else {
      ring_(after_gap).edge_length = diagonal_(b);
    }
    ring_(after_gap).cut = true;
    ring_(after_gap).weight = candidate_(b, 0);
    ring_(next).weight = candidate_(b, 3);
    ring_(0) = ring_(size_);  // the copy of the last corner follows the ring
    return true;
  }

  // Writes the clipped triangles in clipping order, in input corner numbers.
  void WriteTriangles() {
    auto& triangles = facetter_.triangles_;
    triangles.assign(static_cast<std::size_t>(count_) + 1, FacetTriangle{});
    for (Long t = 1; t <= count_; ++t) {
      FacetTriangle& triangle = triangles[static_cast<std::size_t>(t)];
      for (Long column = 1; column <= 3; ++column) {
        triangle.corner[column - 1] = facetter_.corner_map_(clipped_(t, column));
      }
      triangle.edge_flags = edge_bits_(t);
    }
  }

  Facetter& facetter_;
  BoundedArray<FacetPoint>& ring_;
  Integer& corner_count_;
  Integer size_;  // the current ring size r
  Single area_;
  BoundedTable<Integer> clipped_;  // rows 1..t: input corners of each clip; row 0 scratch
  BoundedArray<Integer> edge_bits_;
  BoundedArray<Single> diagonal_;   // per ring position, kept from pass to pass
  BoundedTable<Single> candidate_;  // per ring position, the four candidate weights
  Long chosen_ = 0;                 // not reset between passes
  Long count_ = 0;
};

Single Facetter::OrientationProduct(Long a, Long b, Long c, Long d) const {
  return Orientation(points_(a), points_(b), points_(c), points_(d));
}

bool InsideTriangle(const BoundedArray<FacetPoint>& ring, Long a, Long b, Long c, Long d) {
  const FacetPoint& pa = ring(a);
  const FacetPoint& pb = ring(b);
  const FacetPoint& pc = ring(c);
  const FacetPoint& pd = ring(d);
  if (pd.corner == pa.corner || pd.corner == pb.corner || pd.corner == pc.corner) return false;
  return PointInTriangle(pa, pb, pc, pd);
}

// A uniform number in [0, 1) from the top 24 bits of the generator, exact in Single.
Single Facetter::Random01() {
  std::uint64_t z = (random_state_ += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<Single>(z >> 40) * (1.0f / 16777216.0f);
}

void Facetter::ProjectOntoPlane(PolygonBuffer& polygon) {
  TessVertexArray& vertices = polygon.vertices;
  const Integer n = polygon.corner_count;
  for (Long k = 1; k <= 3; ++k) vertices(k, 0) = vertices(k, n);

  order_.Recreate(n);
  corner_map_.Recreate(n);
  BoundedTable<Single> q(3, n);
  Single nx = 0, ny = 0, nz = 0;
  for (Long i = 0; i <= n; ++i) {
    order_(i) = static_cast<Integer>(i);
    corner_map_(i) = static_cast<Integer>(i);
    for (Long k = 1; k <= 3; ++k) q(k, i) = CheckSingle(vertices(k, i));
    if (i >= 1) {
      // Newell's normal: the sum of P(i) x P(i-1), closed through corner 0.
      nx = Add(nx, Sub(Mul(q(3, i - 1), q(2, i)), Mul(q(2, i - 1), q(3, i))));
      ny = Add(ny, Sub(Mul(q(1, i - 1), q(3, i)), Mul(q(3, i - 1), q(1, i))));
      nz = Add(nz, Sub(Mul(q(2, i - 1), q(1, i)), Mul(q(1, i - 1), q(2, i))));
    }
  }
  const Single length = Sqrt(Add(Add(Mul(nx, nx), Mul(ny, ny)), Mul(nz, nz)));
  if (length == 0) return;  // all corners on one line: no plane to project onto
  nx = Div(nx, length);
  ny = Div(ny, length);
  nz = Div(nz, length);

  // A random axis across the normal; the same n gives the same first try.
  SeedRandom(static_cast<std::uint32_t>(n));
  Single ux = 0, uy = 0, uz = 0, u_length = 0;
  do {
    const Single r1 = Random01();
    const Single r2 = Random01();
    const Single r3 = Random01();
    ux = Sub(Mul(r2, nz), Mul(r3, ny));
    uy = Sub(Mul(r3, nx), Mul(r1, nz));
    uz = Sub(Mul(r1, ny), Mul(r2, nx));
    u_length = Sqrt(Add(Add(Mul(ux, ux), Mul(uy, uy)), Mul(uz, uz)));
    SeedRandom(ClockSeed());
  } while (u_length == 0);
  ux = Div(ux, u_length);
  uy = Div(uy, u_length);
  uz = Div(uz, u_length);
  const Single vx = Sub(Mul(uy, nz), Mul(uz, ny));
  const Single vy = Sub(Mul(uz, nx), Mul(ux, nz));
  const Single vz = Sub(Mul(ux, ny), Mul(uy, nx));

  points_.Recreate(n);
  for (Long j = 1; j <= n; ++j) {
    points_(j).x = Dot(q, j, ux, uy, uz);
    points_(j).y = Dot(q, j, vx, vy, vz);
  }
  points_(0) = points_(n);
}

BoundedArray<FacetPoint> Facetter::BuildRing(Integer n, Single& area) const {
  // The corner k of the ordered polygon.
  auto point = [this](Long k) -> const FacetPoint& { return points_(order_(k)); };

  area = 0;
  BoundedArray<Single> length(n);
  for (Long i = 1; i <= n; ++i) {
    const FacetPoint& a = point(i - 1);
    const FacetPoint& b = point(i);
    area = Add(area, Sub(Mul(a.x, b.y), Mul(b.x, a.y)));
    length(i - 1) = EdgeLength(a, b);
  }
  length(n) = length(0);

  BoundedArray<Single> weight(n);
  for (Long i = 1; i <= n; ++i) {
    const Long next = (i + 1) % n;
    if (length(i - 1) > 0 && length(i) > 0) {
      weight(i) = CornerWeight(point(i - 1), point(i), point(next), length(i - 1), length(i), area);
    }
  }
  weight(0) = weight(n);

  BoundedArray<FacetPoint> ring(n);
  for (Long i = 1; i <= n; ++i) {
    FacetPoint& corner = ring(i);
    corner.x = point(i).x;
    corner.y = point(i).y;
    corner.weight = weight(i);
    corner.cut = false;
    // A clockwise ring walks its edges backwards: keep the arriving edge.
    corner.edge_length = area < 0 ? length(i - 1) : length(i);
    corner.corner = order_(i);
  }
  ring(0) = ring(n);
  return ring;
}

void Facetter::ClipRingStraightforward(BoundedArray<FacetPoint>& ring, Integer n, Single area,
                                       Integer& corner_count) {
  StraightforwardClipper clipper(*this, ring, n, area, corner_count);
  clipper.Run();
}

void Facetter::ClipEarsStraightforward(PolygonBuffer& polygon) {
  const Integer n = polygon.corner_count;
  Single area = 0;
  BoundedArray<FacetPoint> ring = BuildRing(n, area);
  ClipRingStraightforward(ring, n, area, polygon.corner_count);
}

void Facetter::ClipEars(PolygonBuffer& polygon) {
  const Integer n = polygon.corner_count;
  Single area = 0;
  BoundedArray<FacetPoint> ring = BuildRing(n, area);
  if (ClipRingFast(ring, n, area, polygon.corner_count)) return;
  // The straightforward clipper decides: from the same ring, from the start.
  polygon.corner_count = n;
  ClearTriangles();
  ClipRingStraightforward(ring, n, area, polygon.corner_count);
}

// A polygon of two or three corners: one triangle of corners 1, 2, n
// with all edges on the border.
void Facetter::FacetSmallPolygon(Integer n) {
  FacetTriangle triangle;
  triangle.corner[0] = corner_map_(order_(1));
  triangle.corner[1] = corner_map_(order_(2));
  triangle.corner[2] = corner_map_(order_(n));
  triangle.edge_flags = 7;
  triangles_.assign(2, FacetTriangle{});
  triangles_[1] = triangle;
}

// Projection and the polygons too small to clip; the rest is left to a clipper.
void Facetter::Prepare(PolygonBuffer& polygon) {
  points_.Recreate(0);
  order_.Recreate(0);
  ClearTriangles();
  ProjectOntoPlane(polygon);
}

void Facetter::Run(PolygonBuffer& polygon) {
  Prepare(polygon);
  const Integer n = polygon.corner_count;
  if (n < 2) return;
  if (n <= 3) return FacetSmallPolygon(n);
  ClipEars(polygon);
}

void Facetter::RunStraightforward(PolygonBuffer& polygon) {
  Prepare(polygon);
  const Integer n = polygon.corner_count;
  if (n < 2) return;
  if (n <= 3) return FacetSmallPolygon(n);
  ClipEarsStraightforward(polygon);
}

}  // namespace quelo
