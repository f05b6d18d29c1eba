#include "cli/tweaks/OverriddenInfo.h"

#include <optional>
#include <vector>

#include "tavlen/bundles/InfoOverrides.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"

namespace tavlen::cli {

namespace {

/// The values of an app whose own texts are `text`, with the overrides.
PropertyList listWith(const TweakFile::Manifest& manifest, const char* text, bool supportsIPad) {
  Info info;
  info.executable = info.bundleID = info.build = text;
  info.setSupportsIPad(supportsIPad);
  for (const Override& override_ : manifest.overrides()) applyTo(info, override_);
  return readPropertyList(encodePropertyList(info));
}

/// Whether both values were set: of what is not a text or a number, an app without values has
/// nothing.
bool isSame(const PropertyList& a, PropertyList::Index left, const PropertyList& b,
            PropertyList::Index right) {
  if (a.kind(left) == PropertyList::Kind::array || b.kind(right) == PropertyList::Kind::array)
    return a.kind(left) == b.kind(right);
  return a.scalar(left) == b.scalar(right);
}

}  // namespace

/// Two apps that have no value in common have in common, with the overrides, what these set.
std::string overriddenInfo(const TweakFile::Manifest& manifest) {
  PropertyList list = listWith(manifest, "\x01", false);
  const PropertyList other = listWith(manifest, "\x02", true);
  std::vector<PropertyList::Member> members;
  const PropertyList::Dictionary all = *list.get<PropertyList::Dictionary>(list.root());
  for (const PropertyList::Member& member : all.members) {
    const auto match = other.find(other.root(), list.string(member.key));
    if (match && isSame(list, member.value, other, *match)) members.push_back(member);
  }
  list.setRoot(list.add(PropertyList::Dictionary{members}));
  return writePropertyList(list, PropertyListFormat::binary);
}

}  // namespace tavlen::cli
