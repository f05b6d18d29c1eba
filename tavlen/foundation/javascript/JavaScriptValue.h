#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct OpaqueJSValue;

namespace tavlen {

class JavaScriptContext;

/// A value of a script, safe from the garbage collector for as long as this object lives.
///
/// It keeps its context alive. A copy names the same value; a moved-from object may only be
/// assigned to or destroyed. Threads: as its context.
class JavaScriptValue {
 public:
  /// What becomes of an exception that a script raises while a value is read. `record` hands it to
  /// the context, which keeps the first; `ignore` drops it, for looking at a value without leaving
  /// a trace, as when the context's own exception is being reported.
  enum class Exceptions { record, ignore };

  JavaScriptValue(const JavaScriptValue& other);
  JavaScriptValue(JavaScriptValue&& other) noexcept = default;
  JavaScriptValue& operator=(JavaScriptValue other) noexcept;
  ~JavaScriptValue();

  JavaScriptContext& context() const { return *context_; }

  /// These tests run no script. A String object is an object and no string.
  bool isUndefined() const;
  bool isString() const;
  bool isObject() const;

  /// The property `name`: undefined when there is none and when reading it raises an exception, be
  /// it a getter's or the one of reading from null or undefined. A primitive is read as its object
  /// form, so that a string has a "length".
  JavaScriptValue property(std::string_view name, Exceptions mode = Exceptions::record) const;

  /// The result of this value's method `name`, called with this value as `this`. Undefined when an
  /// exception is raised, which the context records; undefined without an exception when the
  /// property holds something that is no function, except for a missing one, which is a TypeError.
  ///
  /// Runs as long as the script does: there is no time limit. The arguments are of the same
  /// context; one of another stops the process.
  JavaScriptValue call(std::string_view name,
                       const std::vector<JavaScriptValue>& arguments = {}) const;

  /// The value as text, by the language's own conversion: "5", "null", what an object's `toString`
  /// gives. UTF-8; NUL characters are kept, a lone surrogate becomes U+FFFD. Nothing for a symbol
  /// and for an object whose conversion raises an exception.
  std::optional<std::string> text(Exceptions mode = Exceptions::record) const;

 private:
  friend class JavaScriptContext;

  /// Protects `value`; null stands for undefined, as a failed call of the engine gives it.
  JavaScriptValue(std::shared_ptr<JavaScriptContext> context, const OpaqueJSValue* value);

  std::shared_ptr<JavaScriptContext> context_;
  const OpaqueJSValue* value_;
};

}  // namespace tavlen
