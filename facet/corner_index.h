// CornerIndex: the live corners of a ring in a k-d tree of small leaves, for
// the clipper's question "does a live corner lie in this triangle". Each node
// knows its corners' bounding box and how many of them are live, so a query
// skips empty subtrees and those that lie beyond one of the triangle's edges:
// a long thin triangle across a ring of thousands of corners visits the few
// leaves near its ends. The tree follows the corners' density, which for a
// ring is that of a curve, not of an area.
#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "facet/facetter.h"

namespace quelo {

class CornerIndex {
 public:
  using Point = std::array<double, 2>;

  // Files corners 1..n of `points` (entry 0 is unused); keeps a reference.
  void Build(const std::vector<FacetPoint>& points, int n);
  // Takes corner i out; later queries no longer offer it.
  void Remove(int i);

  // Offers every live corner within `margin` of the triangle a, b, c (and
  // some more near it) to test(i), and returns the first i that passes, or 0.
  template <class Test>
  int Find(const Point& a, const Point& b, const Point& c, double margin, Test test) const;

 private:
  struct Node {
    float x0 = 0, x1 = 0, y0 = 0, y1 = 0;  // the bounding box of its corners
    int begin = 0, end = 0;                // its corners in order_
    int live = 0;                          // how many of them are live
    int parent = -1, left = -1, right = -1;
  };
  // A query triangle with what the box test needs of its edges.
  struct Region {
    Region(const Point& a, const Point& b, const Point& c, double margin);
    // Whether the box, widened by the margin, may meet the triangle.
    bool Near(double x0, double x1, double y0, double y1) const;
    std::array<Point, 3> from, along;  // each edge's start and direction, inside to the left
    std::array<double, 3> limit;       // the margin times the edge's length, negated
    double margin;
    bool flat;  // no area: only the bounding box counts
  };
  static constexpr int kLeafSize = 8;

  int BuildNode(int begin, int end, int parent);

  const std::vector<FacetPoint>* points_ = nullptr;
  std::vector<Node> nodes_;  // the root first
  std::vector<int> order_;   // corners by leaf, each leaf's live ones first
  std::vector<int> slot_;    // per corner, its entry in order_
  std::vector<int> leaf_;    // per corner, its leaf
};

template <class Test>
int CornerIndex::Find(const Point& a, const Point& b, const Point& c, double margin,
                      Test test) const {
  const double x0 = std::min({a[0], b[0], c[0]}) - margin;
  const double x1 = std::max({a[0], b[0], c[0]}) + margin;
  const double y0 = std::min({a[1], b[1], c[1]}) - margin;
  const double y1 = std::max({a[1], b[1], c[1]}) + margin;
  const Region region(a, b, c, margin);
  int stack[64];
  int depth = 0;
  if (!nodes_.empty()) stack[depth++] = 0;
  while (depth > 0) {
    const Node& node = nodes_[static_cast<std::size_t>(stack[--depth])];
    if (node.live == 0 || node.x1 < x0 || node.x0 > x1 || node.y1 < y0 || node.y0 > y1 ||
        !region.Near(node.x0, node.x1, node.y0, node.y1)) {
      continue;
    }
    if (node.left >= 0) {
      stack[depth++] = node.right;
      stack[depth++] = node.left;
      continue;
    }
    for (int k = node.begin; k < node.begin + node.live; ++k) {
      const int d = order_[static_cast<std::size_t>(k)];
      const FacetPoint& pd = (*points_)[static_cast<std::size_t>(d)];
      if (pd.x < x0 || pd.x > x1 || pd.y < y0 || pd.y > y1 ||
          !region.Near(pd.x, pd.x, pd.y, pd.y)) {
        continue;
      }
      if (test(d)) return d;
    }
  }
  return 0;
}

}  // namespace quelo
