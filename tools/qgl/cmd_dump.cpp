// qgl dump FILE [--kind N] [--json]: every record of each located stream, as
// the decoder that replay uses sees it.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
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
        const char* separator = "";
        std::cout << "(";
        VisitFields(r, [&separator](auto value) {
          std::cout << separator << FormatArg(value);
          separator = ", ";
        });
        std::cout << ")";
      }
      std::cout << "\n";
    }
  } catch (const RuntimeError& e) {
    std::cout << "  run-time error " << e.number() << " (" << e.what() << "): replay ends here\n";
  }
}

// JSON is written piece by piece in the layout of nlohmann's dump(2), so that
// a stream of millions of records (a damaged file of 8-byte unknown records)
// needs the memory of one record, not of all of them. The keys of a stream
// come in sorted order except "error", which is known only at the end.
std::string JsonText(const nlohmann::json& j, std::size_t depth) {
  const std::string text = j.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    out += c;
    if (c == '\n') out.append(depth * 2, ' ');
  }
  return out;
}

void DumpJson(BinaryFile& f, Long kind, Long position) {
  std::optional<RecordReader> reader;
  std::optional<nlohmann::json> error;
  auto keep_error = [&error](const RuntimeError& e) {
    error = nlohmann::json{{"number", e.number()}, {"message", e.what()}};
  };
  try {
    f.Seek(position);
    reader.emplace(f);
  } catch (const RuntimeError& e) {
    keep_error(e);
  }
  const StreamForm form = reader ? reader->form() : StreamForm::kNone;
  std::cout << "    {\n"
            << "      \"form\": " << JsonText(StreamFormName(form), 3) << ",\n"
            << "      \"kind\": " << kind << ",\n"
            << "      \"position\": " << position << ",\n"
            << "      \"records\": [";
  std::size_t count = 0;
  if (reader) {
    Record r;
    try {
      while (reader->Next(r)) {
        nlohmann::json args = nlohmann::json::array();
        if (r.action == RecordAction::kPlay) {
          VisitFields(r, [&args](auto value) { args.push_back(JsonArg(value)); });
        }
        const nlohmann::json rec = {
            {"position", r.position}, {"op", r.op},   {"length", r.length},
            {"name", MethodName(r)},  {"args", args}, {"action", RecordActionName(r.action)}};
        std::cout << (count++ == 0 ? "\n" : ",\n") << "        " << JsonText(rec, 4);
      }
    } catch (const RuntimeError& e) {
      keep_error(e);
    }
  }
  std::cout << (count == 0 ? "]" : "\n      ]");
  if (error) std::cout << ",\n      \"error\": " << JsonText(*error, 3);
  std::cout << "\n    }";
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
  // Every view is located before anything is printed, so that a file that
  // cannot be read gives its one-line message and no half-written JSON.
  std::vector<Long> results;
  try {
    for (Long kind : kinds) {
      SceneInfo info;
      results.push_back(KIVO_GLMapFile::LocateStream(o.file, kind, info));
    }
  } catch (const RuntimeError& e) {
    PrintFileError(o.file, std::string("cannot read: ") + e.what());
    return kExitUsage;
  }
  bool foreign = false;
  for (Long result : results) foreign = foreign || result == KIVO_GLMapFile::kNotSceneFile;

  if (o.json) {
    std::cout << "{\n  \"file\": " << JsonText(o.file, 1) << ",\n  \"streams\": [";
    std::size_t streams = 0;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      if (results[i] <= 0) continue;
      std::cout << (streams++ == 0 ? "\n" : ",\n");
      DumpJson(*file, kinds[i], results[i]);
    }
    std::cout << (streams == 0 ? "]" : "\n  ]") << ",\n  \"views\": [";
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      const nlohmann::json view = {{"kind", kinds[i]}, {"result", results[i]}};
      std::cout << (i == 0 ? "\n" : ",\n") << "    " << JsonText(view, 2);
    }
    std::cout << (kinds.empty() ? "]" : "\n  ]") << "\n}\n";
  } else {
    try {
      for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (results[i] <= 0) {
          std::cout << "kind " << kinds[i] << ": no stream (" << results[i] << ", "
                    << DescribeLocateResult(results[i]) << ")\n";
          continue;
        }
        DumpText(*file, kinds[i], results[i]);
      }
    } catch (const RuntimeError& e) {
      std::cout.flush();
      PrintFileError(o.file, std::string("cannot read: ") + e.what());
      return kExitUsage;
    }
  }
  std::cout.flush();
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
