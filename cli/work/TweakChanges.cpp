#include "cli/work/TweakChanges.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "tavlen/items/GlyphNames.h"

namespace tavlen::cli {

namespace {

using Configuration = TweakFile::Manifest::Configuration;
using Sentences = std::vector<std::string>;

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

void addSetting(Sentences& changes, const std::string& name, const std::string& before,
                const std::string& after) {
  changes.push_back("changed " + name + ": \"" + before + "\" -> \"" + after + "\"");
}

/// The glyph as stored; empty without one.
std::string storedGlyph(const std::optional<TweakGlyph>& glyph) {
  return glyph ? glyphText(*glyph) : "";
}

void addSettings(Sentences& changes, const Configuration& before, const Configuration& after) {
  if (before.name != after.name) addSetting(changes, "name", before.name, after.name);
  if (before.bundleID != after.bundleID)
    addSetting(changes, "app", before.bundleID, after.bundleID);
  if (before.color != after.color) {
    addSetting(changes, "color", std::string(rawValue(before.color)),
               std::string(rawValue(after.color)));
  }
  if (before._glyph != after._glyph)
    addSetting(changes, "glyph", storedGlyph(before._glyph), storedGlyph(after._glyph));
}

/// The parts of a hook that differ, by their keys in a text.
std::string differenceOf(const Hook& before, const Hook& after) {
  std::string keys;
  const auto add = [&](bool differs, const std::string& key) {
    if (differs) keys += (keys.empty() ? ": " : ", ") + key;
  };
  add(before.signature != after.signature, "types");
  add(before.customName != after.customName, "name");
  std::set<std::int64_t> indices;
  for (const auto& entry : before._args) indices.insert(entry.first);
  for (const auto& entry : after._args) indices.insert(entry.first);
  for (const std::int64_t index : indices) {
    const auto left = before._args.find(index);
    const auto right = after._args.find(index);
    const bool isInBoth = left != before._args.end() && right != after._args.end();
    add(!isInBoth || left->second != right->second,
        index == Hook::kReturnValue ? "return" : "args." + std::to_string(index));
  }
  return keys;
}

/// An override has one part: its value.
std::string differenceOf(const OverrideContainer& /*before*/, const OverrideContainer& /*after*/) {
  return "";
}

template <class Element>
void addElements(Sentences& changes, const std::string& kind, const Named<Element>& before,
                 const Named<Element>& after) {
  const auto inBoth = [&](const auto& order) {
    std::vector<typename Named<Element>::Name> names;
    std::copy_if(order.begin(), order.end(), std::back_inserter(names), [&](const auto& name) {
      return before.find(name) != nullptr && after.find(name) != nullptr;
    });
    return names;
  };
  for (const auto& name : before.order) {
    if (after.find(name) == nullptr) changes.push_back("removed " + kind + " " + name.first);
  }
  for (const auto& name : after.order) {
    const Element* old = before.find(name);
    const Element& own = *after.find(name);
    if (old == nullptr) {
      changes.push_back("added " + kind + " " + name.first);
    } else if (*old != own) {
      changes.push_back("changed " + kind + " " + name.first + differenceOf(*old, own));
    }
  }
  if (inBoth(before.order) != inBoth(after.order))
    changes.push_back("changed the order of the " + kind + "s");
}

}  // namespace

std::vector<std::string> changesBetween(const TweakFile::Manifest& before,
                                        const TweakFile::Manifest& after) {
  Sentences changes;
  addSettings(changes, before.configuration, after.configuration);
  addElements(changes, "override", overridesOf(before), overridesOf(after));
  addElements(changes, "hook", hooksOf(before), hooksOf(after));
  return changes;
}

}  // namespace tavlen::cli
