// The fuzz targets' entry points (fuzz/fuzz_entries.cpp) run over the
// committed seeds and the example scenes: they abort on a broken promise, and
// the sanitizer build catches what goes wrong in memory. An input that makes a
// target fail belongs here too, once fixed, replayed through the same door.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "fuzz/fuzz_entries.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::ReadAll;
using testing::TempDir;

using Door = void (*)(const std::string& path, const std::uint8_t* data, std::size_t size);

void LoadWithEveryMarking(const std::string& path, const std::uint8_t* data, std::size_t size) {
  for (long marking = 0; marking <= 4; ++marking) fuzz::LoadSceneBytes(path, data, size, marking);
}

void Replay(Door door, const std::string& input) {
  SCOPED_TRACE(input);
  TempDir dir;
  ASSERT_TRUE(std::filesystem::is_regular_file(input));
  const auto bytes = ReadAll(input);
  door(dir.File("input.qgl"), bytes.data(), bytes.size());
}

// The files of a seed folder.
std::filesystem::directory_iterator Seeds(const std::string& target) {
  return std::filesystem::directory_iterator(QUELO_SOURCE_DIR "/fuzz/corpus/" + target);
}

TEST(FuzzSeeds, PassEveryEntryPoint) {
  for (const auto& f : Seeds("decoder")) Replay(fuzz::DecodeStreamBytes, f.path());
  for (const char* target : {"container", "scene"}) {
    for (const auto& f : Seeds(target)) {
      Replay(fuzz::LocateInBytes, f.path());
      Replay(LoadWithEveryMarking, f.path());
    }
  }
  for (const char* example : {"example.qgl", "demo.qgl"}) {
    Replay(fuzz::LocateInBytes, QUELO_SOURCE_DIR "/examples/" + std::string(example));
    Replay(LoadWithEveryMarking, QUELO_SOURCE_DIR "/examples/" + std::string(example));
  }
}

// Random Longs, mostly small codes and lengths so that records get decoded:
// the decoder keeps its promises on each (fixed seed, so a failure repeats).
TEST(FuzzDoors, RandomStreamsPassTheDecoder) {
  TempDir dir;
  std::mt19937 random(12345);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::int32_t> longs(random() % 64);
    for (auto& v : longs) {
      v = random() % 4 == 0 ? static_cast<std::int32_t>(random())
                            : static_cast<std::int32_t>(random() % 40) - 4;
    }
    fuzz::DecodeStreamBytes(dir.File("random.bin"),
                            reinterpret_cast<const std::uint8_t*>(longs.data()), longs.size() * 4);
  }
}

}  // namespace
}  // namespace quelo
