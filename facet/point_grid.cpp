#include "facet/point_grid.h"

namespace quelo {

namespace {

std::size_t At(int i) {
  return static_cast<std::size_t>(i);
}

double Cross(const PointGrid::Point& u, const PointGrid::Point& v, double x, double y) {
  return (v[0] - u[0]) * (y - u[1]) - (v[1] - u[1]) * (x - u[0]);
}

}  // namespace

void PointGrid::Build(const std::vector<FacetPoint>& points, int n) {
  points_ = &points;
  lo_x_ = lo_y_ = HUGE_VAL;
  hi_x_ = hi_y_ = -HUGE_VAL;
  for (int i = 1; i <= n; ++i) {
    lo_x_ = std::min(lo_x_, double{points[At(i)].x}),
    hi_x_ = std::max(hi_x_, double{points[At(i)].x});
    lo_y_ = std::min(lo_y_, double{points[At(i)].y}),
    hi_y_ = std::max(hi_y_, double{points[At(i)].y});
  }
  const double width = std::max(hi_x_ - lo_x_, 0.0), height = std::max(hi_y_ - lo_y_, 0.0);
  const double cells = std::max(1.0, static_cast<double>(n) / 2);
  const double side = std::max(std::sqrt(width * height / cells), std::max(width, height) / cells);
  cell_ = side > 0 ? side : 1;
  columns_ = std::clamp(static_cast<int>(width / cell_) + 1, 1, 1 << 14);
  rows_ = std::clamp(static_cast<int>(height / cell_) + 1, 1, 1 << 14);
  block_columns_ = (columns_ + kBlock - 1) / kBlock;
  const int block_rows = (rows_ + kBlock - 1) / kBlock;

  cell_of_.assign(At(n) + 1, 0);
  live_.assign(At(columns_ * rows_), 0);
  block_live_.assign(At(block_columns_ * block_rows), 0);
  for (int i = 1; i <= n; ++i) {
    const int row = Row(points[At(i)].y), column = Column(points[At(i)].x);
    cell_of_[At(i)] = row * columns_ + column;
    ++live_[At(cell_of_[At(i)])];
    ++block_live_[At(BlockOf(row, column))];
  }
  start_.assign(live_.size(), 0);
  for (std::size_t c = 1; c < live_.size(); ++c) start_[c] = start_[c - 1] + live_[c - 1];
  items_.assign(At(n), 0);
  slot_.assign(At(n) + 1, 0);
  std::vector<int> fill(start_);
  for (int i = 1; i <= n; ++i) {
    slot_[At(i)] = fill[At(cell_of_[At(i)])]++;
    items_[At(slot_[At(i)])] = i;
  }
}

void PointGrid::Remove(int i) {
  const int cell = cell_of_[At(i)];
  const int last = start_[At(cell)] + live_[At(cell)] - 1;
  const int moved = items_[At(last)];
  std::swap(items_[At(slot_[At(i)])], items_[At(last)]);
  slot_[At(moved)] = slot_[At(i)];
  slot_[At(i)] = last;
  --live_[At(cell)];
  --block_live_[At(BlockOf(cell / columns_, cell % columns_))];
}

bool PointGrid::BlockNear(int block_row, int block_column, const Point& a, const Point& b,
                          const Point& c, double margin) const {
  const double orientation = Cross(a, b, c[0], c[1]);
  if (orientation == 0) return true;
  // Corners are filed by a rounded division: widen the block by far more
  // than that rounding.
  const double extent =
      std::max({std::abs(lo_x_), std::abs(hi_x_), std::abs(lo_y_), std::abs(hi_y_)});
  const double pad = margin + 0x1p-40 * (extent + cell_);
  const double side = kBlock * cell_;
  double x0 = lo_x_ + block_column * side, x1 = x0 + side;
  double y0 = lo_y_ + block_row * side, y1 = y0 + side;
  if (block_column == block_columns_ - 1) x1 = std::max(x1, hi_x_);
  if (block_row == (rows_ - 1) / kBlock) y1 = std::max(y1, hi_y_);
  x0 -= pad, x1 += pad, y0 -= pad, y1 += pad;
  const double sign = orientation > 0 ? 1 : -1;
  // The block is away from the triangle when all its corners lie beyond one
  // of the triangle's edges.
  const Point* edges[3][2] = {{&a, &b}, {&b, &c}, {&c, &a}};
  for (const auto& [u, v] : edges) {
    const double limit = -pad * std::hypot((*v)[0] - (*u)[0], (*v)[1] - (*u)[1]);
    if (sign * Cross(*u, *v, x0, y0) < limit && sign * Cross(*u, *v, x1, y0) < limit &&
        sign * Cross(*u, *v, x0, y1) < limit && sign * Cross(*u, *v, x1, y1) < limit) {
      return false;
    }
  }
  return true;
}

}  // namespace quelo
