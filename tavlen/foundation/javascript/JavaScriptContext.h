#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/DescribedError.h"
#include "tavlen/foundation/javascript/JavaScriptValue.h"

struct OpaqueJSContext;

namespace tavlen {

/// A JavaScript environment: a global object and everything that scripts leave in it.
///
/// The context keeps the first exception raised by any call on it or on its values; later ones are
/// dropped. Calls continue to work after an exception. A script may run for ever and use all
/// memory: evaluate only trusted script text.
///
/// Only the language is offered: no timers, no modules, no text encoders.
///
/// The first context changes the process for good: the engine starts threads, and on Linux it
/// replaces the handlers of SIGSEGV, SIGBUS and SIGUSR1. It passes faults that are not its own to
/// the handlers that it replaced. A SIGUSR1 that another sends ends the process, unless the
/// engine was given another signal first, by JSConfigureSignalForGC(), a function that it exports
/// but does not declare.
///
/// Threads: one thread at a time may use a context and its values. Contexts share nothing, so each
/// thread may have its own.
class TAVLEN_API JavaScriptContext : public std::enable_shared_from_this<JavaScriptContext> {
 public:
  /// Thrown where the engine's shared library cannot be loaded.
  class EngineError : public DescribedError {
   public:
    /// `reason` is the system's.
    explicit EngineError(std::string reason) : reason_(std::move(reason)) {}
    std::string description() const override;

   private:
    std::string reason_;
  };

  /// Creates a context, which lives until the last reference to it and the last of its values are
  /// gone. Throws EngineError.
  static std::shared_ptr<JavaScriptContext> make();

  JavaScriptContext(const JavaScriptContext&) = delete;
  JavaScriptContext& operator=(const JavaScriptContext&) = delete;
  ~JavaScriptContext();

  /// Runs the UTF-8 `script` and returns the value of its last expression. Returns undefined when
  /// the script does not parse or raises an exception; the exception is recorded. `sourceURL` names
  /// the script in call stacks.
  JavaScriptValue evaluate(std::string_view script, std::string_view sourceURL);

  /// The global object. Its properties are the scripts' `var`s and functions; top-level `let`,
  /// `const` and `class` names are visible to scripts only.
  JavaScriptValue globalObject();

  /// Creates a string from UTF-8; each malformed sequence becomes one U+FFFD.
  JavaScriptValue string(std::string_view text);

  /// The first exception raised in this context; nothing when there was none. Usually an Error, but
  /// a script may throw any value, even undefined.
  std::optional<JavaScriptValue> exception();

 private:
  friend class JavaScriptValue;

  JavaScriptContext();
  void record(const OpaqueJSValue* exception);

  OpaqueJSContext* context_;
  /// Not a JavaScriptValue, which would keep this context alive for ever.
  const OpaqueJSValue* exception_ = nullptr;
};

}  // namespace tavlen
