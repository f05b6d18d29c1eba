#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// The key, next to a boxed value's own fields, of the identifier of its kind. Stored documents
/// contain it.
inline constexpr std::string_view kTypeKey = "type";

/// `name` without the suffix `baseName`: the stored identifier of a kind of that name.
constexpr std::string_view identifierWithBaseName(std::string_view name,
                                                  std::string_view baseName) {
  if (name.ends_with(baseName)) name.remove_suffix(baseName.size());
  return name;
}

/// The tables of a family; only defined for variants.
template <class Family>
struct TypeKeyedFamily;

/// The tables of a family of kinds, in the order of its alternatives. A family is a variant of
/// coded records that each have a static `identifier`.
template <class... Kinds>
struct TypeKeyedFamily<std::variant<Kinds...>> {
  /// The variant.
  using Family = std::variant<Kinds...>;
  /// Decodes one kind into the variant.
  using KindDecoder = void (*)(Decoder&, Family&);

  /// The stored identifiers.
  static constexpr std::array<std::string_view, sizeof...(Kinds)> kIdentifiers = {
      Kinds::identifier...};
  /// The decoders.
  static constexpr std::array<KindDecoder, sizeof...(Kinds)> kDecoders = {
      [](Decoder& decoder, Family& family) {
        decode(decoder, family.template emplace<Kinds>());
      }...};

  /// The index of `identifier` in the tables; their size when no kind has it.
  static std::size_t indexOf(std::string_view identifier) {
    std::size_t index = 0;
    while (index < kIdentifiers.size() && kIdentifiers[index] != identifier) ++index;
    return index;
  }
};

/// A box for one value of a family: a record whose only member is `value`, a variant of kinds.
template <class T>
concept TypeKeyedContainer = requires(T container) {
  std::variant_size<decltype(container.value)>::value;
  T::supportedTypes();
};

/// Coded with the type key first, then the kind's own fields. When decoding, the key may be
/// anywhere. A missing key is keyNotFound, an unknown identifier dataCorrupted at the key.
template <TypeKeyedContainer Container>
struct Coding<Container> {
  static void encode(EncoderType auto& encoder, const Container& container) {
    std::visit(
        [&]<class Kind>(const Kind& kind) {
          static_assert(isPlainText(kTypeKey) && isPlainText(Kind::identifier));
          encoder.beginTypedRecord(kTypeKey, Kind::identifier);
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
        throw DecodingError::dataCorrupted("unknown kind \"" + std::string(identifier) + "\"");
      });
    }
    Family::kDecoders[index](decoder, container.value);
  }
};

}  // namespace tavlen
