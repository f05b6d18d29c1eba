#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "tools/loader/EventReceiver.h"
#include "tools/loader/HookRequests.h"
#include "tools/loader/IdentityTable.h"
#include "tools/loader/MethodTable.h"
#include "tools/loader/ReleaseQueue.h"
#include "tools/loader/ScriptPlaces.h"
#include "tools/loader/StructureMakers.h"

namespace tavlen::loader {

/// What a tweak's package holds for the loader.
struct TweakCode {
  std::string code;       ///< code.js
  std::string map;        ///< code.js.map
  std::string resources;  ///< the path of the folder with the resources
};

/// A tweak in this process: its context, its globals, its hooks. Lives as long as the process,
/// since methods lead to it.
///
/// Threads: any thread may call its hooks. The engine lets one script run at a time, and lets
/// others run while a script waits for the program's code.
class Engine {
 public:
  /// Prepares the context. The receiver must live as long.
  static Engine& make(TweakCode tweak, EventReceiver& receiver, bool isTracing);

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// Runs the tweak's code, which asks for its hooks. Reports a mistake; the hooks before it stay.
  void run();
  /// To call after an image was loaded: hooks methods of classes that it brought.
  void imageLoaded() { hooks_.retry(); }

  JSGlobalContextRef context() const { return context_; }
  IdentityTable& objects() { return objects_; }
  ReleaseQueue& releases() { return releases_; }
  MethodTable& methods() { return methods_; }
  StructureMakers& structures() { return structures_; }
  const ScriptPlaces& places() const { return places_; }

  /// Whether calls are reported.
  bool isTracing() const { return isTracing_; }
  void report(const LoaderEvent& event) { receiver_.receive(event); }
  /// Reports a mistake of the hook `method`, or of the code outside of hooks if that is empty; once
  /// for each text and place. Its place is that of `thrown`, or else of `function`; each may be
  /// null.
  void reportMistake(const std::string& method, const std::string& message, JSValueRef thrown,
                     JSObjectRef function);

 private:
  Engine(TweakCode tweak, EventReceiver& receiver, bool isTracing);

  std::optional<TextPosition> placeOf(JSValueRef thrown, JSObjectRef function) const;
  void defineGlobals();
  void defineClassNames(JSObjectRef define);
  void setGlobal(const char* name, JSValueRef value);
  JSObjectRef makeFunction(NativeFunction* function);

  const TweakCode tweak_;
  EventReceiver& receiver_;
  const bool isTracing_;
  const ScriptPlaces places_;
  JSGlobalContextRef context_;
  MethodTable methods_;
  StructureMakers structures_;
  IdentityTable objects_;
  ReleaseQueue releases_;
  HookRequests& hooks_;  ///< owned by the context
  std::mutex lock_;
  std::set<std::string> mistakes_;  ///< those that were reported
};

}  // namespace tavlen::loader
