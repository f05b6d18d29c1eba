#include "tools/loader/hooks/Watch.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>
#include <unordered_map>

#include "tavlen/foundation/objc/ObjCRuntime.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/WatchedCode.h"

namespace tavlen::loader {

namespace {

/// What the watch has seen of a thread's script.
struct Seen {
  std::uint64_t serial = 0;
  std::chrono::nanoseconds since{};  ///< the thread's time, in which waiting does not count
  bool isReported = false;
};

class Watch {
 public:
  Watch(Engine& engine, std::chrono::milliseconds limit) : engine_(engine), limit_(limit) {}

  [[noreturn]] void run() {
    constexpr std::chrono::milliseconds kLongestInterval(500);
    const auto interval = std::clamp(limit_ / 10, std::chrono::milliseconds(1), kLongestInterval);
    while (true) {
      std::this_thread::sleep_for(interval);
      bool isIdle = true;
      HookStack::forEachThread(
          [&](const HookStack::Running& running) { isIdle = look(running) && isIdle; });
      // To release takes the engine, which a script that computes for ever would not give.
      if (isIdle && !engine_.releases().isEmpty()) release();
    }
  }

 private:
  /// Returns whether no script computes on the thread.
  bool look(const HookStack::Running& running) {
    const WatchedCode* code = running.code.load(std::memory_order_relaxed);
    const std::uint64_t serial = running.serial.load(std::memory_order_relaxed);
    Seen& seen = seen_[&running];
    const bool isIdle = code == nullptr || &code->engine != &engine_;
    if (isIdle || seen.serial != serial) {
      seen = {serial, running.time.used(), false};
      return isIdle;
    }
    if (!seen.isReported && running.time.used() - seen.since >= limit_) {
      seen.isReported = true;
      report(*code);
    }
    return false;
  }

  void report(const WatchedCode& code) {
    engine_.report(
        LoaderEvent::kSlow, code,
        "the script has been computing for more than " + std::to_string(limit_.count()) + " ms");
  }

  void release() {
    const ObjCRuntime::AutoreleasePool pool;
    engine_.releases().drain();
  }

  Engine& engine_;
  std::chrono::milliseconds limit_;
  std::unordered_map<const HookStack::Running*, Seen> seen_;
};

}  // namespace

void startWatch(Engine& engine, std::chrono::milliseconds limit) {
  // The program's signals are its own threads'.
  sigset_t all;
  sigset_t former;
  sigfillset(&all);  // a macro on Apple's systems
  ::pthread_sigmask(SIG_SETMASK, &all, &former);
  std::thread([&engine, limit] { Watch(engine, limit).run(); }).detach();
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

}  // namespace tavlen::loader
