#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// The key beside a boxed value's own fields that holds the identifier of its kind. It stands in
/// stored documents.
inline constexpr std::string_view kTypeKey = "type";

/// `name` without `baseName` at its end: the identifier that is stored for a kind of that name.
constexpr std::string_view identifierWithBaseName(std::string_view name,
                                                  std::string_view baseName) {
  if (name.ends_with(baseName)) name.remove_suffix(baseName.size());
  return name;
}

template <class Family>
struct TypeKeyedFamily;

/// What is known of a family of kinds, a variant of coded records that each have a static
/// `identifier`: tables in the order of its alternatives.
template <class... Kinds>
struct TypeKeyedFamily<std::variant<Kinds...>> {
  using Family = std::variant<Kinds...>;
  using KindDecoder = void (*)(Decoder&, Family&);

  static constexpr std::array<std::string_view, sizeof...(Kinds)> kIdentifiers = {
      Kinds::identifier...};
  static constexpr std::array<KindDecoder, sizeof...(Kinds)> kDecoders = {
      [](Decoder& decoder, Family& family) {
        decode(decoder, family.template emplace<Kinds>());
      }...};

  /// The place of `identifier` in the tables; their size if no kind has it.
  static std::size_t indexOf(std::string_view identifier) {
    std::size_t index = 0;
    while (index < kIdentifiers.size() && kIdentifiers[index] != identifier) ++index;
    return index;
  }
};

/// A box around one value of a family: a record whose only member is `value`, a variant of kinds.
template <class T>
concept TypeKeyedContainer = requires(T container) {
  std::variant_size<decltype(container.value)>::value;
  T::supportedTypes();
};

/// The type key first, then the kind's own fields. When reading, the key may stand anywhere; a
/// missing one is keyNotFound, an identifier of no kind is dataCorrupted at the key.
template <TypeKeyedContainer Container>
struct Coding<Container> {
  static void encode(Encoder& encoder, const Container& container) {
    std::visit(
        [&]<class Kind>(const Kind& kind) {
          encoder.beginRecord();
          encoder.key(kTypeKey);
          encoder.string(Kind::identifier);
          encodeFields(encoder, kind);
          encoder.endRecord();
        },
        container.value);
  }

  static void decode(Decoder& decoder, Container& container) {
    using Family = TypeKeyedFamily<decltype(container.value)>;
    const std::string_view identifier = decoder.peekString(kTypeKey);
    const std::size_t index = Family::indexOf(identifier);
    if (index == Family::kDecoders.size()) {
      underKey(kTypeKey, [&] {
        throw DecodingError::dataCorrupted("unknown kind \"" + abbreviated(identifier) + "\"");
      });
    }
    Family::kDecoders[index](decoder, container.value);
  }
};

}  // namespace tavlen
