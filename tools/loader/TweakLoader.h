#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>

#include "tools/loader/base/EventReceiver.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/hooks/HookRequests.h"

namespace tavlen::loader {

/// What a tweak's package holds for the loader.
struct TweakCode {
  std::string code;       ///< code.js
  std::string map;        ///< code.js.map
  std::string resources;  ///< the path of the folder with the resources
};

/// A tweak in this process: its globals, its code, its hooks. Lives as long as the process, since
/// methods lead to it.
class TweakLoader {
 public:
  /// Prepares the context. The receiver must live as long.
  static TweakLoader& make(TweakCode tweak, EventReceiver& receiver, bool isTracing);

  TweakLoader(const TweakLoader&) = delete;
  TweakLoader& operator=(const TweakLoader&) = delete;

  /// Runs the tweak's code, which asks for its hooks. Reports a mistake; the hooks before it stay.
  void run();
  /// To call after an image was loaded, on any thread: hooks methods of classes that it brought.
  void imageLoaded() { hooks_.retry(); }

  Engine& engine() { return engine_; }

 private:
  TweakLoader(TweakCode tweak, EventReceiver& receiver, bool isTracing);

  void defineGlobals();
  void defineClassNames(JSObjectRef define);
  void setGlobal(const char* name, JSValueRef value);
  JSObjectRef makeFunction(NativeFunction* function);

  const TweakCode tweak_;
  Engine engine_;
  HookRequests& hooks_;  ///< owned by the context
};

}  // namespace tavlen::loader
