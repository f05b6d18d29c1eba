#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// A URL, as its text.
struct URL {
  std::string absoluteString;

  /// The URL of an absolute path. What is not allowed in a URL's path is escaped, by bytes and in
  /// upper case; a directory's ends with one slash, another's with none.
  static URL fileURL(const std::filesystem::path& path, bool isDirectory = false);

  /// The path behind a "file:" URL, in any case of letters, with no host or "localhost", unescaped;
  /// query and fragment are dropped. Nothing for any other URL, and for an escape that is malformed
  /// or stands for a NUL.
  std::optional<std::filesystem::path> path() const;

  /// What `reference`, a whole URL or a part of one, means beside this URL (RFC 3986, section 5.2).
  URL resolved(std::string_view reference) const;

  bool operator==(const URL&) const = default;
};

}  // namespace tavlen
