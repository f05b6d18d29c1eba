#include "tavlen/foundation/URL.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace tavlen {

namespace {

/// What stands in a URL's path as it is, beside letters and digits. A semicolon is one of them: the
/// platform's two URL types disagree on it, and this follows the newer one.
constexpr std::string_view kUnescaped = "!$&'()*+,-./:;=@_~";

bool isLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string escaped(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(path.size());
  for (const char c : path) {
    if (isLetterOrDigit(c) || kUnescaped.find(c) != std::string_view::npos) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'%', kDigits[byte >> 4], kDigits[byte & 15U]};
    }
  }
  return text;
}

std::optional<std::string> unescaped(std::string_view text) {
  std::string path;
  path.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      path += text[i];
      continue;
    }
    unsigned byte = 0;
    const std::string_view digits = text.substr(i + 1, 2);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (error != std::errc() || end != digits.data() + 2 || byte == 0) return std::nullopt;
    path += static_cast<char>(byte);
    i += 2;
  }
  return path;
}

/// Removes `prefix`, which is in lower case, from the start of `text` in any case.
bool consume(std::string_view& text, std::string_view prefix) {
  const auto isSame = [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
  };
  if (text.size() < prefix.size() || !std::equal(prefix.begin(), prefix.end(), text.begin(),
                                                 [&](char p, char t) { return isSame(t, p); })) {
    return false;
  }
  text.remove_prefix(prefix.size());
  return true;
}

void removeTrailingSlashes(std::string& path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
}

}  // namespace

URL URL::fileURL(const std::filesystem::path& path, bool isDirectory) {
  std::string text = std::filesystem::absolute(path).native();
  removeTrailingSlashes(text);
  if (isDirectory && !text.ends_with('/')) text += '/';
  return {"file://" + escaped(text)};
}

std::optional<std::filesystem::path> URL::path() const {
  std::string_view text = absoluteString;
  text = text.substr(0, text.find_first_of("?#"));
  if (!consume(text, "file:")) return std::nullopt;
  if (consume(text, "//")) consume(text, "localhost");
  if (!text.starts_with('/')) return std::nullopt;
  std::optional<std::string> path = unescaped(text);
  if (path) removeTrailingSlashes(*path);
  return path;
}

}  // namespace tavlen
