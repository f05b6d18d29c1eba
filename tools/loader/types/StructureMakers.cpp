#include "tools/loader/types/StructureMakers.h"

#include <string>

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tools/loader/base/EngineString.h"

namespace tavlen::loader {

namespace {

/// Appends a literal in which the scalars are the parameters v0, v1, ... from `next` on.
void appendLiteral(std::string& out, const ValueType& type, std::size_t& next) {
  if (!type.isAggregate()) {
    out += 'v' + std::to_string(next++);
    return;
  }
  const bool isArray = type.kind() == ValueType::Kind::array;
  out += isArray ? '[' : '{';
  for (const ValueType::Member& member : type.members()) {
    if (!isArray) {
      appendJSON(out, member.name);
      out += ':';
    }
    appendLiteral(out, *member.type, next);
    out += ',';
  }
  out += isArray ? ']' : '}';
}

}  // namespace

std::size_t scalarCount(const ValueType& type) {
  if (!type.isAggregate()) return 1;
  std::size_t count = 0;
  for (const ValueType::Member& member : type.members()) count += scalarCount(*member.type);
  return count;
}

JSObjectRef StructureMakers::makerFor(JSContextRef context, const ValueType& type) {
  const std::lock_guard lock(lock_);
  const auto [place, isNew] = makers_.try_emplace(type.number());
  if (!isNew || scalarCount(type) > kMostScalars) return place->second;
  std::string literal;
  std::size_t next = 0;
  appendLiteral(literal, type, next);
  std::string source = "((";
  for (std::size_t i = 0; i < next; ++i) source += (i == 0 ? "v" : ", v") + std::to_string(i);
  source += ") => (" + literal + "))";
  place->second = const_cast<JSObjectRef>(
      JSEvaluateScript(context, EngineString(source).get(), nullptr, nullptr, 0, nullptr));
  if (place->second != nullptr) JSValueProtect(context, place->second);
  return place->second;
}

}  // namespace tavlen::loader
