// qgl info FILE [--json]: the file header, the chain of chunks and, for each
// view kind, what the container reader finds.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "common/runtime_error.h"
#include "scenefile/container.h"
#include "tools/qgl/commands.h"
#include "tools/qgl/qgl_common.h"

namespace quelo::qgl {

namespace {

// A damaged file may chain very many chunks; a listing longer than this is
// of no use to anybody and would only eat memory.
constexpr std::size_t kMaxListedChunks = 10000;

struct Options {
  std::string file;
  bool json = false;
};

struct ChunkRow {
  Long position;
  ChunkHeader header;
};

struct ViewRow {
  Long kind;
  ViewTags tags;
  Long result;
  bool info_read;
  SceneInfo info;
};

const char* ChainEndName(ChainEnd end) {
  switch (end) {
    case ChainEnd::kEndOfFile:
      return "end_of_file";
    case ChainEnd::kBadPosition:
      return "bad_position";
    case ChainEnd::kRevisit:
      return "revisit";
    case ChainEnd::kStopped:
      break;
  }
  return "listing_cut";
}

std::string DescribeChainEnd(ChainEnd end, Long next) {
  const std::string at = std::to_string(next);
  switch (end) {
    case ChainEnd::kEndOfFile:
      return "ends at the end of the file (next position " + at + ")";
    case ChainEnd::kBadPosition:
      return "ends: next position " + at + " is below 1";
    case ChainEnd::kRevisit:
      return "ends: next position " + at + " was already visited (a cycle)";
    case ChainEnd::kStopped:
      break;
  }
  return "listing cut after " + std::to_string(kMaxListedChunks) + " chunks";
}

// Fixed texts are blank padded; show them without the padding.
std::string Trimmed(const std::string& s) {
  const auto end = s.find_last_not_of(std::string(" \0", 2));
  return PrintableTag(end == std::string::npos ? std::string() : s.substr(0, end + 1));
}

void PrintText(const Options& o, Long length, const FileHeader& h,
               const std::vector<ChunkRow>& chunks, ChainEnd end, Long last_next,
               const std::vector<ViewRow>& views) {
  std::cout << "file    " << o.file << ", " << length << " bytes\n";
  std::cout << "header  magic \"" << PrintableTag(h.magic) << "\", version " << h.version
            << ", reserved " << h.reserved_a << "/" << h.reserved_b << ", tag \""
            << PrintableTag(h.header_tag) << "\", values " << h.value1 << ", " << h.value2 << ", "
            << h.value3 << ", " << h.value4 << (h.complete ? "" : " (header cut short)") << "\n";
  std::cout << "chunks  " << chunks.size() << "\n";
  std::printf("  %10s  %-6s  %8s  %9s  %10s\n", "position", "tag", "view id", "body form", "next");
  for (const ChunkRow& c : chunks) {
    std::printf("  %10d  %-6s  %8d  %9d  %10d\n", c.position,
                ("\"" + PrintableTag(c.header.tag) + "\"").c_str(), c.header.view_id,
                c.header.body_form, c.header.next);
  }
  std::cout << "  chain " << DescribeChainEnd(end, last_next) << "\n";
  std::cout << "views\n";
  for (const ViewRow& v : views) {
    std::printf("  kind %d  %s/%s  %6d  ", v.kind, v.tags.pi, v.tags.gl, v.result);
    std::cout << DescribeLocateResult(v.result);
    if (v.info_read) {
      std::cout << "; flags " << v.info.Flags << ", revision " << v.info.Revision << ", title \""
                << PrintableTag(v.info.Title) << "\"";
    }
    std::cout << "\n";
  }
}

void PrintJson(const Options& o, Long length, const FileHeader& h,
               const std::vector<ChunkRow>& chunks, ChainEnd end, Long last_next,
               const std::vector<ViewRow>& views) {
  nlohmann::json out;
  out["file"] = o.file;
  out["length"] = length;
  out["header"] = {{"magic", PrintableTag(h.magic)},
                   {"version", h.version},
                   {"reserved_a", h.reserved_a},
                   {"header_tag", PrintableTag(h.header_tag)},
                   {"value1", h.value1},
                   {"value2", h.value2},
                   {"reserved_b", h.reserved_b},
                   {"value3", h.value3},
                   {"value4", h.value4},
                   {"complete", h.complete}};
  out["chunks"] = nlohmann::json::array();
  for (const ChunkRow& c : chunks) {
    out["chunks"].push_back({{"position", c.position},
                             {"tag", PrintableTag(c.header.tag)},
                             {"view_id", c.header.view_id},
                             {"body_form", c.header.body_form},
                             {"next", c.header.next},
                             {"body_length", c.header.value2}});
  }
  out["chain_end"] = ChainEndName(end);
  out["chain_end_next"] = last_next;
  out["views"] = nlohmann::json::array();
  for (const ViewRow& v : views) {
    nlohmann::json view = {
        {"kind", v.kind}, {"pi_tag", v.tags.pi}, {"gl_tag", v.tags.gl}, {"result", v.result}};
    if (v.info_read) {
      view["info"] = {{"flags", v.info.Flags},
                      {"drawing_no", Trimmed(v.info.DrawingNo)},
                      {"project_name", Trimmed(v.info.ProjectName)},
                      {"setup_flags", v.info.Setup.Flags},
                      {"scale", JsonSingle(v.info.Setup.Scale)},
                      {"revision", v.info.Revision},
                      {"title", PrintableTag(v.info.Title)}};
    }
    out["views"].push_back(view);
  }
  std::cout << out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

int Run(const Options& o) {
  std::unique_ptr<BinaryFile> file;
  FileHeader header;
  if (const int rc = OpenSceneFile(o.file, file, header); rc != kExitOk) return rc;

  std::vector<ChunkRow> chunks;
  std::vector<ViewRow> views;
  ChainEnd end = ChainEnd::kEndOfFile;
  Long last_next = kFirstChunkPosition;
  Long length = 0;
  try {
    length = file->Length();
    end = WalkChunks(*file, [&](Long position, const ChunkHeader& h) {
      if (chunks.size() == kMaxListedChunks) return false;
      chunks.push_back({position, h});
      last_next = h.next;
      return true;
    });
    file.reset();
    for (Long kind = 1; kind <= kViewKindCount; ++kind) {
      ViewRow v{kind, {}, 0, false, {}};
      TagsForKind(kind, v.tags);
      v.result = KIVO_GLMapFile::LocateStream(o.file, kind, v.info);
      v.info_read = v.result >= 0;
      views.push_back(v);
    }
  } catch (const RuntimeError& e) {
    PrintFileError(o.file, std::string("cannot read: ") + e.what());
    return kExitUsage;
  }

  if (o.json) {
    PrintJson(o, length, header, chunks, end, last_next, views);
  } else {
    PrintText(o, length, header, chunks, end, last_next, views);
  }
  for (const ViewRow& v : views) {
    if (v.result == KIVO_GLMapFile::kNotSceneFile) {
      PrintFileError(o.file, "not a scene file of this format (view kind " +
                                 std::to_string(v.kind) + ": PI body form other than 0 or 1)");
      return kExitNotSceneFile;
    }
  }
  return kExitOk;
}

CommandRun Setup(CLI::App& sub) {
  auto o = std::make_shared<Options>();
  sub.add_option("FILE", o->file, "scene file (.qgl)")->required();
  sub.add_flag("--json", o->json, "print JSON instead of text");
  sub.footer(
      "Exit status: 0 success, 1 not a scene file of this format (also when a view's\n"
      "PI chunk has a body form other than 0 or 1), 2 usage error or unreadable file.");
  return [o] { return Run(*o); };
}

}  // namespace

const Command kInfoCommand = {
    "info", "file header, chain of chunks and where each view's stream starts", &Setup};

}  // namespace quelo::qgl
