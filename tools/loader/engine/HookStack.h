#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <JavaScriptCore/JavaScript.h>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tools/loader/base/ProcessorTime.h"
#include "tools/loader/base/ThreadStack.h"
#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

class Hook;
struct WatchedCode;

/// One call of a hook. On the stack of its thread, where the collector sees the values.
struct HookRecord {
  HookRecord(Hook& owner, const WatchedCode& code, void** passed, std::size_t resultSize)
      : hook(owner), watched(&code), arguments(passed), answerMemory(resultSize) {}

  Hook& hook;
  const WatchedCode* watched;  ///< the hook's
  void** arguments;            ///< the caller's, receiver and selector first, as libffi passes them
  JSObjectRef self = nullptr;  ///< the receiver
  JSValueRef answer = nullptr;  ///< what the original returned; null before it was called
  CallMemory answerMemory;      ///< the same, as it returned it
  bool ownsAnswer = false;      ///< whether an alloc method's answer had no wrapper before
  bool ownsReceiver = false;  ///< whether the hook has still to consume a reference to the receiver
  HookRecord* outer = nullptr;  ///< the record below it on the stack
  // NOLINTNEXTLINE(modernize-avoid-c-arrays): uninitialised
  JSValueRef values[CallSignature::kMostArguments];
};

/// The hooks that run on one thread, the innermost on top.
class HookStack {
 public:
  /// That of the calling thread.
  static HookStack& current();

  HookStack(const HookStack&) = delete;
  HookStack& operator=(const HookStack&) = delete;
  ~HookStack();

  /// The running hook; null outside of hooks.
  HookRecord* top() const { return top_; }

  /// A hook function that runs (RAII).
  class Entry {
   public:
    Entry(HookStack& stack, HookRecord& record);
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

   private:
    HookStack& stack_;
  };
  /// Code that runs outside of a hook's function (RAII).
  class OutermostCode {
   public:
    explicit OutermostCode(const WatchedCode& code, HookStack& stack = current());
    OutermostCode(const OutermostCode&) = delete;
    OutermostCode& operator=(const OutermostCode&) = delete;
    ~OutermostCode();

   private:
    HookStack& stack_;
    const WatchedCode* former_;
  };
  /// The loader's own messages (RAII): hooks that they meet call the originals.
  class OwnWork {
   public:
    explicit OwnWork(HookStack& stack = current()) : stack_(stack) { ++stack_.ownWork_; }
    OwnWork(const OwnWork&) = delete;
    OwnWork& operator=(const OwnWork&) = delete;
    ~OwnWork() { --stack_.ownWork_; }

   private:
    HookStack& stack_;
  };
  /// The program's code, called by a script (RAII): hooks that it meets run, and the time is not
  /// the script's.
  class Outside {
   public:
    explicit Outside(HookStack& stack = current());
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;
    ~Outside();

   private:
    HookStack& stack_;
    unsigned ownWork_;
  };
  bool isOwnWork() const { return ownWork_ != 0; }

  /// Whether the thread has the stack for another script.
  bool hasRoom() const { return isAtOrAbove(lowestPlace_); }
  /// Returns true once: the thread reports only once that it has not.
  bool takeReport() { return !std::exchange(hasReported_, true); }

  /// The script that runs on a thread, for whom it takes too long.
  struct Running {
    std::atomic<const WatchedCode*> code = nullptr;  ///< null outside of scripts
    std::atomic<std::uint64_t> serial = 0;  ///< changes whenever a script begins or goes on
    ProcessorTime time;
  };
  /// Calls `visit` with the state of each thread that has run a script, under a lock.
  static void forEachThread(FunctionRef<void(const Running&)> visit);

 private:
  HookStack();
  void computes(const WatchedCode* code);

  HookRecord* top_ = nullptr;
  const WatchedCode* outermost_ = nullptr;  ///< what runs outside of hooks
  unsigned ownWork_ = 0;
  bool hasReported_ = false;
  const std::uintptr_t lowestPlace_ = lowestPlaceForScripts();
  Running running_;
};

}  // namespace tavlen::loader
