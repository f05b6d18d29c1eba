#pragma once

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/objc/ObjCRuntime.h"
#include "tavlen/tweaks/TweakProcessor.h"
#include "tests/support/TestPaths.h"
#include "tools/loader/TweakLoader.h"
#include "tools/loader/hooks/Watch.h"

extern "C" void JSSynchronousGarbageCollectForDebugging(JSContextRef context);

namespace tavlen::loader {

/// Keeps the events.
class KeptEvents : public EventReceiver {
 public:
  void receive(const LoaderEvent& event) override {
    const std::lock_guard lock(lock_);
    events_.push_back(event);
  }
  /// "mistake 3:5 -[A b]: message" for each event of the kind.
  std::vector<std::string> of(const std::string& kind) {
    const std::lock_guard lock(lock_);
    std::vector<std::string> texts;
    for (const LoaderEvent& event : events_) {
      if (event.event != kind) continue;
      texts.push_back(std::to_string(event.line.value_or(0)) + ':' +
                      std::to_string(event.column.value_or(0)) + ' ' + event.method.value_or("") +
                      ": " + event.message.value_or(""));
    }
    return texts;
  }

 private:
  std::mutex lock_;
  std::vector<LoaderEvent> events_;
};

/// A tweak of one script in this process. Its hooks stay, so each test hooks a class of its own.
struct LoadedTweak {
  /// Converts the source with the transpiler and runs it.
  explicit LoadedTweak(const std::string& source, bool isTracing = false,
                       std::optional<std::chrono::milliseconds> limit = {}) {
    const auto output = TweakProcessor(paths().resources).convert(source);
    loader = &TweakLoader::make({output.code, output.map, "/resources"}, events, isTracing);
    if (limit) startWatch(loader->engine(), *limit);
    loader->run();
  }

  /// Collects what scripts cannot reach any more, and releases the objects.
  void collect() const {
    JSSynchronousGarbageCollectForDebugging(loader->engine().context());
    loader->engine().releases().drain();
  }

  KeptEvents& events = *new KeptEvents();
  TweakLoader* loader;
};

/// The name of a new subclass of `cls`, which nothing has hooked.
inline std::string makeClass(const char* cls) {
  static int count = 0;
  const std::string name = cls + std::to_string(++count);
  objc_registerClassPair(objc_allocateClassPair(ObjCRuntime::classNamed(cls), name.c_str(), 0));
  return name;
}

/// A new object of the class, which the caller owns.
inline id make(const std::string& cls) {
  return ObjCRuntime::send(ObjCRuntime::send(ObjCRuntime::classNamed(cls.c_str()), "alloc"),
                           "init");
}

}  // namespace tavlen::loader
