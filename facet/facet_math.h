// The facetter's arithmetic: each step is rounded to Single and checked on
// its own, so a fault is raised at the step that makes it, never passed on as
// inf or NaN. Both clippers compute through these, so that they round alike.
#pragma once

#include <cmath>

#include "common/numbers.h"
#include "common/runtime_error.h"
#include "facet/facetter.h"

namespace quelo::facet_math {

// The result of one Single operation; an infinity or NaN raises 6. This is
// CheckSingle for a result that is already a float, kept inline because the
// clipper's inner loop is made of little else.
inline Single Checked(Single v) {
  if (!std::isfinite(v)) Raise(kErrOverflow);
  return v;
}
inline Single Add(Single a, Single b) {
  return Checked(a + b);
}
inline Single Sub(Single a, Single b) {
  return Checked(a - b);
}
inline Single Mul(Single a, Single b) {
  return Checked(a * b);
}
inline Single Div(Single a, Single b) {
  if (b == 0) Raise(a == 0 ? kErrOverflow : kErrDivisionByZero);
  return Checked(a / b);
}
inline Single Sqrt(Single v) {
  return SqrtSingle(v);
}

// The orientation product of four points: (a - b) x (c - d).
inline Single Orientation(const FacetPoint& a, const FacetPoint& b, const FacetPoint& c,
                          const FacetPoint& d) {
  const Single left = Mul(Sub(a.x, b.x), Sub(c.y, d.y));
  const Single right = Mul(Sub(c.x, d.x), Sub(a.y, b.y));
  return Sub(left, right);
}

// The 2-D cross product ax * by - ay * bx.
inline Single Cross(Single ax, Single ay, Single bx, Single by) {
  return Sub(Mul(ax, by), Mul(ay, bx));
}

// Length of the diagonal a - b, all in single precision.
inline Single DiagonalLength(const FacetPoint& a, const FacetPoint& b) {
  const Single dx = Sub(a.x, b.x);
  const Single dy = Sub(a.y, b.y);
  return Sqrt(Add(Mul(dx, dx), Mul(dy, dy)));
}

// Signed sharpness of corner b on the walk a -> b -> c with edge lengths
// len_ab and len_bc: the sine of half the turning angle, positive when the
// walk turns the same way as a polygon whose signed area is `area`.
inline Single CornerWeight(const FacetPoint& a, const FacetPoint& b, const FacetPoint& c,
                           Single len_ab, Single len_bc, Single area) {
  const int sign = Sgn(Orientation(a, b, b, c)) * Sgn(area);
  const Single dot = Add(Mul(Sub(b.x, a.x), Sub(c.x, b.x)), Mul(Sub(b.y, a.y), Sub(c.y, b.y)));
  const Single cosine = Div(dot, Mul(len_ab, len_bc));
  Single f = Sub(1.0f, cosine);
  if (f < 0) f = 0;
  return Mul(Sqrt(Mul(f, 0.5f)), static_cast<Single>(sign));
}

// The inside test of InsideTriangle on the points themselves, for a d that is
// none of the triangle's own corners.
inline bool PointInTriangle(const FacetPoint& pa, const FacetPoint& pb, const FacetPoint& pc,
                            const FacetPoint& pd) {
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

}  // namespace quelo::facet_math
