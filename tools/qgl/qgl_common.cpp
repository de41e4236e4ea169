#include "tools/qgl/qgl_common.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "common/runtime_error.h"
#include "tools/qgl/commands.h"

namespace quelo::qgl {

void PrintFileError(const std::string& file, const std::string& text) {
  std::cerr << "qgl: " << file << ": " << text << "\n";
}

int OpenSceneFile(const std::string& path, std::unique_ptr<BinaryFile>& file, FileHeader& header) {
  try {
    file = BinaryFile::Open(path, BinaryFile::Access::kRead);
    header = ReadFileHeader(*file);
  } catch (const RuntimeError& e) {
    PrintFileError(path, std::string("cannot read: ") + e.what());
    return kExitUsage;
  }
  if (!header.Accepted()) {
    PrintFileError(path, "not a scene file of this format (magic \"" + PrintableTag(header.magic) +
                             "\", version " + std::to_string(header.version) + ", reserved " +
                             std::to_string(header.reserved_a) + "/" +
                             std::to_string(header.reserved_b) + ")");
    return kExitNotSceneFile;
  }
  return kExitOk;
}

std::string PrintableTag(const std::string& tag) {
  std::string out;
  for (unsigned char c : tag) {
    if (c >= ' ' && c <= '~' && c != '\\' && c != '"') {
      out += static_cast<char>(c);
    } else {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\x%02X", c);
      out += buf;
    }
  }
  return out;
}

namespace {

template <typename T>
std::string Shortest(T v) {
  char buf[64];
  const auto res = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, res.ptr);
}

}  // namespace

std::string FormatSingle(Single v) {
  return Shortest(v);
}
std::string FormatDouble(double v) {
  return Shortest(v);
}

nlohmann::json JsonSingle(Single v) {
  // Non-finite values have no JSON number; nlohmann writes them as null.
  return std::strtod(FormatSingle(v).c_str(), nullptr);
}

std::string FormatArg(Long v) {
  return std::to_string(v);
}
std::string FormatArg(Single v) {
  return FormatSingle(v);
}
std::string FormatArg(double v) {
  return FormatDouble(v);
}

nlohmann::json JsonArg(Long v) {
  return v;
}
nlohmann::json JsonArg(Single v) {
  return JsonSingle(v);
}
nlohmann::json JsonArg(double v) {
  return v;
}

std::string DescribeLocateResult(Long result) {
  if (result > 0) return "stream at " + std::to_string(result);
  switch (result) {
    case KIVO_GLMapFile::kNoGlChunk:
      return "PI chunk found, no GL chunk with its view id";
    case KIVO_GLMapFile::kNoPiChunk:
      return "no PI chunk of this kind";
    case KIVO_GLMapFile::kNotSceneFile:
      return "not of this format (PI body form other than 0 or 1)";
    default:
      return "unexpected result";
  }
}

}  // namespace quelo::qgl
