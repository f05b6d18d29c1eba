#include "tavlen/foundation/javascript/JavaScriptContext.h"

#include "tavlen/foundation/javascript/detail/JavaScriptEngine.h"
#include "tavlen/foundation/javascript/detail/JavaScriptString.h"

namespace tavlen {

std::string JavaScriptContext::EngineError::description() const {
  return "the JavaScript engine cannot be loaded: " + reason_;
}

std::shared_ptr<JavaScriptContext> JavaScriptContext::make() {
  return std::shared_ptr<JavaScriptContext>(new JavaScriptContext);
}

JavaScriptContext::JavaScriptContext() : context_(engine().JSGlobalContextCreate(nullptr)) {}

JavaScriptContext::~JavaScriptContext() {
  if (exception_ != nullptr) engine().JSValueUnprotect(context_, exception_);
  engine().JSGlobalContextRelease(context_);
}

JavaScriptValue JavaScriptContext::evaluate(std::string_view script, std::string_view sourceURL) {
  constexpr int kFirstLine = 1;
  const JavaScriptString text(script);
  const JavaScriptString url(sourceURL);
  JSValueRef exception = nullptr;
  JSValueRef result =
      engine().JSEvaluateScript(context_, text.get(), nullptr, url.get(), kFirstLine, &exception);
  record(exception);
  return {shared_from_this(), exception == nullptr ? result : nullptr};
}

JavaScriptValue JavaScriptContext::globalObject() {
  return {shared_from_this(), engine().JSContextGetGlobalObject(context_)};
}

JavaScriptValue JavaScriptContext::string(std::string_view text) {
  return {shared_from_this(), engine().JSValueMakeString(context_, JavaScriptString(text).get())};
}

std::optional<JavaScriptValue> JavaScriptContext::exception() {
  if (exception_ == nullptr) return std::nullopt;
  return JavaScriptValue(shared_from_this(), exception_);
}

void JavaScriptContext::record(const OpaqueJSValue* exception) {
  if (exception == nullptr || exception_ != nullptr) return;
  engine().JSValueProtect(context_, exception);
  exception_ = exception;
}

}  // namespace tavlen
