#include "cli/classes/ChildDump.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/classes/ChildProcess.h"
#include "cli/classes/DumpAnswer.h"
#include "cli/classes/DumpChild.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/Connection.h"
#include "tavlen/foundation/files/ExecutablePath.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Logs each line of what a child prints.
class PrintedLines {
 public:
  PrintedLines() = default;
  PrintedLines(const PrintedLines&) = delete;
  PrintedLines& operator=(const PrintedLines&) = delete;
  ~PrintedLines() {
    if (!line_.empty()) logMessage(line_);
  }

  void add(std::string_view bytes) {
    constexpr std::size_t kLongest = 4096;
    for (const char byte : bytes) {
      if (byte != '\n') line_ += byte;
      if (byte != '\n' && line_.size() < kLongest) continue;
      logMessage(line_);
      line_.clear();
    }
  }

 private:
  std::string line_;
};

/// What a child has sent so far. The image can send as well, so none of it is trusted.
class Answer {
 public:
  bool isComplete() const {
    return bytes_.size() >= DumpAnswer::kBytes && bytes_.size() - DumpAnswer::kBytes >= head().size;
  }
  void add(std::string_view bytes) {
    bytes_ += bytes;
    if (bytes_.size() >= DumpAnswer::kBytes && head().size > limits::kDumpBytes) {
      throw std::runtime_error("its classes take more than " + std::to_string(limits::kDumpBytes) +
                               " bytes");
    }
  }
  /// Throws as dumpInChild(). The answer must be complete.
  ClassParser::Classes classes() const {
    const DumpAnswer answer = head();
    const auto content = std::string_view(bytes_).substr(DumpAnswer::kBytes, answer.size);
    if (answer.kind == DumpAnswer::Kind::notLoaded) throw DynamicClassParser::Error::failed();
    if (answer.kind == DumpAnswer::Kind::failed) throw std::runtime_error(std::string(content));
    try {
      return decodeKeyedArchive<ClassParser::Classes>(content);
    } catch (const std::exception& error) {
      throw std::runtime_error("its process handed over no classes: " + errorText(error));
    }
  }

 private:
  DumpAnswer head() const { return DumpAnswer::read(bytes_); }

  std::string bytes_;
};

/// The child and what it sends.
class RunningDump {
 public:
  RunningDump(const fs::path& image, const std::optional<std::string>& className)
      : RunningDump(image, className, Connection::socketPair(), Connection::pipe()) {}

  /// Reads the answer. Calls `check`, which may throw, at least every 50 ms.
  const Answer& answer(FunctionRef<void()> check) {
    while (!answer_.isComplete()) {
      check();
      // Before the reading: then all that it has sent is read.
      const bool hasEnded = child_.hasEnded();
      const bool hasRead = read(hasEnded);
      if (!hasEnded || hasRead || answer_.isComplete()) continue;
      throw std::runtime_error("the image ended the process that loaded it (" +
                               endText(child_.end()) + ")");
    }
    read(true);  // the last lines that it printed
    return answer_;
  }

 private:
  RunningDump(const fs::path& image, const std::optional<std::string>& className, Connection socket,
              Connection printed)
      : socket_(std::move(socket.first)),
        printed_(std::move(printed.first)),
        child_(executablePath(), argumentsFor(image, className), socket.second.get(),
               printed.second.get()) {}

  static std::vector<std::string> argumentsFor(const fs::path& image,
                                               const std::optional<std::string>& className) {
    std::vector<std::string> arguments = dumpChildArguments(image, className);
    arguments.insert(arguments.begin(), "tavlen");
    return arguments;
  }

  /// Waits for input, unless the child has ended, and reads some. Returns whether a part of the
  /// answer was read.
  bool read(bool hasEnded) {
    // The end of the socket's input means that the child will end soon, but poll() cannot wait for
    // that.
    constexpr int kInterval = 50;
    constexpr int kShortInterval = 1;
    std::array<pollfd, 2> inputs = {{{socket_.get(), POLLIN, 0}, {printed_.get(), POLLIN, 0}}};
    const int wait = hasEnded ? 0 : socket_ ? kInterval : kShortInterval;
    if (::poll(inputs.data(), inputs.size(), wait) <= 0) return false;
    if (inputs[1].revents != 0) lines_.add(readFrom(printed_));
    if (inputs[0].revents == 0) return false;
    const std::string_view bytes = readFrom(socket_);
    answer_.add(bytes);
    return !bytes.empty();
  }

  /// Reads what there is. At the end of the input, or on an error, closes the descriptor.
  std::string_view readFrom(FileDescriptor& input) {
    const ssize_t size =
        retryOnInterrupt([&] { return ::read(input.get(), buffer_.data(), buffer_.size()); });
    if (size <= 0) FileDescriptor(input.release());
    return {buffer_.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
  }

  static constexpr std::size_t kBufferBytes = std::size_t{1} << 16;

  FileDescriptor socket_;
  FileDescriptor printed_;
  std::vector<char> buffer_ = std::vector<char>(kBufferBytes);
  PrintedLines lines_;
  Answer answer_;
  ChildProcess child_;
};

}  // namespace

ClassParser::Classes dumpInChild(const fs::path& image, const ChildDumpOptions& options) {
  const std::shared_ptr<Progress>& progress = options.progress;
  const auto start = Clock::now();
  const auto check = [&] {
    if (progress != nullptr && progress->isCancelled()) {
      throw std::system_error(std::make_error_code(std::errc::operation_canceled), image.string());
    }
    if (options.timeout && Clock::now() - start >= *options.timeout) {
      throw std::runtime_error(overrunText(*options.timeout));
    }
  };
  RunningDump dump(image, options.className);
  ClassParser::Classes classes = dump.answer(check).classes();
  if (progress != nullptr) progress->setCompletedUnitCount(progress->completedUnitCount() + 1);
  return classes;
}

}  // namespace tavlen::cli
