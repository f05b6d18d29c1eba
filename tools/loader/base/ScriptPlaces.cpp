#include "tools/loader/base/ScriptPlaces.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <utility>

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

std::optional<TextPosition> ScriptPlaces::sourceOf(TextPosition place) const {
  std::call_once(isDecoded_, [this] {
    try {
      map_ = SourceMap::decoded(mapText_);
    } catch (const std::exception&) {
      // It leads nowhere.
    }
    mapText_ = {};
  });
  return map_ ? map_->sourceOf(place) : std::nullopt;
}

ScriptPlaces::Search::Search(const ScriptPlaces& places, std::string_view before)
    : places_(places), begin_(places.code_.find(before)) {
  if (begin_ == std::string::npos) begin_ = 0;
  at_ = begin_;
}

std::optional<TextPosition> ScriptPlaces::Search::next(std::string_view part) {
  const std::string_view code = places_.code_;
  std::size_t found = code.find(part, at_);
  if (found == std::string::npos) {
    found = code.find(part, begin_);
    if (found == std::string::npos) return std::nullopt;
    lineBegin_ = 0;
    line_ = 1;
  }
  at_ = found + part.size();
  const std::string_view rest = code.substr(lineBegin_);
  const TextPosition position = linePositionAt(rest, found - lineBegin_);
  lineBegin_ += static_cast<std::size_t>(lineAt(rest, position.line).data() - rest.data());
  line_ += position.line - 1;
  return places_.sourceOf({line_, position.column});
}

}  // namespace tavlen::loader
