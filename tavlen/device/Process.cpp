#include "tavlen/device/Process.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/tasks/Spawn.h"

namespace tavlen {

// Errors are documented with 32-bit numbers.
static_assert(sizeof(pid_t) == sizeof(std::int32_t));

namespace {

bool holdsNUL(const std::string& text) { return text.find('\0') != std::string::npos; }

std::string_view nameOf(Process::Error::Case which) {
  switch (which) {
    case Process::Error::Case::posixSpawn:
      return "posixSpawn";
    case Process::Error::Case::waitpid:
      return "waitpid";
    case Process::Error::Case::signalled:
      return "signalled";
    case Process::Error::Case::terminated:
      return "terminated";
    case Process::Error::Case::notLaunched:
      return "notLaunched";
  }
  fatalError("Process::Error: no such case");
}

}  // namespace

Process::Process(std::string path, std::vector<std::string> arguments)
    : path_(std::move(path)), arguments_(std::move(arguments)) {}

void Process::launch() {
  pid_.reset();
  // The system would use only the text before the NUL, which may name another file.
  if (holdsNUL(path_) || std::any_of(arguments_.begin(), arguments_.end(), holdsNUL)) {
    throw Error::posixSpawn(EINVAL);
  }
  pid_t child = 0;
  const int error = Spawn().start(path_.c_str(), arguments_, ProgramLookup::alongPath, child);
  if (error != 0) throw Error::posixSpawn(error);
  pid_ = child;
}

void Process::waitUntilExit() {
  if (!pid_) throw Error::notLaunched();
  int status = 0;
  if (waitForChild(*pid_, status) == -1) throw Error::waitpid(errno);
  if (const std::optional<Error> error = Error::ofStatus(status)) throw Error(*error);
}

Process::Error Process::Error::posixSpawn(std::int32_t error) {
  return Error(Case::posixSpawn, error);
}

Process::Error Process::Error::waitpid(std::int32_t error) { return Error(Case::waitpid, error); }

Process::Error Process::Error::signalled(std::int32_t signal) {
  return Error(Case::signalled, signal);
}

Process::Error Process::Error::terminated(std::int32_t code) {
  return Error(Case::terminated, code);
}

Process::Error Process::Error::notLaunched() { return Error(Case::notLaunched); }

std::string Process::Error::description() const {
  std::string text(nameOf(which()));
  if (which() != Case::notLaunched) text += "(" + std::to_string(number_) + ")";
  return text;
}

std::optional<Process::Error> Process::Error::ofStatus(int status) {
  // Decode with documented masks, which are the same on every system. A stop is read as an exit on
  // purpose.
  const auto bits = static_cast<std::uint32_t>(status);
  const std::uint32_t low = bits & 0x7FU;
  if (low != 0 && low != 0x7F) return signalled(static_cast<std::int32_t>(low));
  const auto code = static_cast<std::int32_t>((bits >> 8U) & 0xFFU);
  if (code == 0) return std::nullopt;
  return terminated(code);
}

}  // namespace tavlen
