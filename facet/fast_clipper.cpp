// The fast ear clipper. It makes the choices of the straightforward one, pass
// for pass, without scanning the whole ring each pass:
// - the ring is a linked list; ring positions keep the order of the input
//   corners, so "the first of equal ears" is the one of the lowest corner;
// - each corner's state (convex, diagonal, ear, the four candidate weights and
//   the score) is kept and recomputed only for the corners whose inputs a clip
//   changed: the two corners beside the clipped one get new neighbours, the
//   next corner out on either side reads the new diagonal's stored length, and
//   corners that were blocked only by the clipped corner may become ears;
// - "does a ring point lie in this triangle" is asked of a k-d tree, near the
//   triangle only, with a margin that covers the rounding of the inside test;
// - the best ear comes from a heap ordered by score, then corner.
// - a pass without an ear clips at the position chosen last once more, with
//   the values the straightforward clipper's tables and ring array hold
//   there, entries left behind the shrinking ring included.
// Where it would take another path (a zero diagonal, an arithmetic fault,
// coordinates so large or triangles so thin that the margin cannot be vouched
// for) this one gives up, and the straightforward clipper runs from the start.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <queue>
#include <vector>

#include "common/runtime_error.h"
#include "facet/corner_index.h"
#include "facet/facet_math.h"
#include "facet/facetter.h"

namespace quelo {

using namespace facet_math;

namespace {

// Beyond these the margin argument does not hold: the fast path declines.
constexpr double kMaxCoordinate = 0x1p60;
constexpr double kMinTriangleSize = 0x1p-90;
constexpr double kEpsilon = 0x1p-24;
// Above this relative rounding of the inside test, every point is tested.
constexpr double kMaxRelativeError = 0.25;
constexpr int kWalkedRingSize = 24;

// Thrown inside the fast clipper where it cannot vouch for the answer.
struct Decline {};

class FastClipper {
 public:
  FastClipper(const BoundedArray<FacetPoint>& ring, Integer n, Single area)
      : n_(n), area_(area), point_(static_cast<std::size_t>(n) + 1) {
    for (Long i = 1; i <= n; ++i) point_[static_cast<std::size_t>(i)] = ring(i);
  }

  // Clips to the end; false where the straightforward clipper must decide.
  bool Run(std::vector<FacetTriangle>& clipped, Integer& corner_count) {
    try {
      Setup();
      while (size_ > 3) ClipNext(clipped, corner_count);
      ClipLast(clipped, corner_count);
      return true;
    } catch (const Decline&) {
      return false;
    } catch (const RuntimeError&) {
      return false;
    }
  }

 private:
  struct Corner {
    int prev = 0, next = 0;
    bool alive = true;
    bool ear = false;
    bool zero_diagonal = false;
    int witness = 0;  // a ring point inside the triangle, 0 when none is known
    int version = 0;  // of the heap entry that is valid
    Single diagonal = 0;
    Single candidate0 = 0, candidate3 = 0;  // the weights the clip gives its neighbours
  };
  struct HeapEntry {
    Single score;
    int corner;
    int version;
    // The heap's top is the lowest score, then the lowest corner.
    bool operator<(const HeapEntry& other) const {
      if (score != other.score) return score > other.score;
      return corner > other.corner;
    }
  };

  std::size_t At(int i) const { return static_cast<std::size_t>(i); }
  const FacetPoint& P(int i) const { return point_[At(i)]; }
  Corner& C(int i) { return corner_[At(i)]; }
  bool Convex(int i) const { return point_[At(i)].weight > 0; }

  // The stored length of the ring edge from -> to, where ClipChosen keeps it.
  Single StoredLength(int from, int to) const {
    return area_ < 0 ? P(to).edge_length : P(from).edge_length;
  }

  void Setup() {
    corner_.assign(At(n_) + 1, Corner{});
    double lo_x = HUGE_VAL, hi_x = -HUGE_VAL, lo_y = HUGE_VAL, hi_y = -HUGE_VAL;
    for (int i = 1; i <= n_; ++i) {
      C(i).prev = i == 1 ? n_ : i - 1;
      C(i).next = i == n_ ? 1 : i + 1;
      const double x = P(i).x, y = P(i).y;
      if (!(std::abs(x) <= kMaxCoordinate && std::abs(y) <= kMaxCoordinate)) throw Decline{};
      lo_x = std::min(lo_x, x), hi_x = std::max(hi_x, x);
      lo_y = std::min(lo_y, y), hi_y = std::max(hi_y, y);
    }
    size_ = n_;
    rank_tree_.assign(At(n_) + 1, 0);
    for (int i = 1; i <= n_; ++i) RankAdd(i, 1);
    extent_ = std::max(hi_x - lo_x, hi_y - lo_y);
    index_.Build(point_, n_);
    watchers_.assign(At(n_) + 1, {});
    tail_.assign(At(n_) + 1, FacetPoint{});
    for (int i = 1; i <= n_; ++i) Evaluate(i);
  }

  // ---- The inside question ----------------------------------------------

  // A ring point other than a, b, c that InsideTriangle counts as inside the
  // triangle a, b, c; 0 when there is none.
  int FindInside(int a, int b, int c) {
    const FacetPoint &pa = P(a), &pb = P(b), &pc = P(c);
    auto inside = [&](int d) {
      return d != a && d != b && d != c && C(d).alive && PointInTriangle(pa, pb, pc, P(d));
    };
    const double e1x = double{pb.x} - pa.x, e1y = double{pb.y} - pa.y;
    const double e2x = double{pc.x} - pa.x, e2y = double{pc.y} - pa.y;
    const double size = std::max(std::abs(e1x) + std::abs(e1y), std::abs(e2x) + std::abs(e2y));
    if (size < kMinTriangleSize) throw Decline{};
    const Single det = Cross(Sub(pb.x, pa.x), Sub(pb.y, pa.y), Sub(pc.x, pa.x), Sub(pc.y, pa.y));
    double relative = 0;
    if (det != 0) {
      const double spread = std::abs(e1x * e2y) + std::abs(e1y * e2x);
      relative = 32 * kEpsilon * (spread / std::abs(double{det}) + 1);
      // The quotients of the inside test must stay far from overflowing for
      // every point of the ring, or the straightforward clipper might fault.
      if (4 * size * (extent_ + 1) / std::abs(double{det}) > 0x1p120) throw Decline{};
    }
    // Small rings are quicker to walk than to look up.
    if (relative > kMaxRelativeError || size_ <= kWalkedRingSize) {
      for (int d = C(a).next; d != a; d = C(d).next) {
        if (inside(d)) return d;
      }
      return 0;
    }
    const double margin = (3 * relative + 0x1p-16) * size + 0x1p-40;
    return index_.Find({pa.x, pa.y}, {pb.x, pb.y}, {pc.x, pc.y}, margin, inside);
  }

  // ---- Corner state ------------------------------------------------------

  // The state of corner i from its neighbours: what the straightforward
  // clipper's pass computes at i's position.
  void Evaluate(int i) {
    Corner& c = C(i);
    c.ear = false;
    c.witness = 0;
    SetZeroDiagonal(i, false);
    ++c.version;
    if (!Convex(i)) return;
    const int p = c.prev, q = c.next;
    c.diagonal = DiagonalLength(P(p), P(q));
    if (c.diagonal == 0) return SetZeroDiagonal(i, true);
    c.witness = FindInside(p, i, q);
    if (c.witness != 0) {
      watchers_[At(c.witness)].push_back(i);
      return;
    }
    c.ear = true;
    Score(i);
  }

  void SetZeroDiagonal(int i, bool zero) {
    Corner& c = C(i);
    if (c.zero_diagonal != zero) zero_diagonals_ += zero ? 1 : -1;
    c.zero_diagonal = zero;
  }

  // The four candidate weights of the ear at i; the largest is its score.
  void Score(int i) {
    Corner& c = C(i);
    const int p = c.prev, q = c.next;
    const int before_p = C(p).prev, after_q = C(q).next;
    const Single dg = c.diagonal;
    const Single w0 = CornerWeight(P(before_p), P(p), P(q), StoredLength(before_p, p), dg, area_);
    const Single w1 = CornerWeight(P(q), P(p), P(i), dg, StoredLength(p, i), area_);
    const Single w2 = CornerWeight(P(i), P(q), P(p), StoredLength(i, q), dg, area_);
    const Single w3 = CornerWeight(P(p), P(q), P(after_q), dg, StoredLength(q, after_q), area_);
    c.candidate0 = w0;
    c.candidate3 = w3;
    ++c.version;
    heap_.push({std::max({w0, w1, w2, w3}), i, c.version});
  }

  // ---- Clipping ----------------------------------------------------------

  void ClipNext(std::vector<FacetTriangle>& clipped, Integer& corner_count) {
    if (zero_diagonals_ > 0) throw Decline{};
    while (!heap_.empty()) {
      const HeapEntry top = heap_.top();
      const Corner& c = C(top.corner);
      if (c.alive && c.ear && c.version == top.version) break;
      heap_.pop();
    }
    // Stale edge lengths can push a weight past 1: a score of 2 or more is
    // no ear to choose, though its candidate weights enter the tables.
    if (heap_.empty() || !(heap_.top().score < 2.0f)) return ClipStale(clipped, corner_count);
    const int b = heap_.top().corner;
    heap_.pop();
    chosen_rank_ = Rank(b);
    chosen_diagonal_ = C(b).diagonal;
    chosen_candidate0_ = C(b).candidate0;
    chosen_candidate3_ = C(b).candidate3;
    const int p = C(b).prev, q = C(b).next;
    Record(clipped, P(p), P(b), P(q), (P(p).cut ? 0 : 1) + (P(b).cut ? 0 : 2));
    Remove(b, true, corner_count);
  }

  // A pass that finds no ear clips at the position chosen last once more,
  // with what the straightforward clipper's tables and ring array hold there:
  // the diagonal is rewritten where a convex corner stands at that position,
  // the candidate weights where an unchosen ear does, and a position
  // past the ring's end reads the entries left behind as the ring shrank.
  void ClipStale(std::vector<FacetTriangle>& clipped, Integer& corner_count) {
    const int s = size_;
    const int b = chosen_rank_;
    if (b < 1 || b > n_) throw Decline{};
    if (s > 3 && b <= s && Convex(AtRank(b))) {
      const Corner& c = C(AtRank(b));
      chosen_diagonal_ = c.diagonal;
      if (c.ear) chosen_candidate0_ = c.candidate0, chosen_candidate3_ = c.candidate3;
    }
    const int p = b == 1 ? s : b - 1;
    const int q = (b + 1) % s == 0 ? s : (b + 1) % s;
    const FacetPoint &pp = Entry(p), &pb = Entry(b), &pq = Entry(q);
    Record(clipped, pp, pb, pq, (pp.cut ? 0 : 1) + (pb.cut ? 0 : 2) + (s == 3 && !pq.cut ? 4 : 0));
    if (s == 3) return;
    if (b <= s) return Remove(AtRank(b), true, corner_count);
    // Past the end nothing moves: the ring loses its last position, and the
    // cut mark goes to an entry behind it.
    Remove(AtRank(s), false, corner_count);
    tail_[At(b - 1)].cut = true;
  }

  // Takes corner r out of the ring. With `rejoin` its neighbours are joined by
  // the new diagonal: its length, the cut mark and the candidate weights of
  // the chosen ear go to them. The ring array's last entry stays behind the
  // shrunk ring, where a later pass may read it.
  void Remove(int r, bool rejoin, Integer& corner_count) {
    tail_[At(size_)] = P(AtRank(size_));
    --size_;
    corner_count = static_cast<Integer>(size_);
    Corner& cr = C(r);
    cr.alive = false;
    cr.ear = false;
    RankAdd(r, -1);
    index_.Remove(r);
    const int p = cr.prev, q = cr.next;
    C(p).next = q;
    C(q).prev = p;
    if (rejoin) {
      if (area_ < 0) {
        point_[At(q)].edge_length = chosen_diagonal_;
      } else {
        point_[At(p)].edge_length = chosen_diagonal_;
      }
      point_[At(p)].cut = true;
      point_[At(p)].weight = chosen_candidate0_;
      point_[At(q)].weight = chosen_candidate3_;
    }
    if (size_ == 3) return;  // the last pass looks at convexity only

    Evaluate(p);
    Evaluate(q);
    for (int outer : {C(p).prev, C(q).next}) {
      if (C(outer).ear) Score(outer);
    }
    std::vector<int> watching;
    watching.swap(watchers_[At(r)]);
    for (int w : watching) {
      Corner& cw = C(w);
      if (cw.alive && cw.witness == r && w != p && w != q) Evaluate(w);
    }
  }

  // The ring array's entry at `position`: a ring corner, or one left behind.
  const FacetPoint& Entry(int position) const {
    return position <= size_ ? P(AtRank(position)) : tail_[At(position)];
  }

  // The last pass: the first convex corner of the three, by position.
  void ClipLast(std::vector<FacetTriangle>& clipped, Integer& corner_count) {
    for (int i = 1; i <= n_; ++i) {
      if (C(i).alive && Convex(i)) {
        const int p = C(i).prev, q = C(i).next;
        return Record(clipped, P(p), P(i), P(q),
                      (P(p).cut ? 0 : 1) + (P(i).cut ? 0 : 2) + (P(q).cut ? 0 : 4));
      }
    }
    ClipStale(clipped, corner_count);
  }

  void Record(std::vector<FacetTriangle>& clipped, const FacetPoint& p, const FacetPoint& b,
              const FacetPoint& q, Long bits) {
    FacetTriangle t;
    t.corner[0] = p.corner;
    t.corner[1] = b.corner;
    t.corner[2] = q.corner;
    t.edge_flags = bits;
    clipped.push_back(t);
  }

  // Ring positions: the rank of a live corner among the live ones.
  void RankAdd(int i, int delta) {
    for (; i <= n_; i += i & -i) rank_tree_[At(i)] += delta;
  }
  int Rank(int i) const {
    int sum = 0;
    for (; i > 0; i -= i & -i) sum += rank_tree_[At(i)];
    return sum;
  }
  int AtRank(int rank) const {
    int i = 0;
    for (int step = std::bit_floor(static_cast<unsigned>(n_)); step > 0; step >>= 1) {
      if (i + step <= n_ && rank_tree_[At(i + step)] < rank) {
        i += step;
        rank -= rank_tree_[At(i)];
      }
    }
    return i + 1;
  }

  int n_;
  Single area_;
  int size_ = 0;
  std::vector<int> rank_tree_;
  // What the straightforward clipper's tables hold at the position chosen
  // last: its diagonal (rewritten by every pass that finds a convex corner
  // there) and the candidate weights of the ear chosen there.
  int chosen_rank_ = 0;
  Single chosen_diagonal_ = 0, chosen_candidate0_ = 0, chosen_candidate3_ = 0;
  std::vector<FacetPoint> point_;  // 1..n, updated as the ring changes
  std::vector<FacetPoint> tail_;   // entries past the ring's end, by position
  std::vector<Corner> corner_;
  std::vector<std::vector<int>> watchers_;  // corners blocked by each point
  std::priority_queue<HeapEntry> heap_;
  int zero_diagonals_ = 0;  // live convex corners whose diagonal has length 0
  double extent_ = 0;       // the longer side of the ring's bounding box
  CornerIndex index_;       // the live corners
};

}  // namespace

bool Facetter::ClipRingFast(const BoundedArray<FacetPoint>& ring, Integer n, Single area,
                            Integer& corner_count) {
  std::vector<FacetTriangle> clipped;
  clipped.reserve(static_cast<std::size_t>(n));
  FastClipper clipper(ring, n, area);
  if (!clipper.Run(clipped, corner_count)) return false;
  triangles_.assign(1, FacetTriangle{});
  for (const FacetTriangle& t : clipped) {
    FacetTriangle mapped = t;
    for (Long& corner : mapped.corner) corner = corner_map_(corner);
    triangles_.push_back(mapped);
  }
  return true;
}

}  // namespace quelo
