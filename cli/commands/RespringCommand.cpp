#include <stdexcept>
#include <string>

#include "cli/commands/Commands.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/ProgramCheck.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/Process.h"

namespace tavlen::cli {

namespace {

/// The library's respring(), but a failure is reported.
int restartHomeScreen() {
  requireRunningDevice();
  const std::string program = DevicePrograms::shared().killall;
  requireProgram(program);
  Process process(program, {program, "-9", "SpringBoard"});
  try {
    process.launch();
    process.waitUntilExit();
  } catch (const Process::Error& error) {
    throw std::runtime_error(program + ": " + errorText(error));
  }
  return 0;
}

}  // namespace

void addRespringCommand(Command app) {
  Command command = app.addCommand("respring", "Restart the home screen");
  command.run(restartHomeScreen);
}

}  // namespace tavlen::cli
