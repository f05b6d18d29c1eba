#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"

struct OpaqueJSValue;

namespace tavlen {

class JavaScriptContext;

/// A value of a script, protected from the garbage collector while this object lives.
///
/// It keeps its context alive. A copy refers to the same value; a moved-from object may only be
/// assigned to or destroyed. Threads: as for its context.
class TAVLEN_API JavaScriptValue {
 public:
  /// The treatment of an exception that a script raises while a value is read. `record` passes it
  /// to the context, which keeps the first. `ignore` drops it, to inspect a value without side
  /// effects, as when the context's own exception is being reported.
  enum class Exceptions { record, ignore };

  /// Refers to the same value.
  JavaScriptValue(const JavaScriptValue& other);
  JavaScriptValue(JavaScriptValue&& other) noexcept = default;
  /// Refers to the other value from now on.
  JavaScriptValue& operator=(JavaScriptValue other) noexcept;
  ~JavaScriptValue();

  /// The context of the value, alive as long as this object.
  JavaScriptContext& context() const { return *context_; }

  /// Whether the value is undefined. Runs no script; the same holds for the next two.
  bool isUndefined() const;
  /// Whether the value is a primitive string; a String object is not.
  bool isString() const;
  /// Whether the value is an object.
  bool isObject() const;

  /// The property `name`. Undefined when it does not exist or when reading it raises an exception,
  /// as a getter may, and as any read from null or undefined does. Primitives are read in their
  /// object form, so a string has a "length".
  JavaScriptValue property(std::string_view name, Exceptions mode = Exceptions::record) const;

  /// Calls this value's method `name` with this value as `this` and returns the result. A missing
  /// method is a TypeError. Undefined when an exception is raised, which the context records, and,
  /// without an exception, when the property holds something other than a function.
  ///
  /// Runs as long as the script does: there is no time limit. An argument from another context
  /// aborts the process.
  JavaScriptValue call(std::string_view name,
                       const std::vector<JavaScriptValue>& arguments = {}) const;

  /// Converts the value to text by the language's rules: "5", "null", the result of an object's
  /// `toString`. UTF-8; NUL characters are kept, a lone surrogate becomes U+FFFD. Returns nothing
  /// for a symbol, and for an object whose conversion raises an exception.
  std::optional<std::string> text(Exceptions mode = Exceptions::record) const;

 private:
  friend class JavaScriptContext;

  /// Protects `value`. Null means undefined: the engine returns null when a call fails.
  JavaScriptValue(std::shared_ptr<JavaScriptContext> context, const OpaqueJSValue* value);

  std::shared_ptr<JavaScriptContext> context_;
  const OpaqueJSValue* value_;
};

}  // namespace tavlen
