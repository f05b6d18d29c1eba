#include <memory>
#include <stdexcept>
#include <string>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/work/ProgramCheck.h"
#include "tavlen/device/AppControl.h"
#include "tavlen/device/ProcessControl.h"
#include "tavlen/device/SystemService.h"

namespace tavlen::cli {

namespace {

int kill(const std::string& app) {
  const std::string bundleID = bundleIDOf(app);
  if (!SystemService::isAvailable()) {
    throw std::runtime_error("the system service for running apps is not available");
  }
  requireProgram(killProgram());
  if (!SystemService::pidForApplication(bundleID)) {
    throw std::runtime_error(bundleID + " is not running");
  }
  killAppWithBundleID(bundleID);
  return 0;
}

}  // namespace

void addKillCommand(Command app) {
  Command command = app.addCommand("kill", "End a running app");
  const auto name = std::make_shared<std::string>();
  command.text("APP", *name, kAppHelp).required().notEmpty();
  command.run([name] { return kill(*name); });
}

}  // namespace tavlen::cli
