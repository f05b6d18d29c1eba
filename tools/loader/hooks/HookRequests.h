#pragma once

#include <objc/objc.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/TextLines.h"
#include "tools/loader/base/ScriptPlaces.h"
#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

class Hook;

/// hookClass(name, {}, methods): the hooks that a tweak asks for, and those whose class or method
/// no image has loaded yet.
///
/// Threads: any; a class may come with an image that any thread loads.
class HookRequests : public NativeFunction {
 public:
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override;

  /// After an image has been loaded: hooks the waiting methods that came with it, also those that
  /// another thread asks for at the same time, and those that its categories have replaced.
  void retry();

 private:
  /// One entry of `methods`: its key is the type encoding, "-" or "+", and the selector.
  struct Request {
    std::string className;
    std::string text;  ///< "-[Class selector]"
    std::string selector;
    std::string encoding;
    bool isClassMethod;
    JSObjectRef function;               ///< protected
    std::optional<TextPosition> place;  ///< of the key in the source
    bool lacksMethod = false;           ///< the class came without the method

    Class owner() const;
  };

  Request requestOf(const std::string& className, const std::string& key, JSValueRef function,
                    ScriptPlaces::Search& places) const;
  bool install(const Request& request);
  bool installLate(Request& request);
  void installOrWait(Request request);
  void report(const char* event, const Request& request, const std::string& message) const;

  std::mutex lock_;  ///< never held while a method is hooked, which takes the run time's lock
  std::vector<Request> waiting_;
  std::map<std::pair<Class, SEL>, Hook*> hooks_;  ///< the last one of each method
  std::uint64_t images_ = 0;                      ///< changes with each retry()
};

}  // namespace tavlen::loader
