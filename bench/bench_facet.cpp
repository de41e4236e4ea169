// Time per polygon of the facetter (plane projection and ear clipping) on
// real-world outer rings of growing size.
//
// Build and run (the bench folder is not part of the default build):
//   ninja -C build bench_facet
//   build/bench/bench_facet
// The largest ring takes about ten seconds a run; pick rings with e.g.
//   build/bench/bench_facet --benchmark_filter='building|dude'
#include <benchmark/benchmark.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "facet/facetter.h"
#include "facet/polygon_buffer.h"

namespace {

using quelo::Integer;
using quelo::Long;

// Ring 0 of a fixture, without the repeat of its first corner at the end.
std::vector<std::pair<double, double>> OuterRing(const std::string& name) {
  std::ifstream in(QUELO_SOURCE_DIR "/tests/data/polygons/earcut-fixtures/" + name + ".json");
  const auto json = nlohmann::json::parse(in);
  std::vector<std::pair<double, double>> ring;
  for (const auto& point : json.at(0)) ring.emplace_back(point.at(0), point.at(1));
  if (ring.size() > 1 && ring.front() == ring.back()) ring.pop_back();
  return ring;
}

// Loads the ring into the polygon buffer and runs the facetter, as tessEndPoly does.
void Facet(benchmark::State& state, const std::string& name) {
  const auto ring = OuterRing(name);
  const auto n = static_cast<Long>(ring.size());
  quelo::PolygonBuffer polygon;
  for (auto _ : state) {
    state.PauseTiming();
    polygon.vertices.Recreate(n);
    polygon.corner_count = static_cast<Integer>(n);
    for (Long i = 1; i <= n; ++i) {
      polygon.vertices(1, i) = ring[static_cast<std::size_t>(i - 1)].first;
      polygon.vertices(2, i) = ring[static_cast<std::size_t>(i - 1)].second;
    }
    state.ResumeTiming();
    quelo::RunFacetter(polygon);
    benchmark::DoNotOptimize(quelo::FacetTriangles.data());
  }
  state.counters["corners"] = static_cast<double>(n);
}

BENCHMARK_CAPTURE(Facet, building, std::string("building"))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Facet, dude, std::string("dude"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Facet, earcut, std::string("earcut"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Facet, issue35, std::string("issue35"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Facet, hilbert, std::string("hilbert"))->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
