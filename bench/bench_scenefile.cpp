// Reading and writing command streams: the decoder must walk a large scene
// record by record without the file becoming the bottleneck.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "scenefile/container.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_reader.h"
#include "scenefile/record_writer.h"

namespace {

using namespace quelo;

std::string TempPath(const char* name) {
  return (std::filesystem::temp_directory_path() / name).string();
}

// A scene of one view with `triangles` coloured triangles.
Long WriteScene(const std::string& path, int triangles) {
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  w.AddInfoChunk(1, 1, SceneInfo{});
  const Long stream = w.BeginGlChunk(1, 1);
  WriteBeginRecord(*f, 4);
  for (int i = 0; i < triangles; ++i) {
    const auto x = static_cast<Single>(i % 1000);
    WriteColorLongRecord(*f, i);
    WriteVertex3fRecord(*f, x, 0, 0);
    WriteVertex3fRecord(*f, x + 1, 0, 0);
    WriteVertex3fRecord(*f, x, 1, 0);
  }
  WriteEndRecord(*f);
  w.EndGlChunk();
  w.Finish();
  return stream;
}

void BM_WriteStream(benchmark::State& state) {
  const std::string path = TempPath("quelo-bench-write.qgl");
  const auto triangles = static_cast<int>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(WriteScene(path, triangles));
  state.SetItemsProcessed(state.iterations() * triangles * 4);
  std::remove(path.c_str());
}
BENCHMARK(BM_WriteStream)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_DecodeStream(benchmark::State& state) {
  const std::string path = TempPath("quelo-bench-read.qgl");
  const auto triangles = static_cast<int>(state.range(0));
  WriteScene(path, triangles);
  SceneInfo info;
  const Long stream = KIVO_GLMapFile::LocateStream(path, 1, info);
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  for (auto _ : state) {
    f->Seek(stream);
    RecordReader reader(*f);
    Record rec;
    Single sum = 0;
    while (reader.Next(rec)) sum += rec.singles[0];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * triangles * 4);
  std::remove(path.c_str());
}
BENCHMARK(BM_DecodeStream)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
