#include "form/cursor_pictures.h"

#include <cmath>
#include <map>
#include <string>
#include <utility>

namespace quelo {
namespace {

constexpr int kN = CursorPicture::kSize;

// A tiny paint box. Pictures are made of "paper" (white areas that get a black
// outline) and "ink" (black strokes that get a white halo), so that every
// cursor stays visible on both the white background and dark scenes.
class Canvas {
 public:
  Canvas() : cells_(kN * kN, kClear) {}

  // White area, outlined later by Outline().
  template <typename Inside>
  void Paper(Inside inside) {
    Each([&](int x, int y) {
      if (inside(x + 0.5, y + 0.5)) Set(x, y, kPaper);
    });
  }
  // Black strokes; they get a halo only where they border clear pixels.
  template <typename Inside>
  void Ink(Inside inside) {
    Each([&](int x, int y) {
      if (inside(x + 0.5, y + 0.5)) Set(x, y, kInk);
    });
  }
  void Tint(char from, char to) {
    for (auto& c : cells_) {
      if (c == from) c = to;
    }
  }
  // Clear pixels next to paper become black.
  void Outline() { Border(kPaper, kBlack); }
  // Clear pixels next to ink become white; ink then turns black.
  void Halo() {
    Border(kInk, kPaper);
    Tint(kInk, kBlack);
  }

  CursorPicture Picture(int hot_x, int hot_y) const {
    CursorPicture p;
    p.hot_x = hot_x;
    p.hot_y = hot_y;
    p.rgba.reserve(kN * kN * 4);
    for (char c : cells_) {
      std::uint8_t r = 0, g = 0, b = 0, a = 255;
      switch (c) {
        case kPaper:
          r = g = b = 255;
          break;
        case kGlass:
          r = 205, g = 228, b = 255;
          break;
        case kBlack:
          break;
        default:
          a = 0;
          break;
      }
      p.rgba.insert(p.rgba.end(), {r, g, b, a});
    }
    return p;
  }

  static constexpr char kClear = '.';
  static constexpr char kPaper = 'o';
  static constexpr char kGlass = 'g';
  static constexpr char kBlack = 'X';
  static constexpr char kInk = 'K';

 private:
  template <typename F>
  static void Each(F f) {
    for (int y = 0; y < kN; ++y) {
      for (int x = 0; x < kN; ++x) f(x, y);
    }
  }
  char Get(int x, int y) const {
    return (x < 0 || y < 0 || x >= kN || y >= kN) ? kClear : cells_[y * kN + x];
  }
  void Set(int x, int y, char c) { cells_[y * kN + x] = c; }
  void Border(char of, char with) {
    std::vector<std::pair<int, int>> marks;
    Each([&](int x, int y) {
      if (Get(x, y) != kClear) return;
      for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
          if (Get(x + dx, y + dy) == of) {
            marks.emplace_back(x, y);
            return;
          }
        }
      }
    });
    for (auto [x, y] : marks) Set(x, y, with);
  }

  std::vector<char> cells_;
};

auto Rect(double x0, double y0, double x1, double y1) {
  return [=](double x, double y) { return x >= x0 && x <= x1 && y >= y0 && y <= y1; };
}

auto Ring(double cx, double cy, double r0, double r1) {
  return [=](double x, double y) {
    const double d = std::hypot(x - cx, y - cy);
    return d >= r0 && d <= r1;
  };
}

// A finger or palm: a rectangle whose top corners are rounded off.
auto RoundedTop(double x0, double y0, double x1, double y1) {
  return [=](double x, double y) {
    if (!(x >= x0 && x <= x1 && y >= y0 && y <= y1)) return false;
    const double r = (x1 - x0) / 2;
    if (y >= y0 + r) return true;
    return std::hypot(x - (x0 + r), y - (y0 + r)) <= r + 0.2;
  };
}

// Inside a convex polygon given clockwise on screen (y down).
auto Convex(std::vector<std::pair<double, double>> pts) {
  return [pts = std::move(pts)](double x, double y) {
    for (std::size_t i = 0; i < pts.size(); ++i) {
      auto [ax, ay] = pts[i];
      auto [bx, by] = pts[(i + 1) % pts.size()];
      if ((bx - ax) * (y - ay) - (by - ay) * (x - ax) < 0) return false;
    }
    return true;
  };
}

// A stroke of the given width from (x0, y0) to (x1, y1).
auto Stroke(double x0, double y0, double x1, double y1, double width) {
  return [=](double x, double y) {
    const double dx = x1 - x0, dy = y1 - y0;
    const double len2 = dx * dx + dy * dy;
    double t = ((x - x0) * dx + (y - y0) * dy) / len2;
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    return std::hypot(x - (x0 + t * dx), y - (y0 + t * dy)) <= width / 2;
  };
}

CursorPicture Arrow() {
  Canvas c;
  // The classic pointer: a slim triangle with a tail, tip at the hot spot.
  c.Paper(Convex({{1, 1}, {14.5, 14.5}, {1, 20}}));
  c.Paper(Convex({{5.5, 15}, {9, 14}, {12.5, 22}, {9.5, 23.5}}));
  c.Outline();
  return c.Picture(1, 1);
}

CursorPicture Target() {
  Canvas c;
  // Cross-hair with a ring: "the point under here becomes the centre".
  c.Ink(Ring(15.5, 15.5, 6.5, 8.2));
  c.Ink(Rect(15, 1, 15.99, 11));
  c.Ink(Rect(15, 20, 15.99, 30));
  c.Ink(Rect(1, 15, 11, 15.99));
  c.Ink(Rect(20, 15, 30, 15.99));
  c.Ink(Rect(14.5, 14.5, 16.5, 16.5));
  c.Halo();
  return c.Picture(15, 15);
}

// An open hand (fingers spread) or a closed one (knuckles only).
CursorPicture Hand(bool closed) {
  Canvas c;
  const double top[4] = {closed ? 10.0 : 5.0, closed ? 9.0 : 3.0, closed ? 9.0 : 4.0,
                         closed ? 11.0 : 7.0};
  const double left[4] = {8, 12, 16, 20};
  for (int i = 0; i < 4; ++i) {
    c.Paper(RoundedTop(left[i], top[i], left[i] + 2.99, 17));
  }
  c.Paper(RoundedTop(8, 13, 23.99, 26.99));
  if (closed) {
    c.Paper(Convex({{5, 15}, {7, 14}, {10, 17}, {10, 20}, {8, 20}}));
  } else {
    c.Paper(Convex({{2, 13}, {4, 11.5}, {9.5, 17}, {9.5, 22}, {7.5, 22}}));
  }
  c.Outline();
  return c.Picture(15, 16);
}

CursorPicture Magnifier(bool plus) {
  Canvas c;
  c.Paper(Ring(12.5, 12.5, 0, 9.6));
  c.Tint(Canvas::kPaper, Canvas::kGlass);
  c.Ink(Ring(12.5, 12.5, 7.6, 9.6));
  c.Ink(Stroke(19.5, 19.5, 28.5, 28.5, 3.6));
  c.Ink(Rect(8, 12, 16.99, 13.99));
  if (plus) c.Ink(Rect(12, 8, 13.99, 16.99));
  c.Halo();
  return c.Picture(12, 12);
}

}  // namespace

const CursorPicture& GetCursorPicture(CursorKind kind) {
  static const std::map<CursorKind, CursorPicture> kPictures = {
      {CursorKind::kPick, Arrow()},         {CursorKind::kSpot, Target()},
      {CursorKind::kDrag, Hand(false)},     {CursorKind::kDragging, Hand(true)},
      {CursorKind::kZoom, Magnifier(true)}, {CursorKind::kCram, Magnifier(false)},
  };
  return kPictures.at(kind);
}

}  // namespace quelo
