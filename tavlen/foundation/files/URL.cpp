#include "tavlen/foundation/files/URL.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

/// The characters, other than letters and digits, that a URL's path holds unescaped. The platform's
/// two URL types disagree on the semicolon; this follows the newer one.
constexpr std::string_view kUnescaped = "!$&'()*+,-./:;=@_~";

std::string escaped(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(path.size());
  for (const char c : path) {
    if (isLetter(c) || isDigit(c) || kUnescaped.find(c) != std::string_view::npos) {
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
    if (digits.size() != 2) return std::nullopt;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (error != std::errc() || end != digits.data() + 2 || byte == 0) return std::nullopt;
    path += static_cast<char>(byte);
    i += 2;
  }
  return path;
}

/// Removes `prefix`, given in lower case, from the start of `text`, ignoring case.
bool consume(std::string_view& text, std::string_view prefix) {
  if (lowercased(text.substr(0, prefix.size())) != prefix) return false;
  text.remove_prefix(prefix.size());
  return true;
}

void removeTrailingSlashes(std::string& path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
}

/// The parts of a URL, each with its delimiter ("http:", "//host", "?query", "#fragment") and
/// possibly empty.
struct Parts {
  std::string_view scheme;
  std::string_view authority;
  std::string_view path;
  std::string_view query;
  std::string_view fragment;
};

/// Cuts `text` off before the first of `marks`; returns the rest.
std::string_view cutAt(std::string_view& text, std::string_view marks) {
  const std::size_t end = std::min(text.find_first_of(marks), text.size());
  const std::string_view rest = text.substr(end);
  text = text.substr(0, end);
  return rest;
}

bool isScheme(std::string_view text) {
  const auto isAllowed = [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
  };
  return !text.empty() && isLetter(text[0]) && std::all_of(text.begin(), text.end(), isAllowed);
}

Parts partsOf(std::string_view text) {
  Parts parts;
  parts.fragment = cutAt(text, "#");
  parts.query = cutAt(text, "?");
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos && isScheme(text.substr(0, colon))) {
    parts.scheme = text.substr(0, colon + 1);
    text.remove_prefix(colon + 1);
  }
  if (text.starts_with("//")) {
    const std::size_t end = std::min(text.find('/', 2), text.size());
    parts.authority = text.substr(0, end);
    text.remove_prefix(end);
  }
  parts.path = text;
  return parts;
}

/// Removes dot segments (RFC 3986, section 5.2.4), whole segments at a time, each with its leading
/// slash.
std::string withoutDotSegments(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    std::string_view rest = path.substr(1);
    rest = cutAt(rest, "/");
    const std::string_view segment = path.substr(0, path.size() - rest.size());
    const bool isLast = rest.empty();
    if (segment == "/.." || segment == "..") {
      const std::size_t slash = result.rfind('/');
      result.erase(slash == std::string::npos ? 0 : slash);
    } else if (segment != "/." && segment != ".") {
      result += segment;
    }
    if (isLast && (segment == "/." || segment == "/..")) result += '/';
    path = rest;
  }
  return result;
}

/// The base's path up to its last slash, followed by `reference`.
std::string mergedPath(const Parts& base, std::string_view reference) {
  if (!base.authority.empty() && base.path.empty()) return "/" + std::string(reference);
  std::string path(base.path.substr(0, base.path.rfind('/') + 1));
  return path += reference;
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

URL URL::resolved(std::string_view reference) const {
  const Parts base = partsOf(absoluteString);
  Parts parts = partsOf(reference);
  std::string path;
  if (!parts.scheme.empty() || !parts.authority.empty() || parts.path.starts_with('/')) {
    path = withoutDotSegments(parts.path);
  } else if (!parts.path.empty()) {
    path = withoutDotSegments(mergedPath(base, parts.path));
  } else {
    path = base.path;
    if (parts.query.empty()) parts.query = base.query;
  }
  if (parts.scheme.empty()) {
    parts.scheme = base.scheme;
    if (parts.authority.empty()) parts.authority = base.authority;
  }
  std::string text;
  text.append(parts.scheme).append(parts.authority).append(path);
  text.append(parts.query).append(parts.fragment);
  return {std::move(text)};
}

}  // namespace tavlen
