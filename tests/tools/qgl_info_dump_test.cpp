// qgl info and qgl dump, run as programs on files made by the writer and on
// hand-damaged ones: exit statuses, messages and output.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "scenefile/container.h"
#include "scenefile/container_writer.h"
#include "scenefile/record_writer.h"
#include "scenefile/stream_head.h"
#include "support/bytes.h"
#include "support/run_command.h"
#include "support/temp_dir.h"

namespace quelo {
namespace {

using testing::Bytes;
using testing::TempDir;

const std::string kExample = QUELO_SOURCE_DIR "/examples/example.qgl";

using testing::Quoted;

struct RunResult : testing::CommandResult {
  nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

RunResult RunQgl(const std::string& args) {
  return {testing::RunCommand(Quoted(QGL_BINARY) + " " + args)};
}

int LineCount(const std::string& s) {
  return static_cast<int>(std::count(s.begin(), s.end(), '\n'));
}

// The text that nlohmann itself writes for the same document: dump --json
// writes piece by piece (one record's memory for any stream) and must add up
// to exactly this.
std::string Whole(const std::string& streamed) {
  return nlohmann::json::parse(streamed).dump(2) + "\n";
}

// Each record of a stream as "position op length action name args", or with
// the number of arguments in place of their values.
std::vector<std::string> Records(const nlohmann::json& stream, bool values = true) {
  std::vector<std::string> out;
  for (const auto& r : stream["records"]) {
    out.push_back(r["position"].dump() + " " + r["op"].dump() + " " + r["length"].dump() + " " +
                  r["action"].get<std::string>() + " " + r["name"].get<std::string>() + " " +
                  (values ? r["args"].dump() : std::to_string(r["args"].size())));
    EXPECT_EQ(r.size(), 6u) << r;  // no other keys
  }
  return out;
}

using Lines = std::vector<std::string>;

// A file with one view of `kind` whose GL chunk body is `stream` as it stands.
std::string SaveView(const TempDir& dir, const Bytes& stream, Long kind = 1) {
  const std::string path = dir.File("view" + std::to_string(kind) + ".qgl");
  auto f = CreateSceneFile(path);
  ContainerWriter w(*f);
  w.AddInfoChunk(kind, 1, SceneInfo{});
  ViewTags tags{};
  TagsForKind(kind, tags);
  w.AddRawChunk(tags.gl, 1, 0, stream.data());
  w.Finish();
  return path;
}

TEST(QglInfo, ReportsHeaderChunksAndViewsOfTheExample) {
  const auto r = RunQgl("info --json " + Quoted(kExample));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  const auto j = r.Json();
  EXPECT_EQ(j["header"]["magic"], "KIVO");
  EXPECT_EQ(j["header"]["version"], 4);
  EXPECT_EQ(j["chain_end"], "end_of_file");
  ASSERT_EQ(j["chunks"].size(), 6u);
  EXPECT_EQ(j["chunks"][0]["position"], 37);
  EXPECT_EQ(j["chunks"][0]["tag"], "PIFC");
  // Each chunk's next is the following chunk's position.
  for (std::size_t i = 0; i + 1 < j["chunks"].size(); ++i) {
    EXPECT_EQ(j["chunks"][i]["next"], j["chunks"][i + 1]["position"]);
  }
  ASSERT_EQ(j["views"].size(), 3u);
  for (int kind = 1; kind <= 3; ++kind) {
    const auto& v = j["views"][kind - 1];
    SceneInfo info;
    EXPECT_EQ(v["kind"], kind);
    EXPECT_EQ(v["result"], KIVO_GLMapFile::LocateStream(kExample, kind, info));
    EXPECT_GT(v["result"].template get<int>(), 0);
    EXPECT_EQ(v["info"]["flags"], info.Flags);
  }
  EXPECT_EQ(j["views"][1]["pi_tag"], "PIAR");
  EXPECT_EQ(j["views"][1]["gl_tag"], "GLAR");
  const auto text = RunQgl("info " + Quoted(kExample));
  EXPECT_EQ(text.status, 0);
  EXPECT_NE(text.out.find("\"GLA3\""), std::string::npos);
  EXPECT_NE(text.out.find("stream at"), std::string::npos);
}

TEST(QglTool, ForeignMissingAndMisusedFilesGetTheirExitStatus) {
  TempDir dir;
  const std::string foreign = dir.File("foreign.qgl"), missing = dir.File("missing.qgl");
  testing::WriteAll(foreign, {'P', 'K', 3, 4, 0, 0, 0, 0});
  for (const std::string cmd : {"info ", "dump "}) {
    SCOPED_TRACE(cmd);
    // Nothing on stdout, one line on stderr that names the file.
    for (const auto& [path, status] : {std::pair{foreign, 1}, std::pair{missing, 2}}) {
      const auto r = RunQgl(cmd + Quoted(path));
      EXPECT_EQ(r.status, status);
      EXPECT_EQ(r.out, "");
      EXPECT_EQ(LineCount(r.err), 1);
      EXPECT_NE(r.err.find(path), std::string::npos);
      EXPECT_EQ(r.err.find("not a scene file") != std::string::npos, status == 1) << r.err;
    }
    // A folder, no FILE, an unknown option.
    for (const std::string& bad :
         {Quoted(dir.path().string()), std::string(), "--bogus " + Quoted(kExample)}) {
      EXPECT_EQ(RunQgl(cmd + bad).status, 2) << bad;
    }
    const auto help = RunQgl(cmd + "--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--json"), std::string::npos);
  }
  for (const std::string& bad :
       {std::string(), std::string("frobnicate x"), "dump --kind 4 " + Quoted(kExample)}) {
    EXPECT_EQ(RunQgl(bad).status, 2) << bad;
  }
  const auto help = RunQgl("--help");
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.out.find("info"), std::string::npos);
  EXPECT_NE(help.out.find("dump"), std::string::npos);
}

TEST(QglDump, ListsEveryRecordOfEachStreamAsTheDecoderSeesIt) {
  const auto demo = RunQgl("dump --json " + Quoted(QUELO_SOURCE_DIR "/examples/demo.qgl"));
  EXPECT_EQ(demo.out, Whole(demo.out));
  const auto r = RunQgl("dump --json " + Quoted(kExample));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, Whole(r.out));
  const auto j = r.Json();
  ASSERT_EQ(j["streams"].size(), 3u);
  for (const auto& s : j["streams"]) {
    SceneInfo info;
    const Long position = s["position"];
    EXPECT_EQ(position, KIVO_GLMapFile::LocateStream(kExample, s["kind"], info));
    EXPECT_EQ(s["form"], "framed");
    std::vector<std::string> want;
    for (const Record& w : testing::DecodeFile(kExample, position).records) {
      want.push_back(std::to_string(w.position) + " " + std::to_string(w.op) + " " +
                     std::to_string(w.length) + " " + RecordActionName(w.action) + " " +
                     std::string(w.spec()->method) + " " + std::to_string(w.ArgCount()));
    }
    EXPECT_EQ(Records(s, false), want);
    EXPECT_EQ(s["records"].back()["action"], "stop");
  }
  // A vertex's and a colour's arguments come out as the numbers written.
  const Lines first = Records(j["streams"][0]);
  for (const std::string want : {" oglVertex3f [0.0,0.0,0.0]", " oglColor3f [0.6,0.6,0.6]"}) {
    EXPECT_TRUE(std::any_of(first.begin(), first.end(), [&](const std::string& line) {
      return line.ends_with(want);
    })) << want;
  }

  const auto only = RunQgl("dump --json --kind 2 " + Quoted(kExample));
  EXPECT_EQ(only.out, Whole(only.out));
  ASSERT_EQ(only.Json()["streams"].size(), 1u);
  EXPECT_EQ(only.Json()["streams"][0]["kind"], 2);
  const auto text = RunQgl("dump --kind 3 " + Quoted(kExample));
  EXPECT_EQ(text.status, 0);
  EXPECT_NE(text.out.find("oglMaterialfv(1032, 5634, 0.8, 0.8, 0.8, 1)"), std::string::npos);
  EXPECT_NE(text.out.find("framed"), std::string::npos);
}

TEST(QglDump, ShowsSkipsStopsAndFormsOfDamagedStreams) {
  TempDir dir;
  Bytes framed;
  framed.Raw(StreamHeadBytes());
  framed.L(1).L(8).L(4).L(0);  // known op, wrong length: skip
  framed.L(77).L(0);           // unknown op: skip
  framed.L(0).L(4).L(0);       // op 0 with a length: skip
  framed.L(4).L(12).S(1).S(2).S(3);
  framed.L(9).L(-4);  // negative length: stop
  framed.L(2).L(0);
  // The view's stream starts at 315 (file header, PI chunk with a 206-byte
  // body, GL chunk header), its framed records 756 bytes later.
  const std::string framed_path = SaveView(dir, framed);
  EXPECT_EQ(Records(RunQgl("dump --json " + Quoted(framed_path)).Json()["streams"][0]),
            (Lines{"1071 1 8 skip oglBegin []", "1087 77 0 skip unknown []",
                   "1095 0 4 skip FilePutEndOfSeq []", "1107 4 12 play oglVertex3f [1.0,2.0,3.0]",
                   "1127 9 -4 stop oglEdgeFlag []"}));

  Bytes unframed;
  unframed.L(1).L(1).L(15).L(4).S(5).S(6).S(7).L(2).L(0);
  auto j = RunQgl("dump --json " + Quoted(SaveView(dir, unframed, 2))).Json();
  EXPECT_EQ(j["streams"][0]["form"], "unframed");
  EXPECT_EQ(Records(j["streams"][0]),
            (Lines{"315 1 -1 play oglBegin [1]", "323 15 -1 skip auxPutBlockBegin []",
                   "327 4 -1 play oglVertex3f [5.0,6.0,7.0]", "343 2 -1 play oglEnd []",
                   "347 0 -1 stop FilePutEndOfSeq []"}));

  const auto none = RunQgl("dump --json " + Quoted(SaveView(dir, Bytes().L(-5).L(2).L(0), 3)));
  EXPECT_EQ(none.out, Whole(none.out));
  j = none.Json();
  EXPECT_EQ(j["streams"][0]["form"], "none");
  EXPECT_TRUE(j["streams"][0]["records"].empty());

  // No chunks at all: no streams, and the three views still listed.
  const std::string bare = dir.File("bare.qgl");
  ContainerWriter(*CreateSceneFile(bare)).Finish();
  const auto b = RunQgl("dump --json " + Quoted(bare));
  EXPECT_EQ(b.out, Whole(b.out));
  EXPECT_TRUE(b.Json()["streams"].empty());
  EXPECT_EQ(b.Json()["views"].size(), 3u);

  // A run-time error comes after the records read before it.
  Bytes overflow;
  overflow.Raw(StreamHeadBytes()).L(4).L(12).S(1).S(2).S(3);
  overflow.L(99).L(std::numeric_limits<Long>::max() - 10);
  const auto o = RunQgl("dump --json " + Quoted(SaveView(dir, overflow)));
  EXPECT_EQ(o.status, 0);
  j = o.Json();
  EXPECT_EQ(j["streams"][0]["records"].size(), 2u);
  EXPECT_EQ(j["streams"][0]["error"]["number"], 6);
  // "error" is the only key out of nlohmann's sorted order: it is known last.
  EXPECT_LT(o.out.find("\"records\""), o.out.find("\"error\""));
}

TEST(ExampleScene, CommittedFileIsWhatTheWriterMakes) {
  TempDir dir;
  const std::string out = dir.File("example.qgl");
  ASSERT_EQ(testing::RunCommand(Quoted(MAKE_EXAMPLE_BINARY) + " " + Quoted(out)).status, 0);
  EXPECT_EQ(testing::ReadAll(out), testing::ReadAll(kExample))
      << "rebuild it: cmake --build build --target update_example_scene";
  // It holds what the README promises: lines, coloured triangles, polygons.
  const auto decoded = testing::DecodeFile(out, [&] {
    SceneInfo info;
    return KIVO_GLMapFile::LocateStream(out, 1, info);
  }());
  std::set<Long> ops;
  for (const Record& r : decoded.records) ops.insert(r.op);
  for (Long op : {kOpBegin, kOpVertex3f, kOpColorLong, kOpColor3f, kOpTessBeginPoly,
                  kOpTessVector3d, kOpTessVector3dv, kOpTessEndPoly, kOpBlockBegin}) {
    EXPECT_TRUE(ops.count(op)) << op;
  }
}

}  // namespace
}  // namespace quelo
