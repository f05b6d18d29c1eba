#include "cli/work/ClassDump.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/ChildDump.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"
#include "tavlen/introspection/remote/RemoteClassParser.h"
#include "tavlen/introspection/remote/TessaloopInterface.h"

namespace tavlen::cli {

namespace {

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

std::system_error cancelled(const ImageArgument& argument) {
  return {std::make_error_code(std::errc::operation_canceled), argument.image};
}

/// The likely reason why an image cannot be loaded.
std::string hintFor(const std::filesystem::path& file) {
  try {
    if (MachOFile::read(RandomAccessFile(file))) {
      return " (a device's image cannot be loaded on this machine; use --parser remote to ask "
             "the running app)";
    }
  } catch (const std::system_error& error) {
    return ": " + error.code().message();
  }
  return " (--verbose shows the loader's message)";
}

/// A question to a class parser.
template <class Answer>
using Question = std::function<Answer(const ClassParser& parser, const Executable& image,
                                      const std::shared_ptr<Progress>& progress)>;

/// A DynamicClassParser in a child process. Throws what dumpInChild() throws.
class ChildParser : public ClassParser {
 public:
  explicit ChildParser(OptionalLimit timeout) : timeout_(timeout) {}

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override {
    return dumpInChild(std::filesystem::absolute(executable.path()), {timeout_, parent, {}});
  }
  std::shared_ptr<ObjCClass> parseNamedBelow(const std::shared_ptr<Progress>& parent,
                                             const Executable& executable,
                                             std::string_view name) const override {
    const Classes found = dumpInChild(std::filesystem::absolute(executable.path()),
                                      {timeout_, parent, std::string(name)});
    return found.empty() ? nullptr : found.front();
  }

  OptionalLimit timeout_;
};

template <class Answer>
Answer askDynamically(const Question<Answer>& question, const Executable& image,
                      const ImageArgument& argument, const std::shared_ptr<Progress>& progress) {
  try {
    return question(ChildParser(argument.timeout), image, progress);
  } catch (const DynamicClassParser::Error& error) {
    throw std::runtime_error(argument.image + ": " + errorText(error) + hintFor(image.path()));
  } catch (const std::exception& error) {
    if (progress->isCancelled()) throw cancelled(argument);
    throw std::runtime_error(argument.image + ": " + errorText(error));
  }
}

template <class Answer>
Answer askRemotely(const Question<Answer>& question, const Executable& image,
                   const ImageArgument& argument, const std::shared_ptr<Progress>& progress) {
  const Cancellation cancellation(*progress, cancelTessaloopIfNeeded);
  TimeLimit limit(*progress, argument.timeout);
  try {
    return question(RemoteClassParser(), image, progress);
  } catch (const RemoteClassParser::Error& error) {
    if (limit.isOverrun())
      throw std::runtime_error(argument.image + ": " + overrunText(*argument.timeout));
    if (progress->isCancelled()) throw cancelled(argument);
    throw std::runtime_error(argument.image + ": " + errorText(error));
  }
}

template <class Answer>
Answer ask(const ImageArgument& argument, const Question<Answer>& question) {
  const NamedImage image = imageNamed(argument);
  const ProgressLine line("reading classes of " + argument.image);
  line.progress()->setTotalUnitCount(1);
  const bool isRemote = argument.parser == kRemoteParser;
  return (isRemote ? askRemotely<Answer> : askDynamically<Answer>)(question, *image.executable,
                                                                   argument, line.progress());
}

}  // namespace

ClassParser::Classes dumpClasses(const ImageArgument& argument) {
  return ask<ClassParser::Classes>(
      argument, [](const ClassParser& parser, const Executable& image, const auto& progress) {
        return parser.parse(image, progress);
      });
}

std::shared_ptr<ObjCClass> dumpedClass(const ImageArgument& argument, const std::string& name) {
  auto found = ask<std::shared_ptr<ObjCClass>>(
      argument, [&](const ClassParser& parser, const Executable& image, const auto& progress) {
        return parser.parseClassNamed(name, image, progress);
      });
  if (found == nullptr) {
    throw std::runtime_error(argument.image + ": defines no class " + name);
  }
  return found;
}

}  // namespace tavlen::cli
