#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// A table of translations in the form of a `.strings` file: `"key" = "value";` and comments.
///
/// Only the old-style text form. A table compiled to an XML or binary property list does not parse.
class StringTable {
 public:
  /// Parses the text of a file: UTF-8 without a byte order mark (see readText()). Of equal keys the
  /// last wins; `"key";` alone has the key as its value. Returns nothing for a text that is
  /// malformed anywhere, because the platform then ignores the whole table.
  ///
  /// Escapes are those of old-style property lists: `\UXXXX` is a UTF-16 unit, octal escapes use
  /// the NextStep encoding. A lone surrogate becomes U+FFFD. Memory and time are linear in the
  /// input.
  static std::optional<StringTable> parse(std::string_view text);

  /// The value of `key`, valid as long as the table; null when `key` is unknown.
  const std::string* find(std::string_view key) const;

  /// The number of keys.
  std::size_t size() const { return entries_.size(); }

 private:
  std::map<std::string, std::string, std::less<>> entries_;
};

}  // namespace tavlen
