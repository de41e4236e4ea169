// Time per polygon of the facetter (plane projection and ear clipping): the
// fast clipper against the straightforward one, which defines the triangles,
// on real-world outer rings and on generated families of growing size.
//
// Build and run (the bench folder is not part of the default build):
//   ninja -C build bench_facet
//   build/bench/bench_facet
// The straightforward clipper runs only up to about a thousand corners (it
// takes seconds there); compare rows of one name, e.g.
//   build/bench/bench_facet --benchmark_filter='hilbert|circle/1000'
#include <benchmark/benchmark.h>

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
    state.PauseTiming();
    polygon.vertices.Recreate(n);
    polygon.corner_count = static_cast<Integer>(n);
    for (Long i = 1; i <= n; ++i) {
      polygon.vertices(1, i) = ring[static_cast<std::size_t>(i - 1)].first;
      polygon.vertices(2, i) = ring[static_cast<std::size_t>(i - 1)].second;
    }
    state.ResumeTiming();
    if (fast) {
      facetter.Run(polygon);
    } else {
      facetter.RunStraightforward(polygon);
    }
    benchmark::DoNotOptimize(facetter.triangles().data());
  }
  state.counters["corners"] = static_cast<double>(n);
}

void Register() {
  for (const char* name :
       {"building", "dude", "earcut", "issue35", "hilbert", "water", "water-huge2", "water-huge"}) {
    const Ring ring = OuterRing(name);
    benchmark::RegisterBenchmark((std::string("fixture/") + name + "/fast").c_str(),
                                 [ring](benchmark::State& s) { Facet(s, ring, true); })
        ->Unit(benchmark::kMillisecond);
    if (ring.size() <= 1100) {
      benchmark::RegisterBenchmark((std::string("fixture/") + name + "/straightforward").c_str(),
                                   [ring](benchmark::State& s) { Facet(s, ring, false); })
          ->Unit(benchmark::kMillisecond);
    }
  }
  for (const char* kind : {"circle", "star", "comb", "random"}) {
    for (int n : {10, 100, 1000, 10000, 32767}) {
      const Ring ring = Family(kind, n);
      const std::string stem = std::string(kind) + "/" + std::to_string(n);
      benchmark::RegisterBenchmark((stem + "/fast").c_str(), [ring](benchmark::State& s) {
        Facet(s, ring, true);
      })->Unit(benchmark::kMillisecond);
      if (n <= 1000) {
        benchmark::RegisterBenchmark((stem + "/straightforward").c_str(), [ring](
                                                                              benchmark::State& s) {
          Facet(s, ring, false);
        })->Unit(benchmark::kMillisecond);
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
