// Loading a scene: the whole path from file to compiled display list, against
// reading the same bytes raw. Run on demand:
//   ninja -C build bench_load && build/bench/bench_load
// Compare the rows of one run with each other (the machine is shared): the
// ratio of LoadScene to RawRead says what decoding and dispatch cost on top of
// the disk, Replay_NoGL isolates our own code from Mesa's list compiler.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "common/binary_file.h"
#include "glctrl/opengl_ctrl.h"
#include "glctrl/surface_egl.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "sceneload/scene_list.h"

namespace {

using namespace quelo;

// One view with `polygons` hexagons (tessellated on replay) and as many lines.
std::string MakeScene(int polygons) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("quelo-bench-load-" + std::to_string(polygons) + ".qgl"))
                               .string();
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  w.AddInfoChunk(2, 1, SceneInfo{});
  w.BeginGlChunk(2, 1);
  for (int i = 0; i < polygons; ++i) {
    const double cx = i % 100, cy = (i / 100) % 100, cz = i / 10000;
    WriteColorLongRecord(*f, i & 0xFFFFFF);
    WriteNormal3fRecord(*f, 0, 0, 1);
    WriteTessBeginPolyRecord(*f, 6);
    for (int k = 0; k < 6; ++k) {
      const double a = k * 3.14159265358979 / 3;
      WriteTessVector3dRecord(*f, cx + 0.4 * std::cos(a), cy + 0.4 * std::sin(a), cz);
    }
    WriteTessEndPolyRecord(*f);
    WriteBeginRecord(*f, GL_LINES);
    WriteVertex3fRecord(*f, static_cast<Single>(cx), static_cast<Single>(cy), 0);
    WriteVertex3fRecord(*f, static_cast<Single>(cx), static_cast<Single>(cy), 1);
    WriteEndRecord(*f);
  }
  w.EndGlChunk();
  w.Finish();
  return path;
}

void BM_RawRead(benchmark::State& state) {
  const std::string path = MakeScene(static_cast<int>(state.range(0)));
  std::vector<char> buf(64 * 1024);
  for (auto _ : state) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    ssize_t total = 0, n = 0;
    while ((n = ::read(fd, buf.data(), buf.size())) > 0) total += n;
    ::close(fd);
    benchmark::DoNotOptimize(total);
  }
  std::remove(path.c_str());
}

void BM_Replay_NoGL(benchmark::State& state) {
  const std::string path = MakeScene(static_cast<int>(state.range(0)));
  OpenGL_Ctrl gl;
  gl.DontSendToGL = true;  // walk and measure only
  for (auto _ : state) {
    SceneListState list;
    BuildSceneList(gl, true, list, path, false, false);
    benchmark::DoNotOptimize(list.RoomBox);
  }
  std::remove(path.c_str());
}

void BM_LoadScene(benchmark::State& state) {
  const std::string path = MakeScene(static_cast<int>(state.range(0)));
  EglSurface surface(64, 64);
  OpenGL_Ctrl gl;
  gl.ExtHDC(&surface);
  if (!gl.InitRC()) {
    state.SkipWithError("no EGL context");
    return;
  }
  SceneListState list;
  for (auto _ : state) {
    BuildSceneList(gl, true, list, path, false, false);
    benchmark::DoNotOptimize(list.RoomBox);
  }
  gl.oglDeleteLists(static_cast<GLuint>(list.RenderList), 1);
  gl.auxShutDown();
  std::remove(path.c_str());
}

BENCHMARK(BM_RawRead)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Replay_NoGL)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadScene)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
