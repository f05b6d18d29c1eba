#include "cli/tweaks/OverriddenInfo.h"

#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

#include "tavlen/bundles/InfoOverrides.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tavlen/tweaks/LoaderSettings.h"

namespace tavlen::cli {

namespace {

/// The values of an app, with the overrides.
PropertyList listWith(const TweakFile::Manifest& manifest, Info info) {
  for (const Override& override_ : manifest.overrides()) applyTo(info, override_);
  return readPropertyList(encodePropertyList(info));
}

/// An app whose own texts are `text`.
Info app(const char* text, bool supportsIPad) {
  Info info;
  info.executable = info.bundleID = info.build = text;
  info.setSupportsIPad(supportsIPad);
  return info;
}

/// An app that has every value.
Info fullApp() {
  Info info;
  const auto fill = [&](auto& member) {
    if constexpr (requires { member.emplace(); }) member.emplace();
  };
  std::apply([&](const auto&... field) { (fill(info.*field.member), ...); }, Info::codedFields());
  return info;
}

/// Whether both values were set: of what is not a text or a number, an app without values has
/// nothing.
bool isSame(const PropertyList& a, PropertyList::Index left, const PropertyList& b,
            PropertyList::Index right) {
  if (a.kind(left) == PropertyList::Kind::array || b.kind(right) == PropertyList::Kind::array)
    return a.kind(left) == b.kind(right);
  return a.scalar(left) == b.scalar(right);
}

/// The keys that the overrides take from an app that has them all.
std::vector<PropertyList::Index> removedKeys(const TweakFile::Manifest& manifest,
                                             PropertyList& target) {
  const PropertyList before = readPropertyList(encodePropertyList(fullApp()));
  const PropertyList after = listWith(manifest, fullApp());
  std::vector<PropertyList::Index> keys;
  const PropertyList::Dictionary all = *before.get<PropertyList::Dictionary>(before.root());
  for (const PropertyList::Member& member : all.members) {
    const std::string_view key = before.string(member.key);
    if (!after.find(after.root(), key)) keys.push_back(target.add(key));
  }
  return keys;
}

}  // namespace

/// Two apps that have no value in common have in common, with the overrides, what these set.
std::string overriddenInfo(const TweakFile::Manifest& manifest) {
  PropertyList list = listWith(manifest, app("\x01", false));
  const PropertyList other = listWith(manifest, app("\x02", true));
  std::vector<PropertyList::Member> members;
  const PropertyList::Dictionary all = *list.get<PropertyList::Dictionary>(list.root());
  for (const PropertyList::Member& member : all.members) {
    const auto match = other.find(other.root(), list.string(member.key));
    if (match && isSame(list, member.value, other, *match)) members.push_back(member);
  }
  if (const auto removed = removedKeys(manifest, list); !removed.empty())
    members.push_back({list.add(std::string_view(loaderSettings::kRemovedKeys)),
                       list.add(PropertyList::Array{removed})});
  list.setRoot(list.add(PropertyList::Dictionary{members}));
  return writePropertyList(list, PropertyListFormat::binary);
}

}  // namespace tavlen::cli
