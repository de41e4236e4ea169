#include "facet/facetter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "common/runtime_error.h"
#include "facet/polygon_buffer.h"

namespace quelo {

std::vector<FacetTriangle> FacetTriangles(1);
BoundedArray<FacetPoint> FacetPoints(0);
BoundedArray<Integer> FacetOrder(0);
BoundedArray<Integer> FacetCornerMap(0);

namespace {

// Each arithmetic step is rounded to Single and checked on its own, so a
// fault is raised at the step that makes it, never passed on as inf or NaN.

// The result of one Single operation; an infinity or NaN raises 6. This is
// CheckSingle for a result that is already a float, kept inline because the
// clipper's inner loop is made of little else.
inline Single Checked(Single v) {
  if (!std::isfinite(v)) Raise(kErrOverflow);
  return v;
}
// a + b in single precision.
inline Single Add(Single a, Single b) {
  return Checked(a + b);
}
// a - b in single precision.
inline Single Sub(Single a, Single b) {
  return Checked(a - b);
}
// a * b in single precision.
inline Single Mul(Single a, Single b) {
  return Checked(a * b);
}
// a / b in single precision.
inline Single Div(Single a, Single b) {
  if (b == 0) Raise(a == 0 ? kErrOverflow : kErrDivisionByZero);
  return Checked(a / b);
}
// Square root in single precision.
Single Sqrt(Single v) {
  return SqrtSingle(v);
}

// The generator of the random in-plane axis: SplitMix64, because every
// polygon seeds it (twice), and seeding a Mersenne Twister costs more than
// triangulating a small polygon.
std::uint64_t random_state = 0;

// Seeds the axis generator.
void SeedRandom(std::uint32_t seed) {
  random_state = seed;
}

// A uniform number in [0, 1) from the top 24 bits of the generator, exact in Single.
Single Random01() {
  std::uint64_t z = (random_state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<Single>(z >> 40) * (1.0f / 16777216.0f);
}

// A clock reading to re-seed the axis generator with.
std::uint32_t ClockSeed() {
  return static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// The orientation product of four points: (a - b) x (c - d).
Single Orientation(const FacetPoint& a, const FacetPoint& b, const FacetPoint& c,
                   const FacetPoint& d) {
  const Single left = Mul(Sub(a.x, b.x), Sub(c.y, d.y));
  const Single right = Mul(Sub(c.x, d.x), Sub(a.y, b.y));
  return Sub(left, right);
}

// The 2-D cross product ax * by - ay * bx.
Single Cross(Single ax, Single ay, Single bx, Single by) {
  return Sub(Mul(ax, by), Mul(ay, bx));
}

// Length of the edge a -> b with the squares in double precision, as Single.
Single EdgeLength(const FacetPoint& a, const FacetPoint& b) {
  const Single dy = Sub(a.y, b.y);
  const Single dx = Sub(a.x, b.x);
  const double dy2 = CheckDouble(static_cast<double>(dy) * dy);
  const double dx2 = CheckDouble(static_cast<double>(dx) * dx);
  return CheckSingle(SqrtDouble(CheckDouble(dy2 + dx2)));
}

// Length of the diagonal a - b, all in single precision.
Single DiagonalLength(const FacetPoint& a, const FacetPoint& b) {
  const Single dx = Sub(a.x, b.x);
  const Single dy = Sub(a.y, b.y);
  return Sqrt(Add(Mul(dx, dx), Mul(dy, dy)));
}

// Signed sharpness of corner b on the walk a -> b -> c with edge lengths
// len_ab and len_bc: the sine of half the turning angle, positive when the
// walk turns the same way as a polygon whose signed area is `area`.
Single CornerWeight(const FacetPoint& a, const FacetPoint& b, const FacetPoint& c, Single len_ab,
                    Single len_bc, Single area) {
  const int sign = Sgn(Orientation(a, b, b, c)) * Sgn(area);
  const Single dot = Add(Mul(Sub(b.x, a.x), Sub(c.x, b.x)), Mul(Sub(b.y, a.y), Sub(c.y, b.y)));
  const Single cosine = Div(dot, Mul(len_ab, len_bc));
  Single f = Sub(1.0f, cosine);
  if (f < 0) f = 0;
  return Mul(Sqrt(Mul(f, 0.5f)), static_cast<Single>(sign));
}

// The dot product of corner `corner` of the Single copy q with axis (ax, ay, az).
Single Dot(const BoundedTable<Single>& q, Long corner, Single ax, Single ay, Single az) {
  return Add(Add(Mul(q(1, corner), ax), Mul(q(2, corner), ay)), Mul(q(3, corner), az));
}

// A polygon of two or three corners: one triangle of corners 1, 2, n
// with all edges on the border.
void FacetSmallPolygon(Integer n) {
  FacetTriangle triangle;
  triangle.corner[0] = FacetCornerMap(FacetOrder(1));
  triangle.corner[1] = FacetCornerMap(FacetOrder(2));
  triangle.corner[2] = FacetCornerMap(FacetOrder(n));
  triangle.edge_flags = 7;
  FacetTriangles.assign(2, FacetTriangle{});
  FacetTriangles[1] = triangle;
}

// The working state of one ClipRing run.
class EarClipper {
 public:
  // Prepares the tables for a ring of n corners.
  EarClipper(BoundedArray<FacetPoint>& ring, Integer n, Single area, Integer& corner_count)
      : ring_(ring),
        corner_count_(corner_count),
        size_(n),
        area_(area),
        clipped_(n - 2, 3),
        edge_bits_(n - 2),
        diagonal_(n),
        candidate_(n, 3) {}

  // Clips until three corners are left, then writes FacetTriangles.
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
    FacetTriangles.assign(static_cast<std::size_t>(count_) + 1, FacetTriangle{});
    for (Long t = 1; t <= count_; ++t) {
      FacetTriangle& triangle = FacetTriangles[static_cast<std::size_t>(t)];
      for (Long column = 1; column <= 3; ++column) {
        triangle.corner[column - 1] = FacetCornerMap(clipped_(t, column));
      }
      triangle.edge_flags = edge_bits_(t);
    }
  }

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

}  // namespace

Single OrientationProduct(Long a, Long b, Long c, Long d) {
  return Orientation(FacetPoints(a), FacetPoints(b), FacetPoints(c), FacetPoints(d));
}

bool InsideTriangle(const BoundedArray<FacetPoint>& ring, Long a, Long b, Long c, Long d) {
  const FacetPoint& pa = ring(a);
  const FacetPoint& pb = ring(b);
  const FacetPoint& pc = ring(c);
  const FacetPoint& pd = ring(d);
  if (pd.corner == pa.corner || pd.corner == pb.corner || pd.corner == pc.corner) return false;
  const Single e1x = Sub(pb.x, pa.x);
  const Single e1y = Sub(pb.y, pa.y);
  const Single e2x = Sub(pc.x, pa.x);
  const Single e2y = Sub(pc.y, pa.y);
  const Single wx = Sub(pd.x, pa.x);
  const Single wy = Sub(pd.y, pa.y);
  const Single det = Cross(e1x, e1y, e2x, e2y);
  if (det != 0) {
    // d = a + t e1 + s e2; the border (a zero coefficient or s + t = 1) is inside.
    const Single s = Div(Cross(e1x, e1y, wx, wy), det);
    const Single t = Div(Cross(wx, wy, e2x, e2y), det);
    if (s == 0) return 0 <= t && t <= 1;
    if (s < 0) return false;
    if (t == 0) return s <= 1;
    if (t < 0) return false;
    return Add(s, t) <= 1;
  }
  // a, b, c on one line: d must lie on it, between a and b or a and c.
  if (wx == 0 && wy == 0) return true;
  if (Cross(e1x, e1y, wx, wy) != 0 || Cross(wx, wy, e2x, e2y) != 0) return false;
  const Single components[4][2] = {{e1x, wx}, {e1y, wy}, {e2x, wx}, {e2y, wy}};
  for (const auto& [e, w] : components) {
    if (e == 0) continue;
    if (Mul(Sub(e, w), w) >= 0) return true;
  }
  return false;
}

void ProjectOntoPlane(PolygonBuffer& polygon) {
  TessVertexArray& vertices = polygon.vertices;
  const Integer n = polygon.corner_count;
  for (Long k = 1; k <= 3; ++k) vertices(k, 0) = vertices(k, n);

  FacetOrder.Recreate(n);
  FacetCornerMap.Recreate(n);
  BoundedTable<Single> q(3, n);
  Single nx = 0, ny = 0, nz = 0;
  for (Long i = 0; i <= n; ++i) {
    FacetOrder(i) = static_cast<Integer>(i);
    FacetCornerMap(i) = static_cast<Integer>(i);
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

  FacetPoints.Recreate(n);
  for (Long j = 1; j <= n; ++j) {
    FacetPoints(j).x = Dot(q, j, ux, uy, uz);
    FacetPoints(j).y = Dot(q, j, vx, vy, vz);
  }
  FacetPoints(0) = FacetPoints(n);
}

BoundedArray<FacetPoint> BuildFacetRing(Integer n, Single& area) {
  // The corner k of the ordered polygon.
  auto point = [](Long k) -> const FacetPoint& { return FacetPoints(FacetOrder(k)); };

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
    corner.corner = FacetOrder(i);
  }
  ring(0) = ring(n);
  return ring;
}

void ClipRing(BoundedArray<FacetPoint>& ring, Integer n, Single area, Integer& corner_count) {
  EarClipper clipper(ring, n, area, corner_count);
  clipper.Run();
}

void ClipEars(PolygonBuffer& polygon) {
  const Integer n = polygon.corner_count;
  Single area = 0;
  BoundedArray<FacetPoint> ring = BuildFacetRing(n, area);
  ClipRing(ring, n, area, polygon.corner_count);
}

void RunFacetter(PolygonBuffer& polygon) {
  FacetPoints.Recreate(0);
  FacetOrder.Recreate(0);
  FacetTriangles.assign(1, FacetTriangle{});
  ProjectOntoPlane(polygon);
  const Integer n = polygon.corner_count;
  if (n < 2) return;
  if (n <= 3) {
    FacetSmallPolygon(n);
    return;
  }
  ClipEars(polygon);
}

}  // namespace quelo
