// Runs one of our programs as a user would and captures what it prints.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temp_dir.h"

namespace quelo::testing {

struct CommandResult {
  int status = -1;  // exit status, or -1 when killed by a signal
  std::string out;
  std::string err;
};

inline std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Runs `command` (a shell command line) with a time limit, so a hang fails
// the test instead of stalling the run.
inline CommandResult RunCommand(const std::string& command, int timeout_seconds = 60) {
  TempDir dir;
  const std::string out = dir.File("out"), err = dir.File("err");
  const std::string line = "timeout " + std::to_string(timeout_seconds) + " " + command + " >" +
                           out + " 2>" + err + " </dev/null";
  const int raw = std::system(line.c_str());
  CommandResult r;
  if (raw != -1 && WIFEXITED(raw)) r.status = WEXITSTATUS(raw);
  r.out = Slurp(out);
  r.err = Slurp(err);
  return r;
}

inline std::string Quoted(const std::string& s) {
  return "'" + s + "'";
}

}  // namespace quelo::testing
