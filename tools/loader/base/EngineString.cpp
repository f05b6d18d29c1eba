#include "tools/loader/base/EngineString.h"

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::loader {

EngineString::EngineString(const std::string& text) : EngineString(utf16FromUTF8(text)) {}

EngineString::EngineString(std::u16string_view text)
    : string_(JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()),
                                           text.size())) {}

EngineString::EngineString(JSContextRef context, JSValueRef value)
    : string_(JSValueToStringCopy(context, value, nullptr)) {
  if (string_ == nullptr) string_ = JSStringCreateWithUTF8CString("");
}

EngineString::~EngineString() { JSStringRelease(string_); }

std::u16string_view EngineString::units() const {
  return {reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(string_)),
          JSStringGetLength(string_)};
}

std::string EngineString::utf8() const { return utf8FromUTF16(units()); }

JSValueRef stringValue(JSContextRef context, const std::string& text) {
  return JSValueMakeString(context, EngineString(text).get());
}

JSValueRef stringValue(JSContextRef context, std::u16string_view text) {
  return JSValueMakeString(context, EngineString(text).get());
}

JSValueRef propertyOf(JSContextRef context, JSObjectRef object, const char* name) {
  JSValueRef exception = nullptr;
  const JSValueRef value =
      JSObjectGetProperty(context, object, EngineString(name).get(), &exception);
  return exception == nullptr ? value : JSValueMakeUndefined(context);
}

void setProperty(JSContextRef context, JSObjectRef object, const char* name, JSValueRef value) {
  JSValueRef ignored = nullptr;
  JSObjectSetProperty(context, object, EngineString(name).get(), value, kJSPropertyAttributeNone,
                      &ignored);
}

}  // namespace tavlen::loader
