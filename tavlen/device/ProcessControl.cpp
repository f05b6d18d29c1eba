#include "tavlen/device/ProcessControl.h"

#include <array>
#include <charconv>
#include <string>
#include <system_error>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/detail/Spawn.h"

namespace tavlen {

namespace {

/// A cycle of links counts as a missing program.
void runSilently(std::filesystem::path (*program)(), const char* argument) {
  try {
    killProcess(program().c_str(), argument);
  } catch (const std::system_error&) {
    return;
  }
}

}  // namespace

std::filesystem::path killProgram() { return DeviceRoot::shared().resolve("/bin/kill"); }

std::filesystem::path killallProgram() { return DeviceRoot::shared().resolve("/usr/bin/killall"); }

pid_t killProcess(const char* path, const char* argument) {
  pid_t child = -1;
  // Without a child there is nothing to wait for: `child` is then unspecified, and waiting for it
  // could reap another child of this process.
  if (detail::spawn(path, {path, "-9", argument}, detail::ProgramLookup::exact, child) != 0) {
    return -1;
  }
  int status = 0;
  return detail::waitForChild(child, status);
}

void killProcessWithPID(pid_t pid) {
  if (pid < 1) return;
  std::array<char, 16> text{};
  std::to_chars(text.data(), text.data() + text.size() - 1, pid);
  runSilently(killProgram, text.data());
}

void respring() { runSilently(killallProgram, "SpringBoard"); }

}  // namespace tavlen
