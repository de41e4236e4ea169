#include "common/binary_file.h"
#include "support/error_of.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "common/runtime_error.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using quelo::testing::ReadAll;
using quelo::testing::TempDir;
using quelo::testing::WriteAll;

using quelo::testing::ErrorOf;

TEST(BinaryFile, PositionsAreOneBasedAndFieldsLittleEndian) {
  TempDir dir;
  const auto path = dir.File("a.bin");
  {
    auto f = BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
    EXPECT_EQ(f->Position(), 1);
    f->WriteLong(0x04030201);
    f->WriteInteger(-2);
    f->WriteSingle(1.5f);
    f->WriteDouble(-0.25);
    f->WriteFixed("KIVO", 4);
    EXPECT_EQ(f->Position(), 1 + 4 + 2 + 4 + 8 + 4);
  }
  // 0x04030201, -2 (2 bytes), 1.5f, -0.25, "KIVO".
  EXPECT_EQ(ReadAll(path),
            (std::vector<unsigned char>{1, 2, 3, 4, 0xFE, 0xFF, 0,    0,   0xC0, 0x3F, 0,
                                        0, 0, 0, 0, 0,    0xD0, 0xBF, 'K', 'I',  'V',  'O'}));
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  f->Seek(5);
  EXPECT_EQ(f->ReadInteger(), -2);
  EXPECT_EQ(f->ReadSingle(), 1.5f);
  EXPECT_EQ(f->ReadDouble(), -0.25);
  EXPECT_FALSE(f->Eof());
  EXPECT_EQ(f->ReadFixed(4), "KIVO");
  EXPECT_TRUE(f->AtEnd());
}

TEST(BinaryFile, ReadMeetingTheEndSetsEofAndZeroFills) {
  TempDir dir;
  const auto path = dir.File("short.bin");
  WriteAll(path, {0x11, 0x22});
  auto f = BinaryFile::Open(path, BinaryFile::Access::kRead);
  EXPECT_EQ(f->ReadLong(), 0x2211);
  EXPECT_TRUE(f->Eof());
  f->Seek(1);
  EXPECT_FALSE(f->Eof());
  f->ReadBytes(nullptr, 0);
  EXPECT_FALSE(f->Eof());
  f->Seek(2);
  unsigned char b = 0;
  EXPECT_EQ(f->ReadBytes(&b, 1), 1u);
  EXPECT_FALSE(f->Eof());
  EXPECT_TRUE(f->AtEnd());
}

TEST(BinaryFile, ReadOnlyFileOpensForReadingAndRefusesWrites) {
  if (::geteuid() == 0) GTEST_SKIP() << "root may write any file";
  TempDir dir;
  const auto path = dir.File("ro.bin");
  WriteAll(path, {1, 0, 0, 0});
  ::chmod(path.c_str(), 0444);
  auto f = BinaryFile::Open(path, BinaryFile::Access::kReadWrite);
  EXPECT_FALSE(f->Writable());
  EXPECT_EQ(f->ReadLong(), 1);
  EXPECT_EQ(ErrorOf([&] { f->WriteLong(2); }), kErrBadFileMode);
}

}  // namespace
}  // namespace quelo
