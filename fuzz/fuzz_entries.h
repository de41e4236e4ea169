// The entry points that the fuzz targets and the hardening tests share: each
// writes the bytes to a file at `path` and reads it the way the program does.
//
// They return normally for every input that the program handles as it should
// (a documented RuntimeError included) and abort with a message on stderr when
// an invariant breaks, so that a fuzzer stops there and a test fails. Crashes,
// undefined behaviour and leaks are left to the sanitizers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quelo::fuzz {

// The decoder: RecordReader over every record of the bytes taken as a stream
// twice: once behind a stream head (framed) and once at their own first Long
// (framed, unframed or none, as the bytes say).
void DecodeStreamBytes(const std::string& path, const std::uint8_t* data, std::size_t size);

// The container reader: the file header, the chunk walk and LocateStream for
// the view kinds 0 to 4.
void LocateInBytes(const std::string& path, const std::uint8_t* data, std::size_t size);

// Scene loading: BuildSceneList through the tracing table, axes and grids
// shown, with the polygon marking mode `marking` (0 to 4).
void LoadSceneBytes(const std::string& path, const std::uint8_t* data, std::size_t size,
                    long marking);

// Writes the bytes to path, replacing what was there.
void WriteBytesToFile(const std::string& path, const std::uint8_t* data, std::size_t size);

}  // namespace quelo::fuzz
