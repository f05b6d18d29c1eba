#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/CodingError.h"

/// Enumerations that documents store as text.
///
/// An enumeration whose values count up from 0 opts in by listing its stored texts in the same
/// order:
///
///     template <>
///     struct RawValues<Colour> {
///       static constexpr std::array<std::string_view, 2> names{"red", "green"};
///       static constexpr std::string_view typeName = "colour";  // for errors
///     };
namespace tavlen {

/// The stored texts of `E`; to be specialised.
template <class E>
struct RawValues;

/// An enumeration with stored texts.
template <class E>
concept RawValueEnum = std::is_enum_v<E> && requires {
  { RawValues<E>::names.size() } -> std::convertible_to<std::size_t>;
  { RawValues<E>::typeName } -> std::convertible_to<std::string_view>;
};

/// The stored text of `value`, a constant.
template <RawValueEnum E>
constexpr std::string_view rawValue(E value) {
  return RawValues<E>::names[static_cast<std::size_t>(value)];
}

/// The value whose stored text is `text`, case-sensitively; nothing for any other text.
template <RawValueEnum E>
constexpr std::optional<E> fromRawValue(std::string_view text) {
  const auto& names = RawValues<E>::names;
  const auto found = std::find(names.begin(), names.end(), text);
  if (found == names.end()) return std::nullopt;
  return static_cast<E>(found - names.begin());
}

/// All values, in the order of declaration.
template <RawValueEnum E>
constexpr auto allCases() {
  std::array<E, RawValues<E>::names.size()> cases{};
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = static_cast<E>(i);
  return cases;
}

/// Coded as one string. An unknown one is DecodingError::dataCorrupted.
template <RawValueEnum E>
struct Coding<E> {
  static void encode(EncoderType auto& encoder, E value) { encoder.string(rawValue(value)); }
  static void decode(Decoder& decoder, E& value) {
    const std::string text = decoder.string();
    const std::optional<E> known = fromRawValue<E>(text);
    if (!known) {
      throw DecodingError::dataCorrupted("unknown " + std::string(RawValues<E>::typeName) + " \"" +
                                         text + "\"");
    }
    value = *known;
  }
};

}  // namespace tavlen
