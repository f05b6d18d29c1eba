#include "tavlen/tweaktext/TweakTextReader.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <tuple>
#include <utility>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/foundation/toml/TOMLReader.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/tweaktext/detail/OverrideText.h"
#include "tavlen/tweaktext/detail/TableReader.h"
#include "tavlen/tweaktext/detail/ValueText.h"

namespace tavlen {

namespace {

using Configuration = TweakFile::Manifest::Configuration;

bool isBefore(TextPosition left, TextPosition right) {
  return std::tie(left.line, left.column) < std::tie(right.line, right.column);
}

/// The values of "[[name]]"; none if it is absent.
const TOMLNode::Array& elements(const TableReader& root, std::string_view name) {
  static const TOMLNode::Array kNone;
  const TOMLNode::Member* member = root.find(name);
  if (member == nullptr) return kNone;
  return expectKind<TOMLNode::Array>(member->value, "[[" + std::string(name) + "]]");
}

// [tweak]

/// The text in `node`, which must not be empty.
const std::string& expectName(const TOMLNode& node) {
  const std::string& name = expectText(node);
  if (name.empty()) throw TOMLError(node.position, "expected a string that is not empty");
  return name;
}

TweakColor colorFrom(const TOMLNode& node) {
  const std::string& name = expectText(node);
  if (const auto color = fromRawValue<TweakColor>(name)) return *color;
  throw TOMLError(node.position, "unknown color \"" + name + "\"" +
                                     suggestionText(name, RawValues<TweakColor>::names));
}

TweakGlyph glyphFrom(const TOMLNode& node, std::vector<TOMLError>& errors) {
  if (const auto* text = std::get_if<std::string>(&node.value)) return glyphFromText(*text);
  const TableReader table(node, {"icon", "style"}, errors);
  return {expectText(table.require("icon")), expectText(table.require("style"))};
}

std::optional<FileReference> fileFrom(const TableReader& table, std::string_view key) {
  const TOMLNode::Member* member = table.find(key);
  if (member == nullptr) return std::nullopt;
  return FileReference{expectName(member->value), member->value.position};
}

// [overrides] and [[override]]

struct PlacedOverride {
  TextPosition position;
  OverrideContainer value;
};

std::size_t kindNamed(const std::string& name, TextPosition position) {
  const auto kinds = OverrideContainer::supportedTypes();
  const std::size_t index = TypeKeyedFamily<Override>::indexOf(name);
  if (index < kinds.size()) return index;
  throw TOMLError(position,
                  "unknown kind of override \"" + name + "\"" + suggestionText(name, kinds));
}

PlacedOverride overrideFrom(const TOMLNode& node, std::vector<TOMLError>& errors) {
  const TableReader table(node, {"kind", "value"}, errors);
  const TOMLNode& kind = table.require("kind");
  const std::size_t index = kindNamed(expectText(kind), kind.position);
  if (const auto* value = table.find("value"))
    return {node.position, overrideFromNode(index, value->value)};
  OverrideContainer empty = OverrideContainer::emptyOfKind(index);
  if (!std::holds_alternative<MinimumOSVersionOverride>(empty.value)) table.require("value");
  return {node.position, std::move(empty)};
}

// [[hook]]

/// Reads the method, or the class and the selector.
MethodIdentity identityFrom(const TableReader& table, HookPlaces& places) {
  const auto* method = table.find("method");
  if (method == nullptr) {
    if (table.find("class") == nullptr && table.find("selector") == nullptr)
      table.failMissing("expected the key \"method\" in this hook");
    const TOMLNode& className = table.require("class");
    places.method = className.position;
    const auto* isClassMethod = table.find("classMethod");
    return {expectText(className), expectText(table.require("selector")),
            isClassMethod != nullptr && expectKind<bool>(isClassMethod->value, "true or false")};
  }
  for (const std::string_view other : {"class", "selector", "classMethod"}) {
    if (const auto* member = table.find(other))
      throw TOMLError(member->position, "this hook has a \"method\" already");
  }
  places.method = method->value.position;
  if (auto identity = methodNamed(expectText(method->value))) return *std::move(identity);
  throw TOMLError(places.method, "expected a method such as \"-[Class selector]\"");
}

std::int64_t indexFrom(const TOMLNode::Member& member) {
  std::int64_t index = 0;
  const char* end = member.key.data() + member.key.size();
  const auto [last, error] = std::from_chars(member.key.data(), end, index);
  if (error == std::errc() && last == end) return index;
  throw TOMLError(member.position,
                  "expected the index of an argument, from 0, found \"" + member.key + "\"");
}

/// As readTOML(); the error of an integer that "$uint" can hold says so.
TOMLNode documentFrom(std::string_view text) {
  try {
    return {readTOML(text), {}};
  } catch (const TOMLIntegerError& error) {
    const std::string& digits = error.integer();
    const bool isNegative = text.find("-" + digits) != std::string_view::npos;
    if (isNegative || !unsignedFrom(digits)) throw;
    throw TOMLError(error.position(), error.text() + R"(; write { "$uint" = ")" + digits + "\" }");
  }
}

/// Reads on after an error, and remembers all of them.
class Reader {
 public:
  void read(const TOMLNode& document) {
    const TableReader root(document, {"tweak", "overrides", "override", "hook"}, errors_);
    attempt([&] {
      const auto* tweak = root.find("tweak");
      if (tweak == nullptr) root.failMissing("expected the table [tweak] with name and app");
      readTweak(tweak->value);
    });
    readOverrides(root);
    attempt([&] { readHooks(elements(root, "hook")); });
  }

  TweakText& result() { return result_; }
  std::vector<TOMLError>& errors() { return errors_; }

 private:
  template <class Read>
  void attempt(const Read& read) {
    try {
      read();
    } catch (const TOMLError& error) {
      errors_.push_back(error);
    } catch (const TableReader::KeyMissing&) {
      // The unknown key has an error.
    }
  }

  void readTweak(const TOMLNode& node) {
    const TableReader table(node, {"name", "app", "color", "glyph", "icon", "script"}, errors_);
    Configuration& configuration = result_.manifest.configuration;
    attempt([&] {
      const TOMLNode& name = table.require("name");
      configuration.name = expectName(name);
      result_.name = name.position;
    });
    attempt([&] {
      const TOMLNode& app = table.require("app");
      configuration.bundleID = expectName(app);
      result_.app = app.position;
    });
    if (const auto* color = table.find("color"))
      attempt([&] { configuration.color = colorFrom(color->value); });
    if (const auto* glyph = table.find("glyph")) {
      attempt([&] { configuration._glyph = glyphFrom(glyph->value, errors_); });
      result_.glyph = glyph->value.position;
    }
    attempt([&] { result_.icon = fileFrom(table, "icon"); });
    attempt([&] { result_.script = fileFrom(table, "script"); });
  }

  void readOverrides(const TableReader& root) {
    std::vector<PlacedOverride> all;
    const auto readMember = [&](const TOMLNode::Member& member) {
      const std::size_t index = kindNamed(member.key, member.position);
      all.push_back({member.position, overrideFromNode(index, member.value)});
    };
    attempt([&] {
      const auto* overrides = root.find("overrides");
      if (overrides == nullptr) return;
      for (const auto& member : expectKind<TOMLNode::Table>(overrides->value, "a table"))
        attempt([&] { readMember(member); });
    });
    attempt([&] {
      for (const TOMLNode& element : elements(root, "override"))
        attempt([&] { all.push_back(overrideFrom(element, errors_)); });
    });
    std::sort(all.begin(), all.end(), [](const PlacedOverride& left, const PlacedOverride& right) {
      return isBefore(left.position, right.position);
    });
    for (PlacedOverride& each : all) {
      result_.overrides.push_back(each.position);
      result_.manifest._overrides.push_back(std::move(each.value));
    }
  }

  void readHooks(const TOMLNode::Array& hooks) {
    for (const TOMLNode& hook : hooks) {
      if (result_.hooks.size() == limits::kHooks)
        throw TOMLError(hook.position, "more than " + std::to_string(limits::kHooks) + " hooks");
      attempt([&] { readHook(hook); });
    }
  }

  void readHook(const TOMLNode& node) {
    HookPlaces& places = result_.hooks.emplace_back();
    places.position = node.position;
    const TableReader table(
        node, {"method", "class", "selector", "classMethod", "types", "name", "return", "args"},
        errors_);
    Hook hook;
    attempt([&] {
      MethodIdentity identity = identityFrom(table, places);
      hook.className = std::move(identity.className);
      hook.selector = std::move(identity.selector);
      hook.isClassMethod = identity.isClassMethod;
    });
    if (const auto* types = table.find("types")) {
      attempt([&] { hook.signature = expectText(types->value); });
      places.types = types->value.position;
    }
    if (const auto* name = table.find("name"))
      attempt([&] { hook.customName = expectText(name->value); });
    attempt([&] { readValues(table, hook, places); });
    result_.manifest._hooks.emplace_back(std::move(hook));
  }

  /// Reads the values of a hook whose types are known or empty.
  void readValues(const TableReader& table, Hook& hook, HookPlaces& places) {
    const auto types = HookTypes::from(hook.signature);
    const auto add = [&](std::int64_t index, const TOMLNode::Member& member) {
      const auto [place, isNew] = places.args.try_emplace(index);
      if (!isNew) {
        const bool isResult = index == Hook::kReturnValue;
        throw TOMLError(member.position, (isResult ? std::string("the result")
                                                   : "argument " + std::to_string(index)) +
                                             " has a value already");
      }
      const ArgumentType type = types ? types->at(index) : ArgumentType();
      hook._args[index].value = parameterFromNode(member.value, type, place->second);
    };
    if (const auto* result = table.find("return"))
      attempt([&] { add(Hook::kReturnValue, *result); });
    const auto* args = table.find("args");
    if (args == nullptr) return;
    for (const auto& member : expectKind<TOMLNode::Table>(args->value, "a table of arguments"))
      attempt([&] { add(indexFrom(member), member); });
  }

  TweakText result_;
  std::vector<TOMLError> errors_;
};

}  // namespace

TweakText readTweakText(std::string_view text) {
  std::optional<TOMLError> first;
  auto result = readTweakText(text, [&](const TOMLError& error) {
    if (!first) first = error;
  });
  if (!result) throw *std::move(first);
  return *std::move(result);
}

std::optional<TweakText> readTweakText(std::string_view text,
                                       FunctionRef<void(const TOMLError&)> report) {
  Reader reader;
  try {
    reader.read(documentFrom(text));
  } catch (const TOMLError& error) {
    reader.errors().push_back(error);
  }
  std::vector<TOMLError>& errors = reader.errors();
  if (errors.empty()) return std::move(reader.result());
  std::stable_sort(errors.begin(), errors.end(), [](const TOMLError& left, const TOMLError& right) {
    return isBefore(left.position(), right.position());
  });
  for (const TOMLError& error : errors) report(error);
  return std::nullopt;
}

}  // namespace tavlen
