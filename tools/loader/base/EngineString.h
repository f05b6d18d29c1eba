#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>
#include <string_view>

namespace tavlen::loader {

/// A string of the engine (RAII). Threads: any, also concurrently.
class EngineString {
 public:
  /// From UTF-8, in which no NUL may occur.
  explicit EngineString(const char* text) : string_(JSStringCreateWithUTF8CString(text)) {}
  explicit EngineString(const std::string& text);
  explicit EngineString(std::u16string_view text);
  /// The text of `value`, which must be no object and no symbol: converting runs no code then.
  EngineString(JSContextRef context, JSValueRef value);
  /// Takes over a reference to `string`.
  explicit EngineString(JSStringRef string) : string_(string) {}
  EngineString(const EngineString&) = delete;
  EngineString& operator=(const EngineString&) = delete;
  ~EngineString();

  JSStringRef get() const { return string_; }
  /// Its units. Valid as long as this object.
  std::u16string_view units() const;
  /// In UTF-8; a lone surrogate becomes U+FFFD.
  std::string utf8() const;

 private:
  JSStringRef string_;
};

/// A value of the engine that holds `text`.
JSValueRef stringValue(JSContextRef context, const std::string& text);
JSValueRef stringValue(JSContextRef context, std::u16string_view text);

/// The property `name` of `object`, or undefined if reading it throws.
JSValueRef propertyOf(JSContextRef context, JSObjectRef object, const char* name);
/// Sets it. Ignores what a setter throws.
void setProperty(JSContextRef context, JSObjectRef object, const char* name, JSValueRef value);

}  // namespace tavlen::loader
