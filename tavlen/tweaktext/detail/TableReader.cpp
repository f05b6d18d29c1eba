#include "tavlen/tweaktext/detail/TableReader.h"

#include <algorithm>
#include <utility>

#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen {

TableReader::TableReader(const TOMLNode& node, const std::vector<std::string_view>& known)
    : node_(node) {
  std::vector<TOMLError> errors;
  if (!checked(node, known, errors))
    throw TOMLError(errors.front().position(), errors.front().text());
}

std::optional<TableReader> TableReader::checked(const TOMLNode& node,
                                                const std::vector<std::string_view>& known,
                                                std::vector<TOMLError>& errors) {
  const std::size_t before = errors.size();
  for (const TOMLNode::Member& member : expectKind<TOMLNode::Table>(node, "a table")) {
    if (std::find(known.begin(), known.end(), member.key) == known.end())
      errors.push_back(unknownKey(member, known));
  }
  return errors.size() == before ? std::optional(TableReader(node)) : std::nullopt;
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
  throw TOMLError(position(), "expected the key \"" + std::string(key) + "\" in this table");
}

TOMLError unknownKey(const TOMLNode::Member& member, const std::vector<std::string_view>& known) {
  return {member.position,
          "unknown key \"" + member.key + "\"" + suggestionText(member.key, known)};
}

}  // namespace tavlen
