// qgl: looks inside scene files. main() only parses the command line,
// dispatches to the chosen command and turns stray errors into exit statuses.
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <iterator>
#include <vector>

#include "tools/qgl/commands.h"

namespace {

using quelo::qgl::Command;

// The subcommands, in the order `qgl --help` lists them; one line each.
// clang-format off
const Command* const kCommands[] = {
    &quelo::qgl::kInfoCommand,
    &quelo::qgl::kDumpCommand,
    &quelo::qgl::kTraceCommand,
    &quelo::qgl::kDemoCommand,
    &quelo::qgl::kFormatsCommand,
    &quelo::qgl::kRenderCommand,
};
// clang-format on

}  // namespace

int main(int argc, char** argv) {
  using namespace quelo::qgl;
  CLI::App app{"qgl: looks inside KIVO OpenGL scene files (.qgl)", "qgl"};
  app.require_subcommand(1);
  std::vector<CLI::App*> subs;
  std::vector<CommandRun> runs;
  for (const Command* c : kCommands) {
    CLI::App* sub = app.add_subcommand(c->name, c->help);
    subs.push_back(sub);
    runs.push_back(c->setup(*sub));
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& e) {
    return app.exit(e);  // --help: printed, status 0
  } catch (const CLI::ParseError& e) {
    std::cerr << "qgl: " << e.what() << " (see qgl --help)\n";
    return kExitUsage;
  }
  try {
    for (std::size_t i = 0; i < subs.size(); ++i) {
      if (subs[i]->parsed()) return runs[i]();
    }
  } catch (const std::exception& e) {
    std::cerr << "qgl: " << e.what() << "\n";
    return kExitUsage;
  }
  return kExitUsage;
}
