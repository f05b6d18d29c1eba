#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A URL as text. A plain value.
struct TAVLEN_API URL {
  /// The whole URL, not validated.
  std::string absoluteString;

  /// The "file:" URL of an absolute path. Bytes that a URL's path may not contain are escaped, with
  /// upper-case digits. A directory's URL ends with one slash, others with none.
  static URL fileURL(const std::filesystem::path& path, bool isDirectory = false);

  /// The unescaped path of a "file:" URL, whose scheme may be in any case and whose host is empty
  /// or "localhost"; query and fragment are dropped. Returns nothing for any other URL, and for an
  /// escape that is malformed or encodes a NUL.
  std::optional<std::filesystem::path> path() const;

  /// Resolves `reference`, a whole URL or a relative one, against this URL (RFC 3986, section 5.2).
  URL resolved(std::string_view reference) const;

  bool operator==(const URL&) const = default;
};

}  // namespace tavlen
