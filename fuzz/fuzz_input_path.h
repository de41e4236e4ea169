// The file each fuzz target writes its input to: one per process, so that
// parallel jobs (-jobs=N) do not share it, removed when the process ends.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quelo::fuzz {

inline const std::string& InputPath(const char* target) {
  static const std::string path = [target] {
    const char* dir = std::getenv("TMPDIR");
    std::string p = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/quelo-fuzz-" +
                    target + "-" + std::to_string(::getpid()) + ".qgl";
    std::atexit([] { std::remove(InputPath(nullptr).c_str()); });
    return p;
  }();
  return path;
}

}  // namespace quelo::fuzz
