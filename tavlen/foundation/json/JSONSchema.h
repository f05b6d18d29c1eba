#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/BoxedOptional.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/RawValueCoding.h"
#include "tavlen/foundation/coding/SemanticVersion.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

/// JSON Schemas (draft 2020-12, json-schema.org) of coded types, from the tables that code them.
///
/// Whatever JSONEncoder writes for a type is valid under the type's schema. Keys that a record does
/// not list are valid, too, because decoders ignore them. Some of what decoders refuse is valid
/// nevertheless, since schemas cannot express it: a version number that is too large, for example.
/// Threads: no function here has state; one writer one thread at a time.
namespace tavlen {

/// The name of the definition of T in a schema. Empty for a type that is written out wherever it is
/// used. A type that may contain itself needs a name.
template <class T>
inline constexpr std::string_view kSchemaName = {};

class JSONSchemaWriter;

/// The schema of one type: a static function `write(JSONSchemaWriter&)`, which writes its keywords.
template <class T>
struct SchemaOf;

/// Writes a schema into an encoder.
class TAVLEN_API JSONSchemaWriter {
 public:
  /// Writes into `out`, which must outlive the writer.
  explicit JSONSchemaWriter(Encoder& out) : out_(out) {}

  /// Writes the schema of a document that holds a T, whose purpose the texts describe.
  template <class T>
  void document(std::string_view title, std::string_view description) {
    out_.beginRecord();
    keyword("$schema", "https://json-schema.org/draft/2020-12/schema");
    keyword("title", title);
    keyword("description", description);
    SchemaOf<T>::write(*this);
    writeDefinitions();
    out_.endRecord();
  }

  /// Writes the schema of T, or a reference to its definition.
  template <class T>
  void schema() {
    constexpr std::string_view name = kSchemaName<T>;
    out_.beginRecord();
    if constexpr (name.empty()) {
      SchemaOf<T>::write(*this);
    } else {
      keyword("$ref", "#/$defs/" + std::string(name));
      define(name, [](JSONSchemaWriter& writer) { SchemaOf<T>::write(writer); });
    }
    out_.endRecord();
  }

  /// Writes a keyword with a text.
  void keyword(std::string_view name, std::string_view text);
  /// Writes a keyword with a list of texts.
  void keyword(std::string_view name, std::span<const std::string_view> texts);
  /// Writes the keywords of an object with the fields of Record.
  template <CodedRecord Record>
  void recordKeywords();
  /// Writes the keywords of an object with a type key, whose text is one of `identifiers`.
  void typeKeyKeywords(std::span<const std::string_view> identifiers);

  /// The target, for keywords of other forms.
  Encoder& out() { return out_; }

 private:
  using Write = void (*)(JSONSchemaWriter& writer);

  void define(std::string_view name, Write write);
  void writeDefinitions();

  Encoder& out_;
  /// In the order of the first reference, so that equal tables make equal texts.
  std::vector<std::pair<std::string_view, Write>> definitions_;
};

template <CodedRecord Record>
void JSONSchemaWriter::recordKeywords() {
  keyword("type", "object");
  std::vector<std::string_view> required;
  out_.key("properties");
  out_.beginRecord();
  const auto property = [&]<class Member>(const CodedField<Record, Member>& field) {
    out_.key(field.key);
    schema<Member>();
    if (field.required) required.push_back(field.key);
  };
  std::apply([&](const auto&... field) { (property(field), ...); }, Record::codedFields());
  out_.endRecord();
  if (!required.empty()) keyword("required", required);
}

template <>
struct SchemaOf<bool> {
  static void write(JSONSchemaWriter& writer) { writer.keyword("type", "boolean"); }
};

template <>
struct SchemaOf<std::int64_t> {
  static void write(JSONSchemaWriter& writer);
};

template <>
struct SchemaOf<std::uint64_t> {
  static void write(JSONSchemaWriter& writer);
};

template <>
struct SchemaOf<double> {
  static void write(JSONSchemaWriter& writer) { writer.keyword("type", "number"); }
};

template <>
struct SchemaOf<std::string> {
  static void write(JSONSchemaWriter& writer) { writer.keyword("type", "string"); }
};

template <>
struct SchemaOf<Date> {
  static void write(JSONSchemaWriter& writer);
};

template <>
struct SchemaOf<SemanticVersion> {
  static void write(JSONSchemaWriter& writer);
};

template <RawValueEnum E>
struct SchemaOf<E> {
  static void write(JSONSchemaWriter& writer) { writer.keyword("enum", RawValues<E>::names); }
};

/// A value or a null.
template <class Value>
struct OptionalSchema {
  static void write(JSONSchemaWriter& writer) {
    Encoder& out = writer.out();
    out.key("anyOf");
    out.beginArray(2);
    writer.schema<Value>();
    out.beginRecord();
    writer.keyword("type", "null");
    out.endRecord();
    out.endArray();
  }
};

template <class Value>
struct SchemaOf<std::optional<Value>> : OptionalSchema<Value> {};

template <class Value>
struct SchemaOf<BoxedOptional<Value>> : OptionalSchema<Value> {};

template <class Element>
struct SchemaOf<std::vector<Element>> {
  static void write(JSONSchemaWriter& writer) {
    writer.keyword("type", "array");
    writer.out().key("items");
    writer.schema<Element>();
    if constexpr (LimitedElement<Element>) {
      writer.out().key("maxItems");
      writer.out().unsignedInteger(ElementLimit<Element>::kMost);
    }
  }
};

template <class Value>
struct SchemaOf<std::map<std::int64_t, Value>> {
  static void write(JSONSchemaWriter& writer) {
    Encoder& out = writer.out();
    writer.keyword("type", "object");
    out.key("propertyNames");
    out.beginRecord();
    writer.keyword("pattern", "^[+-]?[0-9]+$");
    out.endRecord();
    out.key("additionalProperties");
    writer.schema<Value>();
  }
};

template <CodedRecord Record>
struct SchemaOf<Record> {
  static void write(JSONSchemaWriter& writer) { writer.recordKeywords<Record>(); }
};

/// The fields of the kind are asked for after its type key is known, so that validators name the
/// field at fault.
template <TypeKeyedContainer Container>
struct SchemaOf<Container> {
  static void write(JSONSchemaWriter& writer) {
    writer.keyword("type", "object");
    writer.typeKeyKeywords(Container::supportedTypes());
    writer.out().key("allOf");
    writeKinds(writer, static_cast<const decltype(Container::value)*>(nullptr));
  }

 private:
  template <class Kind>
  static constexpr bool hasFields = std::tuple_size_v<decltype(Kind::codedFields())> != 0;

  template <class... Kinds>
  static void writeKinds(JSONSchemaWriter& writer, const std::variant<Kinds...>* /*family*/) {
    writer.out().beginArray((std::size_t{hasFields<Kinds>} + ...));
    (writeKind<Kinds>(writer), ...);
    writer.out().endArray();
  }

  template <class Kind>
  static void writeKind(JSONSchemaWriter& writer) {
    Encoder& out = writer.out();
    if constexpr (hasFields<Kind>) {
      out.beginRecord();
      out.key("if");
      out.beginRecord();
      writer.typeKeyKeywords(std::array{Kind::identifier});
      out.endRecord();
      out.key("then");
      out.beginRecord();
      writer.recordKeywords<Kind>();
      out.endRecord();
      out.endRecord();
    }
  }
};

}  // namespace tavlen
