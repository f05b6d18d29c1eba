#include "tavlen/foundation/javascript/JavaScriptValue.h"

#include <utility>

#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/javascript/JavaScriptContext.h"
#include "tavlen/foundation/javascript/detail/JavaScriptEngine.h"
#include "tavlen/foundation/javascript/detail/JavaScriptString.h"

namespace tavlen {

JavaScriptValue::JavaScriptValue(std::shared_ptr<JavaScriptContext> context,
                                 const OpaqueJSValue* value)
    : context_(std::move(context)),
      value_(value != nullptr ? value : engine().JSValueMakeUndefined(context_->context_)) {
  engine().JSValueProtect(context_->context_, value_);
}

JavaScriptValue::JavaScriptValue(const JavaScriptValue& other)
    : JavaScriptValue(other.context_, other.value_) {}

JavaScriptValue& JavaScriptValue::operator=(JavaScriptValue other) noexcept {
  std::swap(context_, other.context_);
  std::swap(value_, other.value_);
  return *this;
}

JavaScriptValue::~JavaScriptValue() {
  if (context_ != nullptr) engine().JSValueUnprotect(context_->context_, value_);
}

bool JavaScriptValue::isUndefined() const {
  return engine().JSValueIsUndefined(context_->context_, value_);
}

bool JavaScriptValue::isString() const {
  return engine().JSValueIsString(context_->context_, value_);
}

bool JavaScriptValue::isObject() const {
  return engine().JSValueIsObject(context_->context_, value_);
}

JavaScriptValue JavaScriptValue::property(std::string_view name, Exceptions mode) const {
  JSContextRef context = context_->context_;
  JSValueRef exception = nullptr;
  JSValueRef result = nullptr;
  if (JSObjectRef object = engine().JSValueToObject(context, value_, &exception)) {
    result =
        engine().JSObjectGetProperty(context, object, JavaScriptString(name).get(), &exception);
  }
  if (mode == Exceptions::record) context_->record(exception);
  return {context_, exception == nullptr ? result : nullptr};
}

JavaScriptValue JavaScriptValue::call(std::string_view name,
                                      const std::vector<JavaScriptValue>& arguments) const {
  JSContextRef context = context_->context_;
  std::vector<JSValueRef> values;
  values.reserve(arguments.size());
  for (const JavaScriptValue& argument : arguments) {
    // The engine would mix two heaps and crash later.
    if (argument.context_ != context_)
      fatalError("a JavaScript argument belongs to another context");
    values.push_back(argument.value_);
  }

  // A step that fails returns null, which ends the chain with its exception.
  JSValueRef exception = nullptr;
  JSValueRef result = nullptr;
  JSObjectRef object = engine().JSValueToObject(context, value_, &exception);
  JSValueRef method = nullptr;
  if (object != nullptr) {
    method =
        engine().JSObjectGetProperty(context, object, JavaScriptString(name).get(), &exception);
  }
  if (method != nullptr && exception == nullptr) {
    if (JSObjectRef function = engine().JSValueToObject(context, method, &exception)) {
      result = engine().JSObjectCallAsFunction(context, function, object, values.size(),
                                               values.data(), &exception);
    }
  }
  context_->record(exception);
  return {context_, exception == nullptr ? result : nullptr};
}

std::optional<std::string> JavaScriptValue::text(Exceptions mode) const {
  JSValueRef exception = nullptr;
  JSStringRef string = engine().JSValueToStringCopy(context_->context_, value_, &exception);
  if (mode == Exceptions::record) context_->record(exception);
  if (string == nullptr) return std::nullopt;
  return JavaScriptString(string).utf8();
}

}  // namespace tavlen
