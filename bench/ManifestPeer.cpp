#include "ManifestPeer.h"

#include <simdjson.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "tavlen/foundation/coding/RawValueCoding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen::bench {

namespace {

using Value = simdjson::ondemand::value;

template <class T>
concept Optional = requires(T value) {
  value.reset();
};

template <class T>
void read(Value json, T& value);

template <class Element>
void readArray(Value json, std::vector<Element>& array) {
  for (Value element : json.get_array()) read(element, array.emplace_back());
}

template <class Element>
void readTable(Value json, std::map<std::int64_t, Element>& table) {
  for (simdjson::ondemand::field member : json.get_object()) {
    const std::int64_t key = wholeNumberFromKey(member.unescaped_key());
    read(member.value(), table[key]);
  }
}

template <CodedRecord Record>
void readRecord(Value json, Record& record) {
  for (simdjson::ondemand::field member : json.get_object()) {
    const auto key = member.key();
    const auto readIf = [&](const auto& field) {
      if (!key.unsafe_is_equal(field.key)) return false;
      read(member.value(), record.*field.member);
      return true;
    };
    std::apply([&](const auto&... field) { (void)(readIf(field) || ...); }, Record::codedFields());
  }
}

template <class Kind, class Container>
bool readKind(std::string_view type, simdjson::ondemand::object& members, Container& container) {
  if (type != Kind::identifier) return false;
  Kind& kind = container.value.template emplace<Kind>();
  std::apply(
      [&](const auto&... field) { (read(members.find_field(field.key), kind.*field.member), ...); },
      Kind::codedFields());
  return true;
}

template <class Container>
void readContainer(Value json, Container& container) {
  simdjson::ondemand::object members = json.get_object();
  const std::string_view type = members.find_field(kTypeKey);
  const bool found = [&]<class... Kinds>(const std::variant<Kinds...>&) {
    return (readKind<Kinds>(type, members, container) || ...);
  }(container.value);
  if (!found) throw std::runtime_error("unknown kind");
}

template <class T>
void read(Value json, T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    value = json.get_bool();
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    value = json.get_int64();
  } else if constexpr (std::is_same_v<T, std::uint64_t>) {
    value = json.get_uint64();
  } else if constexpr (std::is_same_v<T, double>) {
    value = json.get_double();
  } else if constexpr (std::is_same_v<T, Date>) {
    value.secondsSinceReferenceDate = json.get_double();
  } else if constexpr (std::is_same_v<T, std::string>) {
    value = std::string_view(json.get_string());
  } else if constexpr (RawValueEnum<T>) {
    value = fromRawValue<T>(json.get_string()).value();
  } else if constexpr (Optional<T>) {
    if (!json.is_null()) read(json, value.emplace());
  } else if constexpr (TypeKeyedContainer<T>) {
    readContainer(json, value);
  } else if constexpr (CodedRecord<T>) {
    readRecord(json, value);
  } else if constexpr (requires { readArray(json, value); }) {
    readArray(json, value);
  } else if constexpr (requires { readTable(json, value); }) {
    readTable(json, value);
  } else {
    throw std::runtime_error("a value that the sample does not have");
  }
}

}  // namespace

struct ManifestPeer::Buffers {
  explicit Buffers(std::string_view json) : text(json) {}

  simdjson::padded_string text;
  simdjson::ondemand::parser parser;
};

ManifestPeer::ManifestPeer(std::string_view text) : buffers_(std::make_unique<Buffers>(text)) {}

ManifestPeer::~ManifestPeer() = default;

TweakFile::Manifest ManifestPeer::read() {
  TweakFile::Manifest manifest;
  simdjson::ondemand::document document = buffers_->parser.iterate(buffers_->text);
  bench::read(document.get_value(), manifest);
  return manifest;
}

}  // namespace tavlen::bench
