#include "cli/classes/ImageDump.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/classes/ChildDump.h"
#include "cli/classes/TimeLimit.h"
#include "cli/terminal/LastLogMessage.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"
#include "tavlen/introspection/remote/RemoteClassParser.h"
#include "tavlen/introspection/remote/TessaloopInterface.h"

namespace tavlen::cli {

namespace {

using SharedProgress = std::shared_ptr<Progress>;

/// Once the progress is cancelled, calls `end` every 50 ms until it is destroyed (RAII): a single
/// call could come too early, before the work to be ended has begun.
class Cancellation {
 public:
  Cancellation(Progress& progress, std::function<void()> end) {
    progress.setCancellationHandler([state = state_, end = std::move(end)] {
      constexpr std::chrono::milliseconds kInterval(50);
      std::unique_lock lock(state->lock);
      while (!state->isOver) {
        end();
        lock.unlock();
        std::this_thread::sleep_for(kInterval);
        lock.lock();
      }
    });
  }
  Cancellation(const Cancellation&) = delete;
  Cancellation& operator=(const Cancellation&) = delete;
  ~Cancellation() {
    const std::lock_guard lock(state_->lock);
    state_->isOver = true;
  }

 private:
  struct State {
    std::mutex lock;
    bool isOver = false;  ///< guarded by lock
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

[[noreturn]] void throwCancelled() {
  throw std::system_error(std::make_error_code(std::errc::operation_canceled));
}

/// Why an image cannot be loaded, or what to do about it.
std::string hintFor(const std::filesystem::path& file) {
  try {
    if (MachOFile::read(RandomAccessFile(file))) {
      return " (a device's image cannot be loaded on this machine; use --parser static to read its "
             "file)";
    }
  } catch (const std::system_error& error) {
    return ": " + error.code().message();
  }
  constexpr std::string_view kLoadersMessage = "dlopen encountered error: ";
  const std::string reason = lastLogMessage();
  return reason.starts_with(kLoadersMessage) ? ": " + reason.substr(kLoadersMessage.size())
                                             : " (--verbose shows the loader's message)";
}

/// What to do about an image whose file cannot be read.
std::string hintFor(StaticClassParser::ErrorCase error) {
  switch (error) {
    case StaticClassParser::ErrorCase::encrypted:
      return " (--parser remote)";
    case StaticClassParser::ErrorCase::notMachO:
      return " (--parser dynamic loads a library of this machine)";
    default:
      return "";
  }
}

void readFile(ImageDump& dump, const Executable& image, const std::string& architecture,
              const SharedProgress& progress) {
  try {
    StaticClassParser::Result result = StaticClassParser(architecture).parseImage(image, progress);
    dump.architecture = result.slice.architecture();
    dump.classes = std::move(result.classes);
    dump.categories = std::move(result.categories);
    dump.diagnostics = std::move(result.diagnostics);
  } catch (const StaticClassParser::Error& error) {
    throw std::runtime_error(errorText(error) + hintFor(error.which()));
  }
}

ClassParser::Classes askProcess(const Executable& image, const ImageArgument& argument,
                                const std::optional<std::string>& className,
                                const SharedProgress& progress) {
  try {
    return dumpInChild(std::filesystem::absolute(image.path()),
                       {argument.timeout, progress, className});
  } catch (const DynamicClassParser::Error& error) {
    throw std::runtime_error(errorText(error) + hintFor(image.path()));
  }
}

/// What to do about a failed remote dump.
std::string remoteHint() {
  const std::string reason = lastLogMessage();
  return (reason.empty() ? "" : ": " + reason) +
         " (remote dumps need a running device, on which the app can be launched)";
}

ClassParser::Classes askApp(const Executable& image, const ImageArgument& argument,
                            const SharedProgress& progress) {
  const Cancellation cancellation(*progress, cancelTessaloopIfNeeded);
  TimeLimit limit(*progress, argument.timeout);
  try {
    return RemoteClassParser().parse(image, progress);
  } catch (const RemoteClassParser::Error& error) {
    if (limit.isOverrun()) throw std::runtime_error(overrunText(*argument.timeout));
    if (progress->isCancelled()) throwCancelled();
    throw std::runtime_error(errorText(error) + remoteHint());
  }
}

}  // namespace

ImageDump dumpedImage(const ChosenImage& image, const ImageArgument& argument,
                      const std::optional<std::string>& className, const SharedProgress& progress) {
  ImageDump dump;
  dump.path = image.name;
  if (image.source != ClassSource::file && argument.architecture) {
    throw std::runtime_error("--arch is for Mach-O files, which the parser static reads");
  }
  switch (image.source) {
    case ClassSource::file:
      readFile(dump, *image.executable, argument.architecture.value_or(""), progress);
      break;
    case ClassSource::process:
      dump.classes = askProcess(*image.executable, argument, className, progress);
      break;
    case ClassSource::app:
      dump.classes = askApp(*image.executable, argument, progress);
      break;
  }
  return dump;
}

}  // namespace tavlen::cli
