#include "tavlen/tweaktext/detail/TableReader.h"

#include <algorithm>
#include <utility>

#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen {

TableReader::TableReader(const TOMLNode& node, const std::vector<std::string_view>& known,
                         std::vector<TOMLError>& errors)
    : node_(node) {
  for (const TOMLNode::Member& member : expectKind<TOMLNode::Table>(node, "a table")) {
    if (std::find(known.begin(), known.end(), member.key) != known.end()) continue;
    errors.push_back(unknownKey(member, known));
    hasUnknown_ = true;
  }
}

const TOMLNode::Member* TableReader::find(std::string_view key) const {
  const auto& table = std::get<TOMLNode::Table>(node_.value);
  const auto found = std::find_if(table.begin(), table.end(), [&](const TOMLNode::Member& member) {
    return member.key == key;
  });
  return found == table.end() ? nullptr : &*found;
}

const TOMLNode& TableReader::require(std::string_view key) const {
  if (const TOMLNode::Member* member = find(key)) return member->value;
  failMissing("expected the key \"" + std::string(key) + "\" in this table");
}

void TableReader::failMissing(std::string text) const {
  if (hasUnknown_) throw KeyMissing();
  throw TOMLError(node_.position, std::move(text));
}

TOMLError unknownKey(const TOMLNode::Member& member, const std::vector<std::string_view>& known) {
  return {member.position,
          "unknown key \"" + member.key + "\"" + suggestionText(member.key, known)};
}

}  // namespace tavlen
