#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// A table of translations: the contents of a `.strings` file.
class StringTable {
 public:
  /// Reads a file in any of its forms: the text form, or the property list, binary or XML, that the
  /// table of a built app is. Values of a list that are not strings are left out. Returns nothing
  /// for a malformed file, and for a list whose root is not a dictionary or that repeats long texts
  /// beyond SharedReferenceBudget.
  static std::optional<StringTable> read(std::string_view bytes);

  /// Parses the text form, `"key" = "value";` and comments: UTF-8 without a byte order mark (see
  /// textFromBytes()). Of equal keys the last wins; `"key";` alone has the key as its value.
  /// Returns nothing for a text that is malformed anywhere, because the platform then ignores the
  /// whole table.
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
