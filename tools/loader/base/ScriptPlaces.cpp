#include "tools/loader/base/ScriptPlaces.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <utility>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/EngineString.h"

namespace tavlen::loader {

namespace {

/// Takes ":12" from the beginning of `text`.
std::optional<std::size_t> takeNumber(std::string_view& text) {
  if (!text.starts_with(':')) return std::nullopt;
  std::size_t value = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data() + 1, end, value);
  if (error != std::errc() || value == 0) return std::nullopt;
  text = {rest, static_cast<std::size_t>(end - rest)};
  return value;
}

/// The innermost frame of the code in a call stack, whose lines end in "URL:LINE:COLUMN".
std::optional<TextPosition> firstFrame(std::string_view stack) {
  const std::string_view url = ScriptPlaces::kCodeURL;
  for (std::size_t at = stack.find(url); at != std::string_view::npos;
       at = stack.find(url, at + 1)) {
    std::string_view rest = stack.substr(at + url.size());
    const auto line = takeNumber(rest);
    const auto column = line ? takeNumber(rest) : std::nullopt;
    // The engine points to the end of a name, where the next piece of the map begins.
    if (column) return TextPosition{*line, std::max<std::size_t>(*column - 1, 1)};
  }
  return std::nullopt;
}

/// The position of a byte. The code has the line ends of JavaScript.
TextPosition positionOf(std::string_view text, std::size_t offset) {
  const std::size_t line = lineEndCount(text.substr(0, offset)) + 1;
  const std::string_view whole = lineAt(text, line);
  const auto begin = static_cast<std::size_t>(whole.data() - text.data());
  return {line, utf16FromUTF8(text.substr(begin, offset - begin)).size() + 1};
}

}  // namespace

ScriptPlaces::ScriptPlaces(std::string code, std::string map)
    : code_(std::move(code)), mapText_(std::move(map)) {}

std::optional<TextPosition> ScriptPlaces::placeOf(JSContextRef context, JSValueRef thrown) const {
  if (!JSValueIsObject(context, thrown)) return std::nullopt;
  auto* error = const_cast<JSObjectRef>(thrown);
  const JSValueRef stack = propertyOf(context, error, "stack");
  if (JSValueIsString(context, stack)) {
    if (const auto frame = firstFrame(EngineString(context, stack).utf8())) return sourceOf(*frame);
  }
  // A syntax error has no stack in the code, but a line.
  const JSValueRef line = propertyOf(context, error, "line");
  if (!JSValueIsNumber(context, line)) return std::nullopt;
  return sourceOf({static_cast<std::size_t>(JSValueToNumber(context, line, nullptr)), 1});
}

std::optional<TextPosition> ScriptPlaces::placeOf(std::string_view part,
                                                  std::string_view before) const {
  const std::size_t begin = code_.find(before);
  const std::size_t offset = code_.find(part, begin == std::string::npos ? 0 : begin);
  if (offset == std::string::npos) return std::nullopt;
  return sourceOf(positionOf(code_, offset));
}

/// The map is read again each time: it is wanted only for mistakes.
std::optional<TextPosition> ScriptPlaces::sourceOf(TextPosition place) const {
  try {
    return SourceMap::decoded(mapText_).sourceOf(place);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace tavlen::loader
