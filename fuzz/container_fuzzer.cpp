// libFuzzer target: the container reader (file header, chunk walk,
// LocateStream for the view kinds 0 to 4) over arbitrary bytes.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_entries.h"
#include "fuzz/fuzz_input_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quelo::fuzz::LocateInBytes(quelo::fuzz::InputPath("container"), data, size);
  return 0;
}
