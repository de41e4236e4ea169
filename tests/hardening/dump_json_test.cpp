// qgl dump --json writes its document piece by piece, so that a damaged file
// of millions of records needs no more memory than one record. The pieces
// must still add up to the document that one whole dump would give.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "scenefile/stream_head.h"
#include "support/bytes.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::Bytes;
using testing::Quoted;
using testing::RunCommand;
using testing::TempDir;

std::string DumpJson(const std::string& path, const std::string& options = "") {
  const auto r = RunCommand(Quoted(QGL_BINARY) + " dump --json " + options + " " + Quoted(path));
  EXPECT_EQ(r.status, 0) << r.err;
  return r.out;
}

// The text that nlohmann itself writes for the same document.
std::string Whole(const std::string& streamed) {
  return nlohmann::json::parse(streamed).dump(2) + "\n";
}

// One view of kind 1 whose stream is `stream`. The PI body is one Long; the
// rest of the information record reads on into the GL chunk, which fills only
// fields that nobody looks at here.
Bytes SceneWithStream(const Bytes& stream) {
  Bytes b;
  b.Tag("KIVO").L(4).L(0).Tag("TEST").L(0).L(0).L(0).L(0).L(0);
  b.Tag("PIFC").L(1).L(0).L(0).L(1).L(0).L(0).L(0).L(37 + 36 + 4);
  b.L(0);
  b.Tag("GLFC").L(1).L(0).L(0).L(0).L(0).L(0).L(0).L(0);
  b.Raw(stream.data());
  return b;
}

TEST(QglDumpJson, StreamedDocumentIsLaidOutAsOneWholeDump) {
  for (const char* name : {"example.qgl", "demo.qgl"}) {
    SCOPED_TRACE(name);
    const std::string out = DumpJson(std::string(QUELO_SOURCE_DIR "/examples/") + name);
    EXPECT_EQ(out, Whole(out));
    EXPECT_EQ(nlohmann::json::parse(out)["streams"].size(), 3u);
  }
  const std::string one = DumpJson(QUELO_SOURCE_DIR "/examples/example.qgl", "--kind 2");
  EXPECT_EQ(one, Whole(one));
}

TEST(QglDumpJson, EmptyListsAndStreamsWithoutRecordsStayValid) {
  TempDir dir;
  // No views at all: no streams, three views.
  const std::string empty = dir.File("empty.qgl");
  testing::WriteAll(empty,
                    Bytes().Tag("KIVO").L(4).L(0).Tag("TEST").L(0).L(0).L(0).L(0).L(0).data());
  std::string out = DumpJson(empty);
  EXPECT_EQ(out, Whole(out));
  auto j = nlohmann::json::parse(out);
  EXPECT_TRUE(j["streams"].empty());
  EXPECT_EQ(j["views"].size(), 3u);

  // A stream of form none has an empty record list.
  const std::string none = dir.File("none.qgl");
  testing::WriteAll(none, SceneWithStream(Bytes().L(-5)).data());
  out = DumpJson(none);
  EXPECT_EQ(out, Whole(out));
  j = nlohmann::json::parse(out);
  ASSERT_EQ(j["streams"].size(), 1u);
  EXPECT_EQ(j["streams"][0]["form"], "none");
  EXPECT_TRUE(j["streams"][0]["records"].empty());
}

TEST(QglDumpJson, RunTimeErrorComesAfterTheRecordsBeforeIt) {
  TempDir dir;
  const std::string path = dir.File("overflow.qgl");
  Bytes stream;
  stream.Raw(StreamHeadBytes()).L(4).L(12).S(1).S(2).S(3);
  stream.L(99).L(std::numeric_limits<Long>::max() - 10);
  testing::WriteAll(path, SceneWithStream(stream).data());
  const std::string out = DumpJson(path);
  const auto j = nlohmann::json::parse(out);
  const auto& s = j["streams"][0];
  ASSERT_EQ(s["records"].size(), 2u);
  EXPECT_EQ(s["records"][0]["args"], nlohmann::json::parse("[1, 2, 3]"));
  EXPECT_EQ(s["error"]["number"], 6);
  // "error" is the only key out of nlohmann's sorted order: it is known last.
  EXPECT_LT(out.find("\"records\""), out.find("\"error\""));
}

}  // namespace
}  // namespace quelo
