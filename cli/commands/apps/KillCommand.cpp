#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>

#include "cli/arguments/AppArgument.h"
#include "cli/commands/Commands.h"
#include "cli/process/ProgramCheck.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/AppControl.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/SystemService.h"

namespace tavlen::cli {

namespace {

/// The app that was ended, for the output.
struct Row {
  std::string bundleID;
  std::int64_t process;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("bundleID", &Row::bundleID),
                      requiredField("process", &Row::process)};
  }
};

int kill(const std::string& app, bool json) {
  requireRunningDevice();
  const std::string bundleID = bundleIDOf(app);
  if (!SystemService::isAvailable()) {
    throw std::runtime_error("the system service for running apps is not available");
  }
  requireProgram(DevicePrograms::shared().kill);
  const std::optional<pid_t> process = SystemService::pidForApplication(bundleID);
  if (!process) {
    throw std::runtime_error(bundleID + " is not running");
  }
  killAppWithBundleID(bundleID);
  if (json) printData(shownJSON(Row{bundleID, *process}) + "\n");
  return 0;
}

}  // namespace

void addKillCommand(Command app) {
  Command command = app.addCommand("kill", "End a running app");
  const auto name = std::make_shared<std::string>();
  command.text("APP", *name, kAppHelp).required().notEmpty();
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json, "Print the app and its process as a JSON object");
  command.run([name, json] { return kill(*name, *json); });
}

}  // namespace tavlen::cli
