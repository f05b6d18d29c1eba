#include "cli/commands/Commands.h"
#include "cli/work/ProgramCheck.h"
#include "tavlen/device/ProcessControl.h"

namespace tavlen::cli {

void addRespringCommand(Command app) {
  Command command = app.addCommand("respring", "Restart the home screen");
  command.run([] {
    requireProgram(killallProgram());
    respring();
    return 0;
  });
}

}  // namespace tavlen::cli
