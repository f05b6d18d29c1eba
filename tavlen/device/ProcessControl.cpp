#include "tavlen/device/ProcessControl.h"

#include <array>
#include <charconv>
#include <string>

#include "tavlen/device/DevicePrograms.h"
#include "tavlen/foundation/tasks/Spawn.h"

namespace tavlen {

namespace {

void runSilently(const std::filesystem::path& program, const char* argument) {
  if (!program.empty()) killProcess(program.c_str(), argument);
}

}  // namespace

pid_t killProcess(const char* path, const char* argument) {
  pid_t child = -1;
  // Without a child there is nothing to wait for: `child` is then unspecified, and waiting for it
  // could reap another child of this process.
  if (Spawn().start(path, {path, "-9", argument}, ProgramLookup::exact, child) != 0) return -1;
  int status = 0;
  return waitForChild(child, status);
}

void killProcessWithPID(pid_t pid) {
  if (pid < 1) return;
  std::array<char, 16> text{};
  std::to_chars(text.data(), text.data() + text.size() - 1, pid);
  runSilently(DevicePrograms::shared().kill, text.data());
}

void respring() { runSilently(DevicePrograms::shared().killall, "SpringBoard"); }

}  // namespace tavlen
