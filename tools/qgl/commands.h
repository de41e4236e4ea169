// The subcommands of qgl. Each lives in a cmd_*.cpp of its own and exports
// one Command record; main.cpp lists them in its table. Adding a command is
// a source file, its record declared here and one line in that table.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace quelo::qgl {

// Exit statuses of every command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitNotSceneFile = 1;  // the file is not a scene file of this format
inline constexpr int kExitUsage = 2;         // usage error, or a file that cannot be read

// Runs a command once the command line has been parsed; returns the exit status.
using CommandRun = std::function<int()>;

struct Command {
  const char* name;  // as typed: "info"
  const char* help;  // one line for `qgl --help`
  // Adds the command's arguments and options to its subcommand `sub` and
  // returns the function that runs it (which owns the parsed values).
  CommandRun (*setup)(CLI::App& sub);
};

extern const Command kInfoCommand;
extern const Command kDumpCommand;
extern const Command kTraceCommand;
extern const Command kDemoCommand;
extern const Command kFormatsCommand;
extern const Command kRenderCommand;

}  // namespace quelo::qgl
