#include "tavlen/tweaks/ArgumentType.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen {

namespace {

struct Row {
  char character;
  ArgumentType type;
};

using Kind = ArgumentType::Kind;

constexpr std::array<Row, 25> kRows = {{
    {'v', {Kind::nothing}},
    {'B', {Kind::boolean}},
    {'c', {Kind::integer, 8, true}},
    {'C', {Kind::integer, 8}},
    {'s', {Kind::integer, 16, true}},
    {'S', {Kind::integer, 16}},
    {'i', {Kind::integer, 32, true}},
    {'I', {Kind::integer, 32}},
    {'l', {Kind::integer, 32, true}},
    {'L', {Kind::integer, 32}},
    {'q', {Kind::integer, 64, true}},
    {'Q', {Kind::integer, 64}},
    {'t', {Kind::integer, 128, true}},
    {'T', {Kind::integer, 128}},
    {'f', {Kind::real, 32}},
    {'d', {Kind::real, 64}},
    {'D', {Kind::real, 128}},
    {'@', {Kind::object}},
    {'#', {Kind::class_}},
    {':', {Kind::selector}},
    {'*', {Kind::text}},
    {'^', {Kind::pointer}},
    {'[', {Kind::pointer}},
    {'{', {Kind::structure}},
    {'(', {Kind::structure}},
}};

}  // namespace

ArgumentType ArgumentType::from(std::string_view encoding) {
  JXTypeCursor cursor(encoding);
  JXRemoveQualifiers(cursor);
  const char character = cursor.character();
  cursor.advance();
  if (character == '@' && cursor.isAt('?')) return {Kind::block};
  const auto* row = std::find_if(kRows.begin(), kRows.end(),
                                 [&](const Row& each) { return each.character == character; });
  return row == kRows.end() || character == '\0' ? ArgumentType() : row->type;
}

std::optional<HookTypes> HookTypes::from(std::string_view signature) {
  std::optional<MethodTypes> types = splitMethodTypes(signature);
  if (!types || types->arguments.size() < kHidden) return std::nullopt;
  HookTypes result;
  result.types_ = std::move(*types);
  return result;
}

ArgumentType HookTypes::at(std::int64_t index) const {
  if (index == Hook::kReturnValue) return ArgumentType::from(types_.result);
  if (index < 0 || index >= count()) return {};
  return ArgumentType::from(types_.arguments[static_cast<std::size_t>(index + kHidden)]);
}

}  // namespace tavlen
