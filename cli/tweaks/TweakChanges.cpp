#include "cli/tweaks/TweakChanges.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/toml/TOMLWriter.h"
#include "tavlen/tweaktext/TweakTextWriter.h"

namespace tavlen::cli {

namespace {

using Configuration = TweakFile::Manifest::Configuration;
using Changes = std::vector<TweakChange>;

/// Elements of a list by their name and their place among those of the same name, and the order.
template <class Element>
struct Named {
  using Name = std::pair<std::string, std::size_t>;

  void add(const std::string& name, const Element& element) {
    order.emplace_back(name, counts[name]++);
    elements.emplace(order.back(), &element);
  }
  const Element* find(const Name& name) const {
    const auto found = elements.find(name);
    return found == elements.end() ? nullptr : found->second;
  }

  std::map<Name, const Element*> elements;
  std::vector<Name> order;
  std::map<std::string, std::size_t> counts;
};

Named<Hook> hooksOf(const TweakFile::Manifest& manifest) {
  Named<Hook> hooks;
  for (const BoxedOptional<Hook>& hook : manifest._hooks) {
    if (hook) hooks.add(methodText(hook->identity()), *hook);
  }
  return hooks;
}

Named<OverrideContainer> overridesOf(const TweakFile::Manifest& manifest) {
  Named<OverrideContainer> overrides;
  for (const OverrideContainer& each : manifest._overrides)
    overrides.add(std::string(each.identifier()), each);
  return overrides;
}

/// A value as the text has it; nothing without a value.
using Value = std::optional<std::string>;

Value lineOf(std::string_view text) { return lineFromTOML({std::string(text), {}}); }
Value lineOf(const std::optional<TweakGlyph>& glyph) {
  return glyph ? Value(valueText(*glyph)) : std::nullopt;
}

void addSetting(Changes& changes, const std::string& name, Value before, Value after) {
  if (before == after) return;
  const char* const change = !before  ? TweakChange::kAdded
                             : !after ? TweakChange::kRemoved
                                      : TweakChange::kChanged;
  changes.push_back({change, name, {}, std::move(before), std::move(after)});
}

void addSettings(Changes& changes, const Configuration& before, const Configuration& after) {
  addSetting(changes, "name", lineOf(before.name), lineOf(after.name));
  addSetting(changes, "app", lineOf(before.bundleID), lineOf(after.bundleID));
  addSetting(changes, "color", lineOf(rawValue(before.color)), lineOf(rawValue(after.color)));
  addSetting(changes, "glyph", lineOf(before._glyph), lineOf(after._glyph));
}

Value argument(const Hook& hook, std::int64_t index) {
  return hook._args.contains(index) ? Value(valueText(hook, index)) : std::nullopt;
}

/// The parts in which a hook differs; one of the two may be null.
std::vector<TweakChange::Part> partsOf(const Hook* before, const Hook* after) {
  std::vector<TweakChange::Part> parts;
  const auto add = [&](const std::string& key, auto valueOf) {
    const Value left = before != nullptr ? valueOf(*before) : std::nullopt;
    const Value right = after != nullptr ? valueOf(*after) : std::nullopt;
    if (left != right) parts.push_back({key, left, right});
  };
  add("types", [](const Hook& hook) -> Value { return lineOf(hook.signature); });
  add("name", [](const Hook& hook) -> Value {
    return hook.customName ? lineOf(*hook.customName) : std::nullopt;
  });
  std::set<std::int64_t> indices;
  for (const Hook* hook : {before, after}) {
    if (hook == nullptr) continue;
    for (const auto& entry : hook->_args) indices.insert(entry.first);
  }
  for (const std::int64_t index : indices) {
    add(index == Hook::kReturnValue ? "return" : "args." + std::to_string(index),
        [index](const Hook& hook) { return argument(hook, index); });
  }
  return parts;
}

void addDetails(TweakChange& change, const Hook* before, const Hook* after) {
  change.parts = partsOf(before, after);
}

void addDetails(TweakChange& change, const OverrideContainer* before,
                const OverrideContainer* after) {
  if (before != nullptr) change.before = valueText(*before);
  if (after != nullptr) change.after = valueText(*after);
}

template <class Element>
void addElements(Changes& changes, const std::string& subject, const Named<Element>& before,
                 const Named<Element>& after) {
  const auto add = [&](const char* verb, const std::string& name, const Element* old,
                       const Element* own) {
    addDetails(changes.emplace_back(TweakChange{verb, subject, name}), old, own);
  };
  const auto inBoth = [&](const auto& order) {
    std::vector<typename Named<Element>::Name> names;
    std::copy_if(order.begin(), order.end(), std::back_inserter(names), [&](const auto& name) {
      return before.find(name) != nullptr && after.find(name) != nullptr;
    });
    return names;
  };
  for (const auto& name : before.order) {
    if (after.find(name) == nullptr)
      add(TweakChange::kRemoved, name.first, before.find(name), nullptr);
  }
  for (const auto& name : after.order) {
    const Element* old = before.find(name);
    const Element* own = after.find(name);
    if (old == nullptr) {
      add(TweakChange::kAdded, name.first, nullptr, own);
    } else if (encodeJSON(*old) != encodeJSON(*own)) {  // tells -0.0 from 0.0
      add(TweakChange::kChanged, name.first, old, own);
    }
  }
  if (inBoth(before.order) != inBoth(after.order))
    changes.push_back({TweakChange::kChanged, subject + " order"});
}

/// `: "old" -> "new"`, or the only value; empty without values.
std::string valuesText(const Value& before, const Value& after, bool isChange) {
  if (isChange) return ": " + before.value_or("none") + " -> " + after.value_or("none");
  const std::string value = after.value_or(before.value_or(""));
  return value.empty() ? "" : ": " + value;
}

std::string linesOf(const TweakChange& change) {
  const bool isChange = change.change == TweakChange::kChanged;
  std::string line = change.change + " " + change.subject;
  if (change.name) line += " " + *change.name;
  if (change.before || change.after) line += valuesText(change.before, change.after, isChange);
  std::string lines = shownLine(line) + "\n";
  for (const TweakChange::Part& part : change.parts.value_or(std::vector<TweakChange::Part>())) {
    lines += "    " + shownLine(part.key + valuesText(part.before, part.after, isChange)) + "\n";
  }
  return lines;
}

}  // namespace

std::vector<TweakChange> changesBetween(const TweakFile::Manifest& before,
                                        const TweakFile::Manifest& after) {
  Changes changes;
  addSettings(changes, before.configuration, after.configuration);
  addElements(changes, "override", overridesOf(before), overridesOf(after));
  addElements(changes, "hook", hooksOf(before), hooksOf(after));
  return changes;
}

void printChanges(const std::vector<TweakChange>& changes, bool json) {
  if (json) return printJSON(changes);
  for (const TweakChange& change : changes) printData(linesOf(change));
}

}  // namespace tavlen::cli
