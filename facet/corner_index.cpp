#include "facet/corner_index.h"

#include <cmath>

namespace quelo {

namespace {

std::size_t At(int i) {
  return static_cast<std::size_t>(i);
}

double Cross(const CornerIndex::Point& u, const CornerIndex::Point& v, double x, double y) {
  return (v[0] - u[0]) * (y - u[1]) - (v[1] - u[1]) * (x - u[0]);
}

}  // namespace

void CornerIndex::Build(const std::vector<FacetPoint>& points, int n) {
  points_ = &points;
  nodes_.clear();
  nodes_.reserve(At(2 * (n / kLeafSize + 1)));
  order_.resize(At(n));
  for (int i = 0; i < n; ++i) order_[At(i)] = i + 1;
  slot_.assign(At(n) + 1, 0);
  leaf_.assign(At(n) + 1, 0);
  if (n > 0) BuildNode(0, n, -1);
}

int CornerIndex::BuildNode(int begin, int end, int parent) {
  const int index = static_cast<int>(nodes_.size());
  nodes_.push_back({});
  Node node;
  node.begin = begin, node.end = end, node.live = end - begin, node.parent = parent;
  const FacetPoint& first = (*points_)[At(order_[At(begin)])];
  node.x0 = node.x1 = first.x, node.y0 = node.y1 = first.y;
  for (int k = begin; k < end; ++k) {
    const FacetPoint& p = (*points_)[At(order_[At(k)])];
    node.x0 = std::min(node.x0, p.x), node.x1 = std::max(node.x1, p.x);
    node.y0 = std::min(node.y0, p.y), node.y1 = std::max(node.y1, p.y);
  }
  if (end - begin <= kLeafSize) {
    for (int k = begin; k < end; ++k) {
      slot_[At(order_[At(k)])] = k;
      leaf_[At(order_[At(k)])] = index;
    }
  } else {
    // Halve along the box's longer side; the median keeps the tree balanced.
    const bool by_x = double{node.x1} - node.x0 >= double{node.y1} - node.y0;
    const int middle = begin + (end - begin) / 2;
    std::nth_element(order_.begin() + begin, order_.begin() + middle, order_.begin() + end,
                     [this, by_x](int i, int j) {
                       const FacetPoint &p = (*points_)[At(i)], &q = (*points_)[At(j)];
                       return by_x ? p.x < q.x : p.y < q.y;
                     });
    node.left = BuildNode(begin, middle, index);
    node.right = BuildNode(middle, end, index);
  }
  nodes_[At(index)] = node;
  return index;
}

void CornerIndex::Remove(int i) {
  Node& leaf = nodes_[At(leaf_[At(i)])];
  const int last = leaf.begin + leaf.live - 1;
  const int moved = order_[At(last)];
  std::swap(order_[At(slot_[At(i)])], order_[At(last)]);
  slot_[At(moved)] = slot_[At(i)];
  slot_[At(i)] = last;
  for (int node = leaf_[At(i)]; node >= 0; node = nodes_[At(node)].parent) --nodes_[At(node)].live;
}

CornerIndex::Region::Region(const Point& a, const Point& b, const Point& c, double widen)
    : margin(widen) {
  const double orientation = Cross(a, b, c[0], c[1]);
  flat = orientation == 0;
  const std::array<Point, 3> corners = orientation > 0 ? std::array{a, b, c} : std::array{a, c, b};
  for (std::size_t k = 0; k < 3; ++k) {
    const Point& u = corners[k];
    const Point& v = corners[(k + 1) % 3];
    from[k] = u;
    along[k] = {v[0] - u[0], v[1] - u[1]};
    limit[k] = -margin * std::sqrt(along[k][0] * along[k][0] + along[k][1] * along[k][1]);
  }
}

bool CornerIndex::Region::Near(double x0, double x1, double y0, double y1) const {
  if (flat) return true;
  // Away from the triangle when the whole box lies beyond one of its edges
  // by more than the margin: test the box's centre, less its reach.
  const double cx = (x0 + x1) / 2, cy = (y0 + y1) / 2;
  const double hx = (x1 - x0) / 2 + margin, hy = (y1 - y0) / 2 + margin;
  for (std::size_t k = 0; k < 3; ++k) {
    const double side = along[k][0] * (cy - from[k][1]) - along[k][1] * (cx - from[k][0]);
    if (side + std::abs(along[k][1]) * hx + std::abs(along[k][0]) * hy < limit[k]) return false;
  }
  return true;
}

}  // namespace quelo
