#include "tavlen/introspection/classes/detail/ObjCNames.h"

#include <charconv>
#include <system_error>

namespace tavlen {

namespace {

/// Takes the name that begins with its length from the front of `text`.
std::optional<std::string_view> takeName(std::string_view& text) {
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || length == 0) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (length > text.size()) return std::nullopt;
  const std::string_view name = text.substr(0, length);
  text.remove_prefix(length);
  return name;
}

/// Takes the name of a module, of which the standard library's is abbreviated.
std::optional<std::string_view> takeModule(std::string_view& text) {
  if (!text.starts_with('s')) return takeName(text);
  text.remove_prefix(1);
  return "Swift";
}

}  // namespace

std::optional<std::string> shownSwiftName(std::string_view name) {
  const bool isClass = name.starts_with("_TtC");
  if (!isClass && !name.starts_with("_TtP")) return std::nullopt;
  std::string_view rest = name.substr(4);
  const auto module = takeModule(rest);
  const auto type = module ? takeName(rest) : std::nullopt;
  if (!type || rest != (isClass ? "" : "_")) return std::nullopt;
  return std::string(*module) + "." + std::string(*type);
}

}  // namespace tavlen
