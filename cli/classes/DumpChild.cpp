#include "cli/classes/DumpChild.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <thread>
#include <utility>

#include "cli/classes/DumpAnswer.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"

namespace tavlen::cli {

namespace {

/// No subcommand has this name.
constexpr std::string_view kWord = "dump-child";
constexpr int kImageArgument = 2;
constexpr int kClassArgument = 3;

/// Moves the socket away from the standard input, which becomes /dev/null: images read that, and
/// programs that they start would inherit it.
FileDescriptor takeSocket() {
  constexpr int kLeast = 10;
  FileDescriptor socket(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, kLeast));
  if (!socket) throwSystemError("fcntl");
  const FileDescriptor nothing = FileDescriptor::open("/dev/null", O_RDONLY);
  if (::dup2(nothing.get(), STDIN_FILENO) < 0) throwSystemError("dup2");
  return socket;
}

/// Ends this process and those that the image started, once the other end of the socket is closed:
/// the command is gone, and an image that never returns would run for ever.
void endWithCommand(int socket) {
  std::thread([socket] {
    char unused = 0;
    (void)retryOnInterrupt([&] { return ::recv(socket, &unused, 1, 0); });
    ::kill(0, SIGKILL);
  }).detach();
}

std::string archiveOf(const std::filesystem::path& image, const char* className) {
  const Executable executable({}, image.parent_path(), image.filename().string(), false);
  const DynamicClassParser& parser = DynamicClassParser::sharedParser();
  if (className == nullptr) return encodeKeyedArchive(parser.parse(executable));
  ClassParser::Classes classes;
  auto found = parser.parseClassNamed(className, executable, nullptr);
  if (found != nullptr) classes.push_back(std::move(found));
  return encodeKeyedArchive(classes);
}

std::pair<DumpAnswer::Kind, std::string> answerFor(const std::filesystem::path& image,
                                                   const char* className) {
  try {
    return {DumpAnswer::Kind::classes, archiveOf(image, className)};
  } catch (const DynamicClassParser::Error&) {
    return {DumpAnswer::Kind::notLoaded, ""};
  } catch (const std::exception& error) {
    return {DumpAnswer::Kind::failed, errorText(error)};
  }
}

}  // namespace

std::vector<std::string> dumpChildArguments(const std::filesystem::path& image,
                                            const std::optional<std::string>& className) {
  std::vector<std::string> arguments = {std::string(kWord), image.string()};
  if (className) arguments.push_back(*className);
  return arguments;
}

void dumpIfChild(int argc, const char* const* argv) {
  struct stat input {};
  if (argc <= kImageArgument || argc > kClassArgument + 1 || argv[1] != kWord ||
      ::fstat(STDIN_FILENO, &input) != 0 || !S_ISSOCK(input.st_mode) || ::getpgrp() != ::getpid()) {
    return;
  }
  // The command decides whether the log is shown.
  setLogSink([](std::string_view message) {
    const std::string line = std::string(message) + "\n";
    (void)retryOnInterrupt([&] { return ::write(STDERR_FILENO, line.data(), line.size()); });
  });
  const FileDescriptor socket = takeSocket();
  endWithCommand(socket.get());
  const auto [kind, bytes] =
      answerFor(argv[kImageArgument], argc > kClassArgument ? argv[kClassArgument] : nullptr);
  socket.write(DumpAnswer{kind, bytes.size()}.written(), "answer");
  socket.write(bytes, "answer");
  ::_exit(EXIT_SUCCESS);
}

}  // namespace tavlen::cli
