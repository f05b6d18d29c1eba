#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// A table of translations, as it stands in a `.strings` file: `"key" = "value";` and comments.
///
/// The old-style text form only; a table compiled to an XML or binary property list does not parse.
class StringTable {
 public:
  /// Reads a file's text, UTF-8 without a byte order mark (see readText). Of equal keys the last
  /// wins; `"key";` alone stands for itself. Nothing for a text that is malformed anywhere: the
  /// platform then uses none of it.
  ///
  /// Escapes are those of old-style property lists: `\UXXXX` is a UTF-16 unit, octal ones are in
  /// the NextStep encoding. A lone surrogate becomes U+FFFD. Memory and time grow with the input.
  static std::optional<StringTable> parse(std::string_view text);

  /// The value of `key`, valid as long as the table; null where there is none.
  const std::string* find(std::string_view key) const;

  std::size_t size() const { return entries_.size(); }

 private:
  std::map<std::string, std::string, std::less<>> entries_;
};

}  // namespace tavlen
