#pragma once

#include <string>
#include <string_view>

struct OpaqueJSString;

namespace tavlen {

/// Owns one string of the JavaScript engine, for the calls of its C interface.
///
/// Text crosses in UTF-16 only: the engine's UTF-8 functions end at the first NUL on the way in and
/// at the first lone surrogate on the way out. Threads: an object belongs to one thread at a time.
class JavaScriptString {
 public:
  /// A copy of the UTF-8 `text`; each malformed sequence becomes one U+FFFD.
  /// Throws std::length_error for more than 2^31-1 units, where the engine would stop the process.
  explicit JavaScriptString(std::string_view text);

  /// Takes over the reference that an engine's "Copy" function gave; `string` is not null.
  explicit JavaScriptString(OpaqueJSString* string) : string_(string) {}

  JavaScriptString(const JavaScriptString&) = delete;
  JavaScriptString& operator=(const JavaScriptString&) = delete;
  ~JavaScriptString();

  OpaqueJSString* get() const { return string_; }

  /// The UTF-8 form; a lone surrogate becomes U+FFFD.
  std::string utf8() const;

 private:
  OpaqueJSString* string_;
};

}  // namespace tavlen
