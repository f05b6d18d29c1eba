#pragma once

#include <chrono>

#include "tavlen/tweaks/LoaderEvent.h"
#include "tools/loader/base/ExceptionGuard.h"

namespace tavlen::loader {

class Hook;
struct HookRecord;

/// A hooked call that is reported with its arguments, its result and the time that it took.
class TracedCall {
 public:
  /// Begins: the arguments are those that the caller passed.
  TracedCall(const Hook& hook, const HookRecord& record);

  /// Reports the call. `result` is what the caller gets, unless the call ends with `raised`.
  void finish(const void* result, const Raised* raised);

 private:
  const Hook& hook_;
  LoaderEvent event_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace tavlen::loader
