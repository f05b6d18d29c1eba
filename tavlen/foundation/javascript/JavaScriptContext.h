#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "tavlen/foundation/javascript/JavaScriptValue.h"

struct OpaqueJSContext;

namespace tavlen {

/// A JavaScript world of its own: a global object, and what scripts leave in it.
///
/// The context holds the first exception that any call on it or on its values raised, and never
/// lets go of it; later ones are dropped, and calls go on working all the same. A script may run
/// for ever and use what memory there is: only trusted script text belongs here.
///
/// The language alone is offered: no timers, no modules, no text encoders.
///
/// Threads: a context, with all of its values, belongs to the thread that uses it at the time;
/// contexts do not share anything, so that each thread may have its own.
class JavaScriptContext : public std::enable_shared_from_this<JavaScriptContext> {
 public:
  /// A fresh context, which lives until the last reference and the last of its values are gone.
  static std::shared_ptr<JavaScriptContext> make();

  JavaScriptContext(const JavaScriptContext&) = delete;
  JavaScriptContext& operator=(const JavaScriptContext&) = delete;
  ~JavaScriptContext();

  /// Runs the UTF-8 `script` and gives its last expression's value, or undefined when it does not
  /// parse or raises an exception, which is recorded. `sourceURL` names the script in call stacks.
  JavaScriptValue evaluate(std::string_view script, std::string_view sourceURL);

  /// Its properties are the scripts' `var`s and functions; top-level `let`, `const` and `class`
  /// names are visible to scripts only.
  JavaScriptValue globalObject();

  /// A string with the UTF-8 `text`; each malformed sequence becomes one U+FFFD.
  JavaScriptValue string(std::string_view text);

  /// The first exception raised in this context: an Error most often, but a script may throw any
  /// value, undefined included. Nothing when none was raised.
  std::optional<JavaScriptValue> exception();

 private:
  friend class JavaScriptValue;

  JavaScriptContext();
  void record(const OpaqueJSValue* exception);

  OpaqueJSContext* context_;
  const OpaqueJSValue* exception_ = nullptr;  // bare: a JavaScriptValue would own its owner
};

}  // namespace tavlen
