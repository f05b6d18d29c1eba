#include "tools/loader/engine/ReleaseQueue.h"

#include <utility>

#include "tools/loader/base/ExceptionGuard.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"

namespace tavlen::loader {

void ReleaseQueue::add(id object, bool isOwned) {
  const std::lock_guard lock(lock_);
  entries_.push_back({object, isOwned});
  isEmpty_.store(false, std::memory_order_relaxed);
}

void ReleaseQueue::add(JSObjectRef function) {
  const std::lock_guard lock(lock_);
  functions_.push_back(function);
  isEmpty_.store(false, std::memory_order_relaxed);
}

void ReleaseQueue::drain() {
  std::vector<Entry> entries;
  std::vector<JSObjectRef> functions;
  {
    const std::lock_guard lock(lock_);
    entries.swap(entries_);
    functions.swap(functions_);
    isEmpty_.store(true, std::memory_order_relaxed);
  }
  for (JSObjectRef function : functions) {
    engine_.forget(function);  // first, because another function may get its address
    JSValueUnprotect(engine_.context(), function);
  }
  for (const Entry& entry : entries) {
    // First, because the address may belong to another object afterwards.
    engine_.objects().forget(entry.object);
    if (!entry.isOwned) continue;
    release(guarded([&] { release(entry.object); }));
  }
}

}  // namespace tavlen::loader
