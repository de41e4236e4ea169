// Damaged files that try to make a reader slow. A chunk chain can hop
// between the two ends of a file once every four bytes; each hop must cost a
// small read, not a whole window of the file.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "scenefile/container.h"

namespace {

using namespace quelo;

std::string TempPath(const char* name) {
  return (std::filesystem::temp_directory_path() / name).string();
}

void PutLong(std::vector<char>& b, std::size_t offset, Long v) {
  std::memcpy(b.data() + offset, &v, 4);
}

// A file header and a chain of 2 * hops chunk headers that overlap, the
// first half at the start of the file and the second half past a gap, each
// naming the next in the other half.
std::string WritePingPongChain(Long hops) {
  const Long far = kFirstChunkPosition + 4 * hops + 70000;
  std::vector<char> b(static_cast<std::size_t>(far + 4 * hops + kChunkHeaderSize));
  std::memcpy(b.data(), "KIVO", 4);
  PutLong(b, 4, kFileVersion);
  for (Long i = 0; i < hops; ++i) {
    const Long near_pos = kFirstChunkPosition + 4 * i;
    const Long far_pos = far + 4 * i;
    const Long next_near = i + 1 < hops ? near_pos + 4 : 0;
    PutLong(b, static_cast<std::size_t>(near_pos - 1 + 32), far_pos);
    PutLong(b, static_cast<std::size_t>(far_pos - 1 + 32), next_near);
  }
  const std::string path = TempPath("quelo-bench-pingpong.qgl");
  std::ofstream(path, std::ios::binary).write(b.data(), static_cast<std::streamsize>(b.size()));
  return path;
}

void BM_WalkPingPongChain(benchmark::State& state) {
  const auto hops = static_cast<Long>(state.range(0));
  const std::string path = WritePingPongChain(hops);
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  for (auto _ : state) {
    Long chunks = 0;
    WalkChunks(*f, [&](Long, const ChunkHeader&) {
      ++chunks;
      return true;
    });
    benchmark::DoNotOptimize(chunks);
  }
  state.SetItemsProcessed(state.iterations() * 2 * hops);
  f.reset();
  std::remove(path.c_str());
}
BENCHMARK(BM_WalkPingPongChain)->Arg(250000)->Unit(benchmark::kMillisecond);

// What opening such a file in the viewer costs: every view kind is looked
// for along the whole chain.
void BM_LocateInPingPongChain(benchmark::State& state) {
  const auto hops = static_cast<Long>(state.range(0));
  const std::string path = WritePingPongChain(hops);
  for (auto _ : state) {
    SceneInfo info;
    for (Long kind = 1; kind <= kViewKindCount; ++kind) {
      benchmark::DoNotOptimize(KIVO_GLMapFile::LocateStream(path, kind, info));
    }
  }
  std::remove(path.c_str());
}
BENCHMARK(BM_LocateInPingPongChain)->Arg(250000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
