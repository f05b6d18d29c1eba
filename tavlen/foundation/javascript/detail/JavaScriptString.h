#pragma once

#include <string>
#include <string_view>

struct OpaqueJSString;

namespace tavlen {

/// Owns a string of the JavaScript engine, for calls of its C interface.
///
/// Text is exchanged in UTF-16 only: the engine's UTF-8 functions stop at the first NUL on input
/// and at the first lone surrogate on output. Threads: one object one thread at a time.
class JavaScriptString {
 public:
  /// Copies the UTF-8 `text`; each malformed sequence becomes one U+FFFD. Throws std::length_error
  /// for more than 2^31-1 units, where the engine would end the process.
  explicit JavaScriptString(std::string_view text);

  /// Takes over the reference returned by one of the engine's "Copy" functions; `string` is not
  /// null.
  explicit JavaScriptString(OpaqueJSString* string) : string_(string) {}

  JavaScriptString(const JavaScriptString&) = delete;
  JavaScriptString& operator=(const JavaScriptString&) = delete;
  ~JavaScriptString();

  /// The engine's string, which stays owned.
  OpaqueJSString* get() const { return string_; }

  /// Converts to UTF-8; a lone surrogate becomes U+FFFD.
  std::string utf8() const;

 private:
  OpaqueJSString* string_;
};

}  // namespace tavlen
