// BinaryFile against a plain byte vector: random jumps, reads and writes over
// a file several windows long must always see what the vector holds. Jumps
// read a page, sequential reads a whole window, so windows end mid-file and
// writes land at their ends; this is where such a scheme goes wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "common/binary_file.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::ReadAll;
using testing::TempDir;
using testing::WriteAll;

TEST(BinaryFileModel, RandomJumpsReadsAndWritesSeeWhatAByteVectorHolds) {
  TempDir dir;
  const auto path = dir.File("model.bin");
  std::mt19937 random(20240607);
  std::vector<unsigned char> model(300 * 1024);
  for (auto& b : model) b = static_cast<unsigned char>(random());
  WriteAll(path, model);

  auto f = BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
  auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  Long position = 1;
  for (int step = 0; step < 4000; ++step) {
    SCOPED_TRACE(step);
    const std::size_t kind = pick(10);
    if (pick(10) < 4) {
      // A jump anywhere, just past a page or a window, or a short hop that
      // lands inside the window's buffer but beyond what was read into it.
      const std::size_t here = static_cast<std::size_t>(position) - 1;
      const std::size_t hop = pick(9000);
      const std::size_t bases[] = {pick(model.size()), 4096 * pick(80), 65536 * pick(5), here + hop,
                                   here > hop ? here - hop : 0};
      position = static_cast<Long>(bases[pick(5)] + pick(3)) + 1;
    }
    const std::size_t length = 1 + pick(kind == 9 ? 70000 : 40);
    f->Seek(position);
    const std::size_t at = static_cast<std::size_t>(position) - 1;
    if (kind < 7) {
      std::vector<unsigned char> got(length);
      const std::size_t read = f->ReadBytes(got.data(), length);
      const std::size_t want = at < model.size() ? std::min(length, model.size() - at) : 0;
      ASSERT_EQ(read, want);
      for (std::size_t i = 0; i < length; ++i) {
        const unsigned char expected = i < want ? model[at + i] : 0;
        ASSERT_EQ(got[i], expected) << "byte " << at + i + 1;
      }
    } else {
      std::vector<unsigned char> data(length);
      for (auto& b : data) b = static_cast<unsigned char>(random());
      f->WriteBytes(data.data(), length);
      if (model.size() < at + length) model.resize(at + length, 0);
      std::copy(data.begin(), data.end(), model.begin() + static_cast<std::ptrdiff_t>(at));
    }
    ASSERT_EQ(f->Length(), static_cast<Long>(model.size()));
    position = f->Position();
  }
  f.reset();
  EXPECT_EQ(ReadAll(path), model);
}

}  // namespace
}  // namespace quelo
