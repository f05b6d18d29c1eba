#include "cli/process/TriedProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "cli/process/ProgramFolders.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/Connection.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/tasks/Spawn.h"
#include "tavlen/tweaks/LoaderSettings.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;
namespace settings = loaderSettings;
using Receive = FunctionRef<void(const LoaderEvent&)>;

/// Leaves the keys that end programs to the one that is tried (RAII).
class IgnoredKeys {
 public:
  IgnoredKeys() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
      former_.at(i) = std::signal(kSignals.at(i), SIG_IGN);
  }
  IgnoredKeys(const IgnoredKeys&) = delete;
  IgnoredKeys& operator=(const IgnoredKeys&) = delete;
  ~IgnoredKeys() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
      (void)std::signal(kSignals.at(i), former_.at(i));
  }

 private:
  static constexpr std::array kSignals = {SIGINT, SIGQUIT};

  std::array<void (*)(int), 2> former_{};
};

/// Passes the signals that ask a program to end on to the one that is tried (RAII), except for
/// those that the caller ignores, as nohup does.
class PassedSignals {
 public:
  explicit PassedSignals(pid_t child) {
    target() = child;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      struct sigaction action {};
      (void)::sigaction(kSignals.at(i), nullptr, &former_.at(i));
      if (former_.at(i).sa_handler == SIG_IGN) continue;
      action.sa_handler = [](int signal) {
        if (const pid_t program = target()) (void)::kill(program, signal);
      };
      (void)::sigaction(kSignals.at(i), &action, nullptr);
    }
  }
  PassedSignals(const PassedSignals&) = delete;
  PassedSignals& operator=(const PassedSignals&) = delete;
  ~PassedSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
      (void)::sigaction(kSignals.at(i), &former_.at(i), nullptr);
  }

  /// From now on the program's number may belong to another.
  static void stop() { target() = 0; }

 private:
  static constexpr std::array kSignals = {SIGTERM, SIGHUP};

  static std::atomic<pid_t>& target() {
    static std::atomic<pid_t> child = 0;
    return child;
  }

  std::array<struct sigaction, 2> former_{};
};

/// The socket at a number that the caller does not use, and that the program does not expect: one
/// that closes descriptors of others may open one of its own with a low number next.
FileDescriptor highDescriptor(int socket) {
  int number = -1;
  for (const int lowest : {200, 20, 3}) {
    if (number < 0) number = ::fcntl(socket, F_DUPFD_CLOEXEC, lowest);
  }
  if (number < 0) throwSystemError("fcntl");
  return FileDescriptor(number);
}

void setVariables(Spawn& spawn, const TriedProgram& program, int events) {
  const std::string library = loaderLibrary().string();
  const char* preloaded = std::getenv("LD_PRELOAD");  // NOLINT(concurrency-mt-unsafe)
  spawn.setVariable("LD_PRELOAD", preloaded == nullptr ? library : library + ':' + preloaded);
  spawn.setVariable(settings::kLibrary, library);
  spawn.setVariable(settings::kProgram, fs::canonical(program.path).string());
  spawn.setVariable(settings::kTweak, fs::absolute(program.package).string());
  spawn.setVariable(settings::kEvents, std::to_string(events));
  spawn.setVariable(settings::kLimit, std::to_string(program.limit.count()));
  if (program.isTraced) spawn.setVariable(settings::kTrace, "1");
}

/// Throws if the loader cannot be preloaded.
void requireLoader() {
  const std::string library = loaderLibrary().string();
  if (!fs::exists(library)) throwSystemError(ENOENT, library);
  // The list of libraries to preload is parted by both, and knows no quotes.
  if (library.find_first_of(": ") != std::string::npos)
    throw std::runtime_error(library +
                             ": a path with a blank or a colon cannot be preloaded; install the "
                             "command elsewhere to try tweaks");
}

/// Passes an event on. The program could send as well, so none of it is trusted.
void pass(std::string_view packet, Receive receive) {
  LoaderEvent event;
  try {
    event = decodeJSON<LoaderEvent>(packet);
  } catch (const std::exception&) {
    return;
  }
  receive(event);
}

/// Passes on what there is, and waits for `wait` milliseconds at first. Returns whether the other
/// end is still open.
bool receiveEvents(int socket, int wait, Receive receive) {
  constexpr std::size_t kLargestPacket = std::size_t{1} << 18U;
  std::string packet(kLargestPacket, '\0');
  pollfd input = {socket, POLLIN, 0};
  while (::poll(&input, 1, wait) > 0) {
    const ssize_t size =
        retryOnInterrupt([&] { return ::recv(socket, packet.data(), packet.size(), 0); });
    if (size <= 0) return false;
    pass(std::string_view(packet).substr(0, static_cast<std::size_t>(size)), receive);
    wait = 0;
  }
  return true;
}

bool hasEnded(pid_t child) {
  siginfo_t info{};
  return retryOnInterrupt([&] {
           return ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
         }) != 0 ||
         info.si_pid == child;
}

/// Until the program has ended. A program that it started may hold the socket for longer, and it
/// may close the socket.
int waitFor(pid_t child, int socket, Receive receive) {
  constexpr int kInterval = 50;
  bool isOpen = true;
  while (isOpen && !hasEnded(child)) isOpen = receiveEvents(socket, kInterval, receive);
  siginfo_t info{};
  (void)retryOnInterrupt(
      [&] { return ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT); });
  PassedSignals::stop();
  int status = 0;
  (void)retryOnInterrupt([&] { return ::waitpid(child, &status, 0); });
  if (isOpen) (void)receiveEvents(socket, 0, receive);
  constexpr int kSignalled = 128;
  return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

fs::path programNamed(const std::string& name) {
  if (name.empty()) throw std::runtime_error("the name of the program is empty");
  const char* folders = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe)
  std::string_view rest = name.find('/') == std::string::npos && folders != nullptr ? folders : "";
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(':'), rest.size());
    fs::path path = fs::path(rest.substr(0, end)) / name;
    if (::access(path.c_str(), X_OK) == 0 && !fs::is_directory(path)) return path;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (name.find('/') == std::string::npos) throwSystemError(ENOENT, name);
  if (fs::is_directory(name)) throwSystemError(EISDIR, name);
  if (::access(name.c_str(), X_OK) != 0) throwSystemError(name);
  return name;
}

int runTried(const TriedProgram& program, Receive receive) {
  requireLoader();
  Connection events = Connection::messagePair();
  Spawn spawn;
  FileDescriptor high = highDescriptor(events.second.get());
  spawn.inheritDescriptors();
  spawn.redirect(events.second.get(), high.get());
  setVariables(spawn, program, high.get());
  pid_t child = 0;
  const int error =
      spawn.start(program.path.c_str(), program.arguments, ProgramLookup::exact, child);
  if (error != 0) throwSystemError(error, program.path.string());
  // From now on messages may get lost, but not the program's status and the end of this command.
  (void)std::signal(SIGPIPE, SIG_IGN);
  const PassedSignals passed(child);
  const IgnoredKeys ignored;
  events.second = FileDescriptor();
  high = FileDescriptor();
  return waitFor(child, events.first.get(), receive);
}

}  // namespace tavlen::cli
