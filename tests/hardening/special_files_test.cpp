// A path that names something other than a regular file is refused with a
// file error at once: a named pipe must not make a reader wait for a writer.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "common/binary_file.h"
#include "common/runtime_error.h"
#include "support/error_of.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::Quoted;

TEST(SpecialFiles, PipesFoldersAndDevicesAreRefusedWithoutWaiting) {
  testing::TempDir dir;
  const std::string fifo = dir.File("pipe.qgl");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  // Through the tool first, under a time limit, so that a reader that waits
  // fails here instead of stalling the test run.
  for (const char* command : {"info", "dump", "trace"}) {
    SCOPED_TRACE(command);
    const auto r = testing::RunCommand(Quoted(QGL_BINARY) + " " + command + " " + Quoted(fifo), 20);
    ASSERT_EQ(r.status, 2) << r.err;
    EXPECT_NE(r.err.find("cannot read"), std::string::npos) << r.err;
  }
  using Access = BinaryFile::Access;
  for (const auto& [path, access] : {std::pair{fifo, Access::kRead},
                                     {fifo, Access::kReadWrite},
                                     {dir.path().string(), Access::kRead},
                                     {std::string("/dev/null"), Access::kRead},
                                     {std::string("/dev/zero"), Access::kReadWrite}}) {
    EXPECT_EQ(testing::ErrorOf([&] { BinaryFile::Open(path, access); }), kErrPathFileAccess)
        << path;
  }
}

}  // namespace
}  // namespace quelo
