#pragma once

#include <objc/objc.h>

#include <atomic>
#include <mutex>
#include <vector>

#include <JavaScriptCore/JavaScript.h>

namespace tavlen::loader {

class Engine;

/// References that the engine's finalizers gave up, and functions that blocks did. A finalizer may
/// not release an object itself, because that can run a hooked dealloc, and a block may end where
/// the engine cannot be called. Threads: any.
class ReleaseQueue {
 public:
  explicit ReleaseQueue(Engine& engine) : engine_(engine) {}
  ReleaseQueue(const ReleaseQueue&) = delete;
  ReleaseQueue& operator=(const ReleaseQueue&) = delete;
  ~ReleaseQueue() = default;

  /// Adds an object whose wrapper is gone; `isOwned` if the wrapper held a reference.
  void add(id object, bool isOwned);
  /// Adds a function whose protection ends.
  void add(JSObjectRef function);
  /// Whether there is something to drain. Costs little.
  bool isEmpty() const { return isEmpty_.load(std::memory_order_relaxed); }
  /// Releases the objects, of which some may be deallocated, and drops what they raise. Not from
  /// inside a hook.
  void drain();

 private:
  struct Entry {
    id object;
    bool isOwned;
  };

  Engine& engine_;
  std::atomic<bool> isEmpty_ = true;
  std::mutex lock_;
  std::vector<Entry> entries_;
  std::vector<JSObjectRef> functions_;
};

}  // namespace tavlen::loader
