// The fast clipper against the straightforward one, which defines the
// triangles: the same triangles in the same order, the same edge flags, the
// same run-time error and the same corner count afterwards, on generated
// polygons of every awkward kind and on every ring of the polygon fixtures.
//
// QUELO_DIFFERENTIAL_ROUNDS multiplies the generated polygons (the default
// run takes seconds; 20 rounds make more than 100,000 polygons).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "facet/facetter.h"
#include "facet/polygon_buffer.h"
#include "facet_support.h"

namespace quelo {
namespace {

using testing::Corner3;
using Ring = std::vector<Corner3>;

PolygonBuffer Load(const Ring& corners) {
  PolygonBuffer polygon;
  const auto n = static_cast<Long>(corners.size());
  polygon.vertices.Recreate(n);
  polygon.corner_count = static_cast<Integer>(n);
  for (Long i = 1; i <= n; ++i) {
    for (Long k = 1; k <= 3; ++k) {
      polygon.vertices(k, i) =
          corners[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(k - 1)];
    }
  }
  return polygon;
}

struct Outcome {
  int error = 0;
  Integer corner_count = 0;
  std::string triangles;
};

Outcome Facet(const Ring& corners, bool fast) {
  static Facetter facetter;
  PolygonBuffer polygon = Load(corners);
  Outcome out;
  out.error = testing::ErrorOf([&] {
    if (fast) {
      facetter.Run(polygon);
    } else {
      facetter.RunStraightforward(polygon);
    }
  });
  out.corner_count = polygon.corner_count;
  for (std::size_t t = 1; t < facetter.triangles().size(); ++t) {
    const FacetTriangle& tri = facetter.triangles()[t];
    out.triangles += std::to_string(tri.corner[0]) + "," + std::to_string(tri.corner[1]) + "," +
                     std::to_string(tri.corner[2]) + "f" + std::to_string(tri.edge_flags) + " ";
  }
  return out;
}

// Both clippers on one polygon; false (with the difference reported) when
// they disagree.
bool Agree(const Ring& corners, const std::string& what) {
  const Outcome fast = Facet(corners, true);
  const Outcome reference = Facet(corners, false);
  EXPECT_EQ(fast.error, reference.error) << what;
  EXPECT_EQ(fast.corner_count, reference.corner_count) << what;
  EXPECT_EQ(fast.triangles, reference.triangles) << what;
  return fast.error == reference.error && fast.corner_count == reference.corner_count &&
         fast.triangles == reference.triangles;
}

// The flat ring (x, y) placed into one of three planes.
Ring InPlane(const std::vector<std::array<double, 2>>& flat, int plane) {
  Ring ring;
  for (const auto& [x, y] : flat) {
    switch (plane) {
      case 0:
        ring.push_back({x, y, 0});
        break;
      case 1:
        ring.push_back({x, 5, y});
        break;
      default:
        ring.push_back({0.6 * x - 0.8 * y + 3, 0.8 * x + 0.6 * y, 0.5 * x + 7});
        break;
    }
  }
  return ring;
}

using Flat = std::vector<std::array<double, 2>>;

// The generated polygons run in the executable of the small fixture rings.
#if FACET_ABOVE_CORNERS == 0

// Generated polygon families; each call draws one polygon of `kind`.
Flat Generate(int kind, std::mt19937& rng) {
  std::uniform_real_distribution<double> unit(0, 1);
  std::uniform_int_distribution<int> count(4, 40);
  const int n = count(rng);
  const double pi = std::numbers::pi;
  Flat ring;
  switch (kind) {
    case 0:  // star-shaped about the origin: simple, often concave
      for (int i = 0; i < n; ++i) {
        const double a = 2 * pi * i / n, r = 1 + 4 * unit(rng);
        ring.push_back({r * std::cos(a), r * std::sin(a)});
      }
      break;
    case 1:  // the same on a coarse grid: ties and collinear runs
      for (int i = 0; i < n; ++i) {
        const double a = 2 * pi * i / n, r = 2 + std::floor(4 * unit(rng));
        ring.push_back({std::round(r * std::cos(a) * 2), std::round(r * std::sin(a) * 2)});
      }
      break;
    case 2: {  // a comb
      const int teeth = n / 4 + 1;
      for (int i = 0; i < teeth; ++i) {
        ring.push_back({2.0 * i, 0});
        ring.push_back({2.0 * i + 1, 0});
      }
      for (int i = teeth - 1; i >= 0; --i) {
        ring.push_back({2.0 * i + 1, 3 + unit(rng)});
        ring.push_back({2.0 * i + 0.5, 1});
      }
      break;
    }
    case 3:  // a spiral band
      for (int i = 0; i < n; ++i)
        ring.push_back({(1 + i * 0.2) * std::cos(i * 0.5), (1 + i * 0.2) * std::sin(i * 0.5)});
      for (int i = n - 1; i >= 0; --i)
        ring.push_back({(1.5 + i * 0.2) * std::cos(i * 0.5), (1.5 + i * 0.2) * std::sin(i * 0.5)});
      break;
    case 4: {  // a star-shaped ring with repeated corners
      ring = Generate(0, rng);
      const std::size_t at = rng() % ring.size();
      ring.insert(ring.begin() + static_cast<long>(at), ring[at]);
      if (unit(rng) < 0.5) ring.insert(ring.begin(), ring.back());
      break;
    }
    case 5: {  // a spike back to the same point: a zero diagonal
      ring = Generate(0, rng);
      const std::size_t at = 1 + rng() % (ring.size() - 1);
      ring.insert(ring.begin() + static_cast<long>(at),
                  {{ring[at][0] * 3, ring[at][1] * 3}, ring[at - 1]});
      break;
    }
    case 6:  // random corners: self-intersecting
      for (int i = 0; i < n; ++i) ring.push_back({10 * unit(rng), 10 * unit(rng)});
      break;
    case 7:  // random corners on a small grid: self-touching, collinear, repeated
      for (int i = 0; i < n; ++i)
        ring.push_back({std::floor(4 * unit(rng)), std::floor(4 * unit(rng))});
      break;
    default:  // a regular polygon with extra corners on its edges
      for (int i = 0; i < n; ++i) {
        const double a = 2 * pi * i / n, b = 2 * pi * (i + 1) / n;
        ring.push_back({std::cos(a), std::sin(a)});
        ring.push_back({(std::cos(a) + std::cos(b)) / 2, (std::sin(a) + std::sin(b)) / 2});
      }
      break;
  }
  if (unit(rng) < 0.3) std::reverse(ring.begin(), ring.end());  // clockwise too
  return ring;
}

int Rounds() {
  const char* rounds = std::getenv("QUELO_DIFFERENTIAL_ROUNDS");
  return rounds != nullptr ? std::max(1, std::atoi(rounds)) : 1;
}

TEST(FACET_SUITE, GeneratedPolygonsGiveTheStraightforwardResult) {
  constexpr int kKinds = 9;
  std::mt19937 rng(20261125);
  int disagreements = 0;
  for (int round = 0; round < Rounds(); ++round) {
    for (int i = 0; i < 600 * kKinds; ++i) {
      const int kind = i % kKinds;
      const Flat flat = Generate(kind, rng);
      for (int plane = 0; plane < 3 && disagreements < 5; ++plane) {
        if (!Agree(InPlane(flat, plane),
                   "kind " + std::to_string(kind) + " round " + std::to_string(round) +
                       " polygon " + std::to_string(i) + " plane " + std::to_string(plane))) {
          ++disagreements;
        }
      }
    }
  }
}
#endif

// Every ring (outer rings and holes) of the fixtures up to the corner count
// that the straightforward clipper handles in seconds; the larger ones run
// with the slow label.
TEST(FACET_SUITE, FixtureRingsGiveTheStraightforwardResult) {
  const std::filesystem::path folder = QUELO_SOURCE_DIR "/tests/data/polygons/earcut-fixtures";
  int rings = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".json") continue;
    std::ifstream in(entry.path());
    const auto json = nlohmann::json::parse(in);
    for (std::size_t r = 0; r < json.size(); ++r) {
      Flat flat;
      for (const auto& point : json[r]) flat.push_back({point.at(0), point.at(1)});
      if (flat.size() > 1 && flat.front() == flat.back()) flat.pop_back();
      if (flat.size() <= FACET_ABOVE_CORNERS || flat.size() > FACET_UP_TO_CORNERS) continue;
      ++rings;
      Agree(InPlane(flat, 0), entry.path().stem().string() + " ring " + std::to_string(r));
    }
  }
  EXPECT_GT(rings, 0);
}

}  // namespace
}  // namespace quelo
