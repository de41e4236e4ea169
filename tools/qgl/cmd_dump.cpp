// qgl dump FILE [--kind N] [--json]: every record of each located stream, as
// the decoder that replay uses sees it.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "scenefile/container.h"
#include "scenefile/record_reader.h"
#include "tools/qgl/commands.h"
#include "tools/qgl/qgl_common.h"

namespace quelo::qgl {

namespace {

struct Options {
  std::string file;
  Long kind = 0;  // 0: every kind
  bool json = false;
};

std::string MethodName(const Record& r) {
  const OpSpec* spec = r.spec();
  return spec != nullptr ? std::string(spec->method) : std::string("unknown");
}

// One stream, printed while it is decoded so that a long stream needs no
// memory in text mode. A run-time error (a position beyond a Long) ends the
// stream here as it ends replay.
void DumpText(BinaryFile& f, Long kind, Long position) {
  f.Seek(position);
  RecordReader reader(f);
  std::cout << "stream kind " << kind << " at " << position << ": " << StreamFormName(reader.form())
            << "\n";
  Record r;
  try {
    while (reader.Next(r)) {
      std::printf("  %10d  op %-3d len %-4d %-5s %s", r.position, r.op, r.length,
                  RecordActionName(r.action), MethodName(r).c_str());
      if (r.action == RecordAction::kPlay) {
        std::cout << "(";
        for (std::size_t i = 0; i < r.ArgCount(); ++i) {
          std::cout << (i ? ", " : "") << FormatArg(r.Arg(i));
        }
        std::cout << ")";
      }
      std::cout << "\n";
    }
  } catch (const RuntimeError& e) {
    std::cout << "  run-time error " << e.number() << " (" << e.what() << "): replay ends here\n";
  }
}

nlohmann::json DumpJson(BinaryFile& f, Long kind, Long position) {
  f.Seek(position);
  RecordReader reader(f);
  nlohmann::json stream = {{"kind", kind},
                           {"position", position},
                           {"form", StreamFormName(reader.form())},
                           {"records", nlohmann::json::array()}};
  Record r;
  try {
    while (reader.Next(r)) {
      nlohmann::json args = nlohmann::json::array();
      for (std::size_t i = 0; i < r.ArgCount(); ++i) args.push_back(JsonArg(r.Arg(i)));
      stream["records"].push_back({{"position", r.position},
                                   {"op", r.op},
                                   {"length", r.length},
                                   {"name", MethodName(r)},
                                   {"args", args},
                                   {"action", RecordActionName(r.action)}});
    }
  } catch (const RuntimeError& e) {
    stream["error"] = {{"number", e.number()}, {"message", e.what()}};
  }
  return stream;
}

int Run(const Options& o) {
  std::unique_ptr<BinaryFile> file;
  FileHeader header;
  if (const int rc = OpenSceneFile(o.file, file, header); rc != kExitOk) return rc;

  std::vector<Long> kinds;
  if (o.kind != 0) {
    kinds.push_back(o.kind);
  } else {
    for (Long k = 1; k <= kViewKindCount; ++k) kinds.push_back(k);
  }
  nlohmann::json out = {
      {"file", o.file}, {"views", nlohmann::json::array()}, {"streams", nlohmann::json::array()}};
  bool foreign = false;
  try {
    for (Long kind : kinds) {
      SceneInfo info;
      const Long result = KIVO_GLMapFile::LocateStream(o.file, kind, info);
      foreign = foreign || result == KIVO_GLMapFile::kNotSceneFile;
      out["views"].push_back({{"kind", kind}, {"result", result}});
      if (result <= 0) {
        if (!o.json) {
          std::cout << "kind " << kind << ": no stream (" << result << ", "
                    << DescribeLocateResult(result) << ")\n";
        }
        continue;
      }
      if (o.json) {
        out["streams"].push_back(DumpJson(*file, kind, result));
      } else {
        DumpText(*file, kind, result);
      }
    }
  } catch (const RuntimeError& e) {
    PrintFileError(o.file, std::string("cannot read: ") + e.what());
    return kExitUsage;
  }
  if (o.json)
    std::cout << out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
  if (foreign) {
    PrintFileError(
        o.file, "not a scene file of this format (a PI chunk with a body form other than 0 or 1)");
    return kExitNotSceneFile;
  }
  return kExitOk;
}

CommandRun Setup(CLI::App& sub) {
  auto o = std::make_shared<Options>();
  sub.add_option("FILE", o->file, "scene file (.qgl)")->required();
  sub.add_option("--kind", o->kind, "only the view of this kind (1 FC, 2 AR, 3 A3)")
      ->check(CLI::Range(1, 3));
  sub.add_flag("--json", o->json, "print JSON instead of text");
  sub.footer(
      "Each record: 1-based position, op, length (-1 in the unframed form), action\n"
      "(play, skip, stop) and recording method with its arguments.\n"
      "Exit status: 0 success, 1 not a scene file of this format, 2 usage error or\n"
      "unreadable file.");
  return [o] { return Run(*o); };
}

}  // namespace

const Command kDumpCommand = {"dump", "every record of each view's command stream", &Setup};

}  // namespace quelo::qgl
