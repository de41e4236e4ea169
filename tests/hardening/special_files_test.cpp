// A path that names something other than a regular file is refused with a
// file error at once: a named pipe must not make a reader wait for a writer.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "common/binary_file.h"
#include "common/runtime_error.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::Quoted;
using testing::RunCommand;
using testing::TempDir;

int OpenError(const std::string& path, BinaryFile::Access access) {
  try {
    BinaryFile::Open(path, access);
  } catch (const RuntimeError& e) {
    return e.number();
  }
  return 0;
}

TEST(SpecialFiles, NamedPipeIsRefusedWithoutWaitingForAWriter) {
  TempDir dir;
  const std::string fifo = dir.File("pipe.qgl");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  // Through the tool first, under a time limit, so that a reader that waits
  // fails here instead of stalling the test run.
  for (const char* command : {"info", "dump", "trace"}) {
    SCOPED_TRACE(command);
    const auto r = RunCommand(Quoted(QGL_BINARY) + " " + command + " " + Quoted(fifo), 20);
    ASSERT_EQ(r.status, 2) << r.err;
    EXPECT_NE(r.err.find("cannot read"), std::string::npos) << r.err;
  }
  EXPECT_EQ(OpenError(fifo, BinaryFile::Access::kRead), kErrPathFileAccess);
  EXPECT_EQ(OpenError(fifo, BinaryFile::Access::kReadWrite), kErrPathFileAccess);
}

TEST(SpecialFiles, FoldersAndDevicesAreRefused) {
  TempDir dir;
  EXPECT_EQ(OpenError(dir.path().string(), BinaryFile::Access::kRead), kErrPathFileAccess);
  EXPECT_EQ(OpenError("/dev/null", BinaryFile::Access::kRead), kErrPathFileAccess);
  EXPECT_EQ(OpenError("/dev/zero", BinaryFile::Access::kReadWrite), kErrPathFileAccess);
}

}  // namespace
}  // namespace quelo
