// libFuzzer target: the command-stream decoder (RecordReader) over arbitrary
// bytes, framed and in the bytes' own form.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_entries.h"
#include "fuzz/fuzz_input_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quelo::fuzz::DecodeStreamBytes(quelo::fuzz::InputPath("decoder"), data, size);
  return 0;
}
