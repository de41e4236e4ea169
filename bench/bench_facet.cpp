// Time per polygon of the facetter (plane projection and ear clipping): the
// fast clipper against the straightforward one, which defines the triangles,
// and against Mesa's GLU tessellator on the same corners, on real-world outer
// rings and on generated families of growing size.
//
// Build and run (the bench folder is not part of the default build):
//   ninja -C build bench_facet
//   build/bench/bench_facet
// The straightforward clipper runs only up to about a thousand corners (it
// takes seconds there); compare rows of one name, e.g.
//   build/bench/bench_facet --benchmark_filter='hilbert|circle/1000'
// bench/facet_table.sh runs it with earcut as a further anchor and prints
// the ratios as a table. --rings_out=FILE writes the rings as JSON and exits.
#include <GL/glu.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "facet/facetter.h"
#include "facet/polygon_buffer.h"

namespace {

using quelo::Integer;
using quelo::Long;
using Ring = std::vector<std::pair<double, double>>;

// Ring 0 of a fixture, without the repeat of its first corner at the end.
Ring OuterRing(const std::string& name) {
  std::ifstream in(QUELO_SOURCE_DIR "/tests/data/polygons/earcut-fixtures/" + name + ".json");
  const auto json = nlohmann::json::parse(in);
  Ring ring;
  for (const auto& point : json.at(0)) ring.emplace_back(point.at(0), point.at(1));
  if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
  return ring;
}

// Families of simple polygons with n corners.
Ring Family(const std::string& kind, int n) {
  const double pi = std::numbers::pi;
  Ring ring;
  if (kind == "circle") {
    for (int i = 0; i < n; ++i)
      ring.emplace_back(std::cos(2 * pi * i / n), std::sin(2 * pi * i / n));
  } else if (kind == "star") {
    for (int i = 0; i < n; ++i) {
      const double r = i % 2 ? 0.4 : 1.0;
      ring.emplace_back(r * std::cos(2 * pi * i / n), r * std::sin(2 * pi * i / n));
    }
  } else if (kind == "comb") {
    const int teeth = n / 4;
    for (int i = 0; i < teeth; ++i) ring.emplace_back(2 * i, 0), ring.emplace_back(2 * i + 1, 0);
    for (int i = teeth - 1; i >= 0; --i)
      ring.emplace_back(2 * i + 1, 10), ring.emplace_back(2 * i + 0.5, 1);
  } else {  // random star-shaped
    std::mt19937 rng(static_cast<unsigned>(n));
    std::uniform_real_distribution<double> radius(0.5, 1.0);
    for (int i = 0; i < n; ++i) {
      const double r = radius(rng);
      ring.emplace_back(r * std::cos(2 * pi * i / n), r * std::sin(2 * pi * i / n));
    }
  }
  return ring;
}

// Loads the ring into a polygon buffer and runs the facetter, as tessEndPoly does.
void Facet(benchmark::State& state, const Ring& ring, bool fast) {
  const auto n = static_cast<Long>(ring.size());
  quelo::PolygonBuffer polygon;
  quelo::Facetter facetter;
  for (auto _ : state) {
    polygon.vertices.Recreate(n);
    polygon.corner_count = static_cast<Integer>(n);
    for (Long i = 1; i <= n; ++i) {
      polygon.vertices(1, i) = ring[static_cast<std::size_t>(i - 1)].first;
      polygon.vertices(2, i) = ring[static_cast<std::size_t>(i - 1)].second;
    }
    if (fast) {
      facetter.Run(polygon);
    } else {
      facetter.RunStraightforward(polygon);
    }
    benchmark::DoNotOptimize(facetter.triangles().data());
  }
  state.counters["corners"] = static_cast<double>(n);
}

// The same ring through GLU's tessellator, counting the triangles it makes.
void Glu(benchmark::State& state, const Ring& ring) {
  GLUtesselator* tess = gluNewTess();
  long triangles_corners = 0;
  using Callback = void(GLAPIENTRY*)();
  gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<Callback>(+[](GLenum, void*) {}));
  gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(+[](void*, void* data) {
                    ++*static_cast<long*>(data);
                  }));
  gluTessCallback(tess, GLU_TESS_END_DATA, reinterpret_cast<Callback>(+[](void*) {}));
  // A flag callback makes GLU hand out separate triangles, as the facetter does.
  gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA,
                  reinterpret_cast<Callback>(+[](GLboolean, void*) {}));
  gluTessCallback(tess, GLU_TESS_COMBINE_DATA,
                  reinterpret_cast<Callback>(+[](GLdouble*, void* data[4], GLfloat*, void** out,
                                                 void*) { *out = data[0]; }));
  gluTessNormal(tess, 0, 0, 1);
  std::vector<std::array<GLdouble, 3>> corners;
  for (const auto& [x, y] : ring) corners.push_back({x, y, 0});
  for (auto _ : state) {
    gluTessBeginPolygon(tess, &triangles_corners);
    gluTessBeginContour(tess);
    for (auto& corner : corners) gluTessVertex(tess, corner.data(), corner.data());
    gluTessEndContour(tess);
    gluTessEndPolygon(tess);
  }
  gluDeleteTess(tess);
  state.counters["corners"] = static_cast<double>(ring.size());
  benchmark::DoNotOptimize(triangles_corners);
}

// Registers the three variants of one ring.
void RegisterRing(const std::string& stem, const Ring& ring, bool straightforward) {
  benchmark::RegisterBenchmark((stem + "/fast").c_str(), [ring](benchmark::State& s) {
    Facet(s, ring, true);
  })->Unit(benchmark::kMillisecond);
  if (straightforward) {
    benchmark::RegisterBenchmark((stem + "/straightforward").c_str(), [ring](benchmark::State& s) {
      Facet(s, ring, false);
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark((stem + "/glu").c_str(), [ring](benchmark::State& s) {
    Glu(s, ring);
  })->Unit(benchmark::kMillisecond);
}

// Every ring that Register times, by its stem.
std::vector<std::pair<std::string, Ring>> Rings() {
  std::vector<std::pair<std::string, Ring>> rings;
  for (const char* name :
       {"building", "dude", "earcut", "issue35", "hilbert", "water", "water-huge2", "water-huge"}) {
    rings.emplace_back(std::string("fixture/") + name, OuterRing(name));
  }
  for (const char* kind : {"circle", "star", "comb", "random"}) {
    for (int n : {10, 100, 1000, 10000, 32767}) {
      rings.emplace_back(std::string(kind) + "/" + std::to_string(n), Family(kind, n));
    }
  }
  return rings;
}

void Register() {
  for (const auto& [stem, ring] : Rings()) RegisterRing(stem, ring, ring.size() <= 1100);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string rings_out = "--rings_out=";
  if (argc == 2 && std::string(argv[1]).rfind(rings_out, 0) == 0) {
    nlohmann::json json;
    for (const auto& [stem, ring] : Rings()) json[stem] = ring;
    std::ofstream(std::string(argv[1]).substr(rings_out.size())) << json;
    return 0;
  }
  Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
