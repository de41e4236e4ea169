// The facetter on real-world outlines (buildings, water bodies, ...): the
// outer ring of each fixture is triangulated in the x-y plane. No ring may
// crash it or make it throw anything but a run-time error (which is what
// tessEndPoly reports for a self-intersecting or degenerate ring); a simple
// ring must come out as n - 2 triangles that cover it exactly, turn like it,
// and flag exactly its border edges.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "facet/facetter.h"
#include "facet/polygon_buffer.h"
#include "facet_support.h"

namespace quelo {
namespace {

using testing::Buffer;
using testing::Corner2;
using testing::TheFacetter;

const char kFixtureDir[] = QUELO_SOURCE_DIR "/tests/data/polygons/earcut-fixtures";

// A fixture's outer ring, and whether the file repeats its first corner at the end.
struct OuterRing {
  std::vector<Corner2> corners;  // without the closing repeat
  bool closing_repeat = false;
};

// Reads ring 0 of a fixture file (an array of rings of [x, y]).
OuterRing ReadOuterRing(const std::filesystem::path& file) {
  std::ifstream in(file);
  const auto json = nlohmann::json::parse(in);
  OuterRing ring;
  for (const auto& point : json.at(0)) {
    ring.corners.push_back({point.at(0).get<double>(), point.at(1).get<double>()});
  }
  if (ring.corners.size() > 1 && ring.corners.front() == ring.corners.back()) {
    ring.corners.pop_back();
    ring.closing_repeat = true;
  }
  return ring;
}

// The fixtures, by name.
std::vector<std::string> FixtureNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kFixtureDir)) {
    if (entry.path().extension() != ".json") continue;
    names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// -1, 0 or +1: the turn of a -> b -> c.
int Turn(const Corner2& a, const Corner2& b, const Corner2& c) {
  const double v = testing::Cross2(a, b, c);
  return (v > 0) - (v < 0);
}

// Whether c lies in the bounding box of segment a-b.
bool InBox(const Corner2& a, const Corner2& b, const Corner2& c) {
  return std::min(a[0], b[0]) <= c[0] && c[0] <= std::max(a[0], b[0]) &&
         std::min(a[1], b[1]) <= c[1] && c[1] <= std::max(a[1], b[1]);
}

// Whether the closed segments a-b and c-d meet (touching counts).
bool SegmentsMeet(const Corner2& a, const Corner2& b, const Corner2& c, const Corner2& d) {
  const int t1 = Turn(a, b, c), t2 = Turn(a, b, d), t3 = Turn(c, d, a), t4 = Turn(c, d, b);
  if (t1 != t2 && t3 != t4) return true;
  return (t1 == 0 && InBox(a, b, c)) || (t2 == 0 && InBox(a, b, d)) ||
         (t3 == 0 && InBox(c, d, a)) || (t4 == 0 && InBox(c, d, b));
}

// A simple ring: no corner twice and no two non-adjacent edges meeting.
bool IsSimple(const std::vector<Corner2>& ring) {
  const std::size_t n = ring.size();
  std::map<Corner2, int> seen;
  for (const auto& c : ring) {
    if (++seen[c] > 1) return false;
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 2; j < n; ++j) {
      if (i == 0 && j == n - 1) continue;  // adjacent through the closing edge
      if (SegmentsMeet(ring[i], ring[(i + 1) % n], ring[j], ring[(j + 1) % n])) return false;
    }
  }
  return true;
}

// Runs the facetter on a flat ring; returns the run-time error number or 0.
int Facet(const std::vector<Corner2>& ring) {
  testing::LoadFlatPolygon(ring);
  return testing::ErrorOf([] { TheFacetter().Run(Buffer()); });
}

// Every result triangle names corners of the ring.
void ExpectCornersInRange(std::size_t n) {
  for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
    for (Long corner : TheFacetter().triangles()[t].corner) {
      EXPECT_GE(corner, 1);
      EXPECT_LE(corner, static_cast<Long>(n));
    }
  }
}

class EarcutFixture : public ::testing::TestWithParam<std::string> {};

TEST_P(EarcutFixture, OuterRing) {
  const OuterRing outer =
      ReadOuterRing(std::filesystem::path(kFixtureDir) / (GetParam() + ".json"));
  const auto& ring = outer.corners;
  const std::size_t n = ring.size();
  const int error = Facet(ring);  // any other exception fails the test
  ExpectCornersInRange(n);

  if (IsSimple(ring)) {
    ASSERT_EQ(error, 0) << "simple ring of " << n << " corners";
    if (n >= 4) {
      EXPECT_EQ(Buffer().corner_count, 3);
    }
    if (n >= 3) {
      ASSERT_EQ(TheFacetter().triangles().size() - 1, n - 2);
      // Covered once, every triangle turning like the ring; the triangles'
      // corners are the ring's own, so only double rounding remains.
      const double area = testing::RingArea2(ring);
      double sum = 0;
      for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
        const double tri = testing::TriangleArea2(ring, t);
        EXPECT_GE(tri * area, 0) << "triangle " << t << " turns against the ring";
        sum += std::abs(tri);
      }
      EXPECT_NEAR(sum, std::abs(area), 1e-7 * std::abs(area));
      // The flagged edges are the ring's edges, each once.
      std::map<std::pair<Long, Long>, int> flagged;
      for (std::size_t t = 1; t < TheFacetter().triangles().size(); ++t) {
        const auto& tri = TheFacetter().triangles()[t];
        for (int k = 0; k < 3; ++k) {
          if (tri.edge_flags & (1 << k)) ++flagged[{tri.corner[k], tri.corner[(k + 1) % 3]}];
        }
      }
      EXPECT_EQ(flagged.size(), n);
      for (Long k = 1; k <= static_cast<Long>(n); ++k) {
        const Long next = k % static_cast<Long>(n) + 1;
        EXPECT_EQ((flagged[{k, next}]), 1) << "border edge " << k << "-" << next;
      }
    }
  } else if (error != 0) {
    RecordProperty("runtime_error", error);
  }

  // The file's own form, with the first corner repeated at the end, is a
  // ring with a doubled corner: a run-time error at most.
  if (outer.closing_repeat && n <= 200) {
    auto repeated = ring;
    repeated.push_back(ring.front());
    Facet(repeated);
    ExpectCornersInRange(n + 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Facetter, EarcutFixture, ::testing::ValuesIn(FixtureNames()),
                         [](const auto& param_info) {
                           std::string name = param_info.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace quelo
