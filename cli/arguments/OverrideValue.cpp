#include "cli/arguments/OverrideValue.h"

#include <algorithm>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "cli/arguments/UsageError.h"
#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kNone = "none";

using Orientations = std::vector<InterfaceOrientation>;

[[noreturn]] void refuse(const std::string& text, const std::string& expected) {
  throw UsageError("VALUE", text + ": expected " + expected);
}

void parse(const std::string& text, std::string& value) {
  if (!isValidUTF8(text)) refuse(text, "UTF-8");
  value = text;
}

void parse(const std::string& text, bool& value) {
  if (text != "true" && text != "false") refuse(text, "true or false");
  value = text == "true";
}

void parse(const std::string& text, std::optional<SemanticVersion>& value) {
  value = SemanticVersion::parse(text);
  if (!value && text != kNone) refuse(text, "a version such as 14.0, or none");
}

void parse(const std::string& text, Orientations& value) {
  if (text == kNone) return;
  std::string_view rest = text;
  while (true) {
    const std::size_t comma = rest.find(',');
    const auto orientation = orientationNamed(rest.substr(0, comma));
    if (!orientation) {
      std::string names;
      for (const InterfaceOrientation known : allCases<InterfaceOrientation>())
        names.append(shortName(known)).append(", ");
      refuse(text,
             "none, or a list, with commas and no blanks, of " + names.substr(0, names.size() - 2));
    }
    value.push_back(*orientation);
    if (comma == std::string_view::npos) return;
    rest.remove_prefix(comma + 1);
  }
}

std::string textOf(const std::string& value) { return value; }
std::string textOf(bool value) { return value ? "true" : "false"; }
std::string textOf(const std::optional<SemanticVersion>& value) {
  return value ? value->description() : std::string(kNone);
}
std::string textOf(const Orientations& value) {
  std::string text;
  for (const InterfaceOrientation orientation : value)
    text.append(text.empty() ? "" : ",").append(shortName(orientation));
  return value.empty() ? std::string(kNone) : text;
}

}  // namespace

std::string overrideKindNamed(const std::string& text) {
  const std::string name = lowercased(text);
  for (const auto& section : OverrideContainer::all()) {
    for (const OverrideKindInfo& kind : section) {
      if (lowercased(kind.identifier) == name || lowercased(kind.localizedName()) == name)
        return std::string(kind.identifier);
    }
  }
  throw UsageError("KIND", "no kind of override is called \"" + text + "\"" +
                               suggestionText(text, OverrideContainer::supportedTypes()));
}

std::string overrideKinds() {
  std::string names;
  for (const std::string_view identifier : OverrideContainer::supportedTypes())
    names.append(names.empty() ? "" : ", ").append(identifier);
  return names;
}

const OverrideKindInfo& overrideKind(std::string_view identifier) {
  for (const auto& section : OverrideContainer::all()) {
    for (const OverrideKindInfo& kind : section) {
      if (kind.identifier == identifier) return kind;
    }
  }
  fatalError("no kind of override has that identifier");
}

std::string_view identifierOf(const Override& override_) {
  return OverrideContainer::supportedTypes()[override_.index()];
}

Override parseOverride(std::string_view identifier, const std::string& text) {
  const std::size_t index = TypeKeyedFamily<Override>::indexOf(identifier);
  Override result = OverrideContainer::emptyOfKind(index).value;
  std::visit([&](auto& kind) { parse(text, kind.value); }, result);
  return result;
}

std::string overrideText(const Override& override_) {
  return std::visit([](const auto& kind) { return textOf(kind.value); }, override_);
}

}  // namespace tavlen::cli
