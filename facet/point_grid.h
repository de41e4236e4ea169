// PointGrid: the live corners of a ring in a uniform grid of about two
// corners per cell, for the clipper's question "does a live corner lie in
// this triangle". Cells are grouped into blocks that count their live
// corners, so a query skips empty space and blocks that the triangle does not
// come near: a large triangle inside a ring meets few corners, and the query
// costs about what it finds rather than the triangle's area.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "facet/facetter.h"

namespace quelo {

class PointGrid {
 public:
  using Point = std::array<double, 2>;

  // Files corners 1..n of `points` (entry 0 is unused).
  void Build(const std::vector<FacetPoint>& points, int n);
  // Takes corner i out; later queries no longer offer it.
  void Remove(int i);

  // Offers every live corner within `margin` of the triangle a, b, c (and a
  // few more near it) to test(i), and returns the first i that passes, or 0.
  template <class Test>
  int Find(const Point& a, const Point& b, const Point& c, double margin, Test test) const;

 private:
  static constexpr int kBlock = 8;  // cells per block side

  int Column(double x) const {
    return std::clamp(static_cast<int>(std::floor((x - lo_x_) / cell_)), 0, columns_ - 1);
  }
  int Row(double y) const {
    return std::clamp(static_cast<int>(std::floor((y - lo_y_) / cell_)), 0, rows_ - 1);
  }
  int BlockOf(int row, int column) const { return row / kBlock * block_columns_ + column / kBlock; }
  // Whether the block's rectangle, widened by `margin`, may meet the triangle.
  bool BlockNear(int block_row, int block_column, const Point& a, const Point& b, const Point& c,
                 double margin) const;

  const std::vector<FacetPoint>* points_ = nullptr;
  double lo_x_ = 0, lo_y_ = 0, hi_x_ = 0, hi_y_ = 0, cell_ = 1;
  int columns_ = 1, rows_ = 1, block_columns_ = 1;
  std::vector<int> start_;       // per cell, its first entry in items_
  std::vector<int> live_;        // per cell, how many of its entries are live
  std::vector<int> block_live_;  // per block, the live corners in its cells
  std::vector<int> items_;       // corners by cell, the live ones first
  std::vector<int> slot_;        // per corner, its entry in items_
  std::vector<int> cell_of_;     // per corner, its cell
};

template <class Test>
int PointGrid::Find(const Point& a, const Point& b, const Point& c, double margin,
                    Test test) const {
  const double x0 = std::min({a[0], b[0], c[0]}) - margin;
  const double x1 = std::max({a[0], b[0], c[0]}) + margin;
  const double y0 = std::min({a[1], b[1], c[1]}) - margin;
  const double y1 = std::max({a[1], b[1], c[1]}) + margin;
  const int first_row = Row(y0), last_row = Row(y1);
  const int first_column = Column(x0), last_column = Column(x1);
  for (int block_row = first_row / kBlock; block_row <= last_row / kBlock; ++block_row) {
    for (int block_column = first_column / kBlock; block_column <= last_column / kBlock;
         ++block_column) {
      if (block_live_[static_cast<std::size_t>(block_row * block_columns_ + block_column)] == 0 ||
          !BlockNear(block_row, block_column, a, b, c, margin)) {
        continue;
      }
      const int row_end = std::min(last_row, block_row * kBlock + kBlock - 1);
      const int column_end = std::min(last_column, block_column * kBlock + kBlock - 1);
      for (int row = std::max(first_row, block_row * kBlock); row <= row_end; ++row) {
        for (int column = std::max(first_column, block_column * kBlock); column <= column_end;
             ++column) {
          const auto cell = static_cast<std::size_t>(row * columns_ + column);
          const int begin = start_[cell], end = begin + live_[cell];
          for (int k = begin; k < end; ++k) {
            const int d = items_[static_cast<std::size_t>(k)];
            const FacetPoint& pd = (*points_)[static_cast<std::size_t>(d)];
            if (pd.x < x0 || pd.x > x1 || pd.y < y0 || pd.y > y1) continue;
            if (test(d)) return d;
          }
        }
      }
    }
  }
  return 0;
}

}  // namespace quelo
