// Helpers that the qgl commands share: opening a scene file with the tool's
// exit statuses and messages, and printing numbers the same way everywhere.
#pragma once

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "common/binary_file.h"
#include "scenefile/container.h"
#include "scenefile/record_reader.h"

namespace quelo::qgl {

// One line on standard error: "qgl: FILE: text".
void PrintFileError(const std::string& file, const std::string& text);

// Opens `path` for reading and checks its file header. Returns kExitOk with
// `file` and `header` set, or prints the one-line message and returns
// kExitUsage (cannot be read) or kExitNotSceneFile (header not accepted).
int OpenSceneFile(const std::string& path, std::unique_ptr<BinaryFile>& file, FileHeader& header);

// A tag as printable text: bytes outside ' '..'~' become \xNN.
std::string PrintableTag(const std::string& tag);

// Shortest text that reads back as the same value ("0.1", "1e+30", "nan").
std::string FormatSingle(Single v);
std::string FormatDouble(double v);

// JSON numbers: a Single becomes the double of its shortest text, so 0.1f is
// written as 0.1 rather than 0.10000000149011612.
nlohmann::json JsonSingle(Single v);

// A decoded payload field (VisitFields) as text and as JSON.
std::string FormatArg(Long v);
std::string FormatArg(Single v);
std::string FormatArg(double v);
nlohmann::json JsonArg(Long v);
nlohmann::json JsonArg(Single v);
nlohmann::json JsonArg(double v);

// What a LocateStream result means, in a few words.
std::string DescribeLocateResult(Long result);

}  // namespace quelo::qgl
