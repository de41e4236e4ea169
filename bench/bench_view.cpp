// The redraw that every user action ends in. Run on demand:
//   ninja -C build bench_view && LP_NUM_THREADS=0 build/bench/bench_view
// A plain redraw reuses the scene list (one list call, the axes, the swap), so
// PlainRedraw should cost a small fraction of Reload, which replays the file
// into a new list; ResetView adds only the fitting arithmetic. Compare rows
// of one run with each other: the machine is shared. The swap of the headless
// surface reads the picture back, which is part of every row.
#include <benchmark/benchmark.h>

#include <string>

#include "glctrl/surface_egl.h"
#include "view/view_form.h"

namespace {

using namespace quelo;

const std::string kDemo = QUELO_SOURCE_DIR "/examples/demo.qgl";

// The demo scene loaded into a view on a headless surface; null without EGL.
struct Fixture {
  EglSurface surface{320, 240};
  QueloView view;
  bool ok = false;

  Fixture() {
    if (surface.DescribePixelFormat(1, nullptr) == 0) return;
    view.FacePbx.Move(0, 0, 320, 240);
    view.FacePbx.hDC(&surface);
    view.prv_InitGL();
    view.SceneFileName = kDemo;
    view.RenderIt(true, true);
    ok = !surface.KeptImage().rgba.empty();
  }
  ~Fixture() {
    view.FreeRenderLists();
    view.FaceGL.auxShutDown();
  }
};

void Run(benchmark::State& state, bool reload, bool reset) {
  Fixture f;
  if (!f.ok) {
    state.SkipWithError("no headless OpenGL (EGL)");
    return;
  }
  for (auto _ : state) {
    bool r = reload, v = reset;
    f.view.RenderIt(r, v);
  }
}

void BM_PlainRedraw(benchmark::State& state) {
  Run(state, false, false);
}
void BM_ResetView(benchmark::State& state) {
  Run(state, false, true);
}
void BM_Reload(benchmark::State& state) {
  Run(state, true, true);
}

BENCHMARK(BM_PlainRedraw)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ResetView)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Reload)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
