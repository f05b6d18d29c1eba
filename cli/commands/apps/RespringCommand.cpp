#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>

#include "cli/commands/Commands.h"
#include "cli/process/ProgramCheck.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/Process.h"

namespace tavlen::cli {

namespace {

constexpr const char* kHomeScreen = "SpringBoard";

/// What was restarted, for the output.
struct Row {
  std::string restarted;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("restarted", &Row::restarted)};
  }
};

/// The library's respring(), but a failure is reported.
int restartHomeScreen(bool json) {
  requireRunningDevice();
  const std::string program = DevicePrograms::shared().killall;
  requireProgram(program);
  Process process(program, {program, "-9", kHomeScreen});
  try {
    process.launch();
    process.waitUntilExit();
  } catch (const Process::Error& error) {
    throw std::runtime_error(program + ": " + errorText(error));
  }
  if (json) printData(shownJSON(Row{kHomeScreen}) + "\n");
  return 0;
}

}  // namespace

void addRespringCommand(Command app) {
  Command command = app.addCommand("respring", "Restart the home screen");
  const auto json = std::make_shared<bool>(false);
  command.flag("--json", *json, "Print what was restarted as a JSON object");
  command.run([json] { return restartHomeScreen(*json); });
}

}  // namespace tavlen::cli
