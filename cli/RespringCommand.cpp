#include <CLI/CLI.hpp>

#include "cli/Commands.h"
#include "cli/ProgramCheck.h"
#include "tavlen/device/ProcessControl.h"

namespace tavlen::cli {

void addRespringCommand(CLI::App& app, Action& action) {
  auto* command = app.add_subcommand("respring", "Restart the home screen");
  command->callback([&action] {
    action = [] {
      requireProgram(killallProgram());
      respring();
      return 0;
    };
  });
}

}  // namespace tavlen::cli
