#include "tavlen/foundation/json/JSONSchema.h"

#include <algorithm>
#include <limits>

namespace tavlen {

void JSONSchemaWriter::keyword(std::string_view name, std::string_view text) {
  out_.key(name);
  out_.string(text);
}

void JSONSchemaWriter::keyword(std::string_view name, std::span<const std::string_view> texts) {
  out_.key(name);
  out_.beginArray(texts.size());
  for (const std::string_view text : texts) out_.string(text);
  out_.endArray();
}

void JSONSchemaWriter::typeKeyKeywords(std::span<const std::string_view> identifiers) {
  out_.key("properties");
  out_.beginRecord();
  out_.key(kTypeKey);
  out_.beginRecord();
  keyword("enum", identifiers);
  out_.endRecord();
  out_.endRecord();
  keyword("required", std::array{kTypeKey});
}

void JSONSchemaWriter::define(std::string_view name, Write write) {
  const bool isKnown = std::any_of(definitions_.begin(), definitions_.end(),
                                   [&](const auto& known) { return known.first == name; });
  if (!isKnown) definitions_.emplace_back(name, write);
}

void JSONSchemaWriter::writeDefinitions() {
  out_.key("$defs");
  out_.beginRecord();
  // Definitions refer to others, which join the list.
  std::size_t written = 0;
  while (written < definitions_.size()) {
    const auto [name, write] = definitions_[written++];
    out_.key(name);
    out_.beginRecord();
    write(*this);
    out_.endRecord();
  }
  out_.endRecord();
}

void SchemaOf<std::int64_t>::write(JSONSchemaWriter& writer) {
  writer.keyword("type", "integer");
  writer.out().key("minimum");
  writer.out().integer(std::numeric_limits<std::int64_t>::min());
  writer.out().key("maximum");
  writer.out().integer(std::numeric_limits<std::int64_t>::max());
}

void SchemaOf<std::uint64_t>::write(JSONSchemaWriter& writer) {
  writer.keyword("type", "integer");
  writer.out().key("minimum");
  writer.out().integer(0);
  writer.out().key("maximum");
  writer.out().unsignedInteger(std::numeric_limits<std::uint64_t>::max());
}

void SchemaOf<Date>::write(JSONSchemaWriter& writer) {
  writer.keyword("type", "number");
  writer.keyword("description", "Seconds since 2001-01-01T00:00:00Z");
}

void SchemaOf<SemanticVersion>::write(JSONSchemaWriter& writer) {
  writer.keyword("type", "string");
  writer.keyword("pattern",
                 "^[0-9]+(\\.[0-9]+){0,2}(-[0-9A-Za-z-]+(\\.[0-9A-Za-z-]+)*)?"
                 "(\\+[0-9A-Za-z-]+(\\.[0-9A-Za-z-]+)*)?$");
}

}  // namespace tavlen
