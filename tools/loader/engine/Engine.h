#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "tools/loader/base/EventReceiver.h"
#include "tools/loader/base/ScriptPlaces.h"
#include "tools/loader/engine/IdentityTable.h"
#include "tools/loader/engine/MethodTable.h"
#include "tools/loader/engine/ReleaseQueue.h"
#include "tools/loader/engine/WatchedCode.h"
#include "tools/loader/types/StructureMakers.h"

namespace tavlen::loader {

class HookStack;

/// The context of a tweak, and what its values, calls and hooks share.
///
/// Threads: any, also concurrently. The engine lets one script run at a time, and lets others run
/// while a script waits for the program's code.
class Engine {
 public:
  /// Makes a context without globals of the loader, for code with the source map `map`. The
  /// receiver must live as long.
  Engine(const std::string& code, const std::string& map, EventReceiver& receiver, bool isTracing);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  JSGlobalContextRef context() const { return context_; }
  IdentityTable& objects() { return objects_; }
  ReleaseQueue& releases() { return releases_; }
  MethodTable& methods() { return methods_; }
  StructureMakers& structures() { return structures_; }
  const ScriptPlaces& places() const { return places_; }
  /// The code of the tweak that is in no hook.
  const WatchedCode& outside() const { return outside_; }

  /// From now on hooks call the originals: for a forked child, which lacks the engine's threads.
  void stop() { isStopped_.store(true, std::memory_order_relaxed); }
  bool isStopped() const { return isStopped_.load(std::memory_order_relaxed); }

  /// Whether calls are reported.
  bool isTracing() const { return isTracing_; }
  /// Reports the event with shortened texts.
  void report(LoaderEvent event);
  /// Reports `event`, one of LoaderEvent's constants, with the method and the place of `code`.
  void report(const char* event, const WatchedCode& code, std::string message);
  /// Reports, once for each thread, that its stack has no room for `code`. Does without the script
  /// engine, which has no room either.
  void reportNoRoom(HookStack& stack, const WatchedCode& code);
  /// Reports a mistake of the hook `method`, or of the code outside of hooks if that is empty; once
  /// for each method and place, or else text, and at most 1,000. Its place is that of `thrown`, or
  /// else of `function`; each may be null. A function must be protected until it is forgotten.
  void reportMistake(const std::string& method, const std::string& message, JSValueRef thrown,
                     JSObjectRef function);
  /// Drops what is remembered of a function that is protected no longer.
  void forget(JSObjectRef function);

 private:
  std::optional<TextPosition> placeOf(JSObjectRef function);

  EventReceiver& receiver_;
  const bool isTracing_;
  std::atomic<bool> isStopped_ = false;
  const ScriptPlaces places_;
  const WatchedCode outside_{*this, {}, {}};
  JSGlobalContextRef context_;
  MethodTable methods_;
  StructureMakers structures_;
  IdentityTable objects_;
  ReleaseQueue releases_;
  std::mutex lock_;
  std::set<std::string> mistakes_;  ///< those that were reported
  std::unordered_map<JSObjectRef, std::optional<TextPosition>> functions_;  ///< their places
};

}  // namespace tavlen::loader
