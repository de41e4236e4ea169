// libFuzzer target: loading arbitrary bytes as a scene (BuildSceneList through
// the tracing table, axes and grids shown). The polygon marking mode follows
// the input's length, so that every mode meets every kind of polygon.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_entries.h"
#include "fuzz/fuzz_input_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quelo::fuzz::LoadSceneBytes(quelo::fuzz::InputPath("scene"), data, size,
                              static_cast<long>(size % 5));
  return 0;
}
