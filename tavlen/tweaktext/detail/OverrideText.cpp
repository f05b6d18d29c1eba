#include "tavlen/tweaktext/detail/OverrideText.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/tweaktext/detail/TableReader.h"

namespace tavlen {

namespace {

using Orientations = std::vector<InterfaceOrientation>;

void read(const TOMLNode& node, std::string& value) { value = expectText(node); }
void read(const TOMLNode& node, bool& value) { value = expectKind<bool>(node, "true or false"); }
void read(const TOMLNode& node, std::optional<SemanticVersion>& value) {
  value = SemanticVersion::parse(expectText(node));
  if (!value) throw TOMLError(node.position, "expected a version such as \"14.0\"");
}
void read(const TOMLNode& node, Orientations& value) {
  constexpr auto kOrientations = allCases<InterfaceOrientation>();
  for (const TOMLNode& item : expectKind<TOMLNode::Array>(node, "an array of orientations")) {
    const std::string& name = expectText(item);
    const auto orientation = orientationNamed(name);
    if (!orientation) {
      std::array<std::string_view, kOrientations.size()> names;
      std::transform(kOrientations.begin(), kOrientations.end(), names.begin(), shortName);
      throw TOMLError(item.position,
                      "unknown orientation \"" + name + "\"" + suggestionText(name, names));
    }
    value.push_back(*orientation);
  }
}

using Written = std::optional<TOMLNode>;

Written written(const std::string& value) { return TOMLNode{value, {}}; }
Written written(bool value) { return TOMLNode{value, {}}; }
Written written(const std::optional<SemanticVersion>& value) {
  return value ? Written(TOMLNode{value->description(), {}}) : std::nullopt;
}
Written written(const Orientations& value) {
  TOMLNode::Array names;
  for (const InterfaceOrientation orientation : value)
    names.push_back({std::string(shortName(orientation)), {}});
  return TOMLNode{std::move(names), {}};
}

}  // namespace

OverrideContainer overrideFromNode(std::size_t index, const TOMLNode& node) {
  OverrideContainer result = OverrideContainer::emptyOfKind(index);
  std::visit([&](auto& kind) { read(node, kind.value); }, result.value);
  return result;
}

std::optional<TOMLNode> nodeFromOverride(const OverrideContainer& override_) {
  return std::visit([](const auto& kind) { return written(kind.value); }, override_.value);
}

}  // namespace tavlen
