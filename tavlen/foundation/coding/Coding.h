#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/BoxedOptional.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/coding/Decoder.h"
#include "tavlen/foundation/coding/Encoder.h"
#include "tavlen/foundation/text/SharedText.h"

/// The coding of values, independent of the format.
///
/// A record lists its coded fields once, in the order of coding:
///
///     struct Icons {
///       std::optional<PrimaryIcon> primaryIcon;
///       static constexpr auto codedFields() {
///         return std::tuple{optionalField("CFBundlePrimaryIcon", &Icons::primaryIcon)};
///       }
///     };
///
/// A type with another form specialises Coding<T>. Threads: no function here has state.
namespace tavlen {

/// A row of a record's table of fields: key, member, and whether decoding requires the key.
template <class Record, class Member>
struct CodedField {
  std::string_view key;    ///< a constant
  Member Record::*member;  ///< the coded member
  bool required;           ///< whether decoding throws when the key is absent
};

/// A field that is always encoded, and whose absence is DecodingError::keyNotFound.
template <class Record, class Member>
constexpr CodedField<Record, Member> requiredField(std::string_view key, Member Record::*member) {
  return {key, member, true};
}

/// A field that is left out when it is empty. An absent key and a null are decoded as empty.
template <class Record, class Value>
constexpr CodedField<Record, std::optional<Value>> optionalField(
    std::string_view key, std::optional<Value> Record::*member) {
  return {key, member, false};
}

/// A record with a table of coded fields.
template <class T>
concept CodedRecord = requires {
  T::codedFields();
};

/// Parses the key of a table of numbers: an optional sign and decimal digits, nothing else. Throws
/// DecodingError::typeMismatch.
TAVLEN_API std::int64_t wholeNumberFromKey(std::string_view key);

/// The coding of one type: static functions `encode(encoder, value)` and `decode(decoder, value&)`.
template <class T>
struct Coding;

/// Writes `value`. Throws EncodingError for a value that the format cannot hold; the encoder's
/// output is then incomplete.
template <class T>
void encode(EncoderType auto& encoder, const T& value) {
  Coding<T>::encode(encoder, value);
}

/// Reads into `value`. Throws DecodingError, with the path to the fault; `value` is then
/// unspecified.
template <class T>
void decode(Decoder& decoder, T& value) {
  Coding<T>::decode(decoder, value);
}

/// A boolean.
template <>
struct Coding<bool> {
  static void encode(EncoderType auto& encoder, bool value) { encoder.boolean(value); }
  static void decode(Decoder& decoder, bool& value) { value = decoder.boolean(); }
};

/// A signed integer; out of range is a DecodingError.
template <>
struct Coding<std::int64_t> {
  static void encode(EncoderType auto& encoder, std::int64_t value) { encoder.integer(value); }
  static void decode(Decoder& decoder, std::int64_t& value) { value = decoder.integer(); }
};

/// An unsigned integer; out of range is a DecodingError.
template <>
struct Coding<std::uint64_t> {
  static void encode(EncoderType auto& encoder, std::uint64_t value) {
    encoder.unsignedInteger(value);
  }
  static void decode(Decoder& decoder, std::uint64_t& value) { value = decoder.unsignedInteger(); }
};

/// A floating-point number.
template <>
struct Coding<double> {
  static void encode(EncoderType auto& encoder, double value) { encoder.real(value); }
  static void decode(Decoder& decoder, double& value) { value = decoder.real(); }
};

/// A UTF-8 text.
template <>
struct Coding<std::string> {
  static void encode(EncoderType auto& encoder, const std::string& value) { encoder.string(value); }
  static void decode(Decoder& decoder, std::string& value) { value = decoder.string(); }
};

/// A UTF-8 text of its own.
template <>
struct Coding<SharedText> {
  static void encode(EncoderType auto& encoder, const SharedText& value) { encoder.string(value); }
  static void decode(Decoder& decoder, SharedText& value) {
    decoder.chargeMemory(SharedText::kOwnBytes);
    value = decoder.string();
  }
};

/// A point in time, in the format's own form.
template <>
struct Coding<Date> {
  static void encode(EncoderType auto& encoder, Date value) { encoder.date(value); }
  static void decode(Decoder& decoder, Date& value) { value = decoder.date(); }
};

/// An absent array element is a null. For absent fields see optionalField().
template <class Optional>
struct OptionalCoding {
  static void encode(EncoderType auto& encoder, const Optional& value) {
    if (value) {
      tavlen::encode(encoder, *value);
    } else {
      encoder.null();
    }
  }
  static void decode(Decoder& decoder, Optional& value) {
    if (decoder.null()) {
      value.reset();
    } else {
      tavlen::decode(decoder, value.emplace());
    }
  }
};

template <class Value>
struct Coding<std::optional<Value>> : OptionalCoding<std::optional<Value>> {};

template <class Value>
struct Coding<BoxedOptional<Value>> : OptionalCoding<BoxedOptional<Value>> {};

/// A shared record is coded like the record itself. It must not be null.
template <class Record>
struct Coding<std::shared_ptr<Record>> {
  static void encode(EncoderType auto& encoder, const std::shared_ptr<Record>& value) {
    tavlen::encode(encoder, *value);
  }
  static void decode(Decoder& decoder, std::shared_ptr<Record>& value) {
    decoder.chargeMemory(sizeof(Record));
    value = std::make_shared<Record>();
    tavlen::decode(decoder, *value);
  }
};

/// Specialised for elements whose number in one array is limited: `kMost`, and `kName` for errors.
template <class Element>
struct ElementLimit;

template <class Element>
concept LimitedElement = requires {
  ElementLimit<Element>::kMost;
};

/// Throws the error that `makeError` makes of a text when an array of `count` elements is too long.
template <class Element>
void requireElementCount(std::size_t count, auto makeError) {
  if constexpr (LimitedElement<Element>) {
    using Limit = ElementLimit<Element>;
    if (count > Limit::kMost) {
      throw makeError("more than " + std::to_string(Limit::kMost) + " " +
                      std::string(Limit::kName));
    }
  }
}

/// An array. Errors in an element have its index in their path.
template <class Element>
struct Coding<std::vector<Element>> {
  /// A vector that grows holds its elements once in the old place, and has room for twice as many
  /// in the new one.
  static constexpr std::size_t kElementBytes = 3 * sizeof(Element);

  static void encode(EncoderType auto& encoder, const std::vector<Element>& value) {
    requireElementCount<Element>(value.size(), EncodingError::invalidValue);
    encoder.beginArray(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
      underIndex(i, [&] { tavlen::encode(encoder, value[i]); });
    }
    encoder.endArray();
  }
  static void decode(Decoder& decoder, std::vector<Element>& value) {
    value.clear();
    decoder.elements([&] {
      requireElementCount<Element>(value.size() + 1, DecodingError::dataCorrupted);
      decoder.chargeMemory(kElementBytes);
      tavlen::decode(decoder, value.emplace_back());
    });
  }
};

/// A table whose keys are decimal integers.
template <class Value>
struct Coding<std::map<std::int64_t, Value>> {
  static void encode(EncoderType auto& encoder, const std::map<std::int64_t, Value>& table) {
    encoder.beginRecord();
    for (const auto& entry : table) {
      const std::string key = std::to_string(entry.first);
      encoder.plainKey(key);
      underKey(key, [&] { tavlen::encode(encoder, entry.second); });
    }
    encoder.endRecord();
  }
  static void decode(Decoder& decoder, std::map<std::int64_t, Value>& table) {
    constexpr std::size_t kNodeBytes = 48;  // beyond the entry
    table.clear();
    decoder.members([&](std::string_view key) {
      decoder.chargeMemory(kNodeBytes + sizeof(typename std::map<std::int64_t, Value>::value_type));
      // "1" and "01" are the same key. The first one counts, as for equal texts.
      const auto [place, added] = table.try_emplace(wholeNumberFromKey(key));
      if (added) tavlen::decode(decoder, place->second);
    });
  }
};

/// Writes the fields of `record` into the open keyed container. Throws EncodingError.
template <CodedRecord Record>
void encodeFields(EncoderType auto& encoder, const Record& record) {
  const auto encodeField = [&]<std::size_t I>() {
    constexpr auto field = std::get<I>(Record::codedFields());
    static_assert(isPlainText(field.key));
    const auto& value = record.*field.member;
    if constexpr (requires { value.has_value(); }) {
      if (!field.required && !value) return;
    }
    encoder.plainKey(field.key);
    underKey(field.key, [&] { encode(encoder, value); });
  };
  [&]<std::size_t... I>(std::index_sequence<I...>) { (encodeField.template operator()<I>(), ...); }
  (std::make_index_sequence<std::tuple_size_v<decltype(Record::codedFields())>>{});
}

/// The record's table of fields in the form that decoders use, without the record's type: one
/// FieldDecoder for each entry of `Record::codedFields()`. `I` counts the entries, so that each
/// captureless lambda can look up its own member at compile time.
template <CodedRecord Record>
inline constexpr auto kFieldDecoders = []<std::size_t... I>(std::index_sequence<I...>) {
  return std::array<FieldDecoder, sizeof...(I)>{FieldDecoder{
      std::get<I>(Record::codedFields()).key,
      std::get<I>(Record::codedFields()).required,
      [](Decoder& decoder, void* record) {
        constexpr auto member = std::get<I>(Record::codedFields()).member;
        decode(decoder, static_cast<Record*>(record)->*member);
      },
  }...};
}
(std::make_index_sequence<std::tuple_size_v<decltype(Record::codedFields())>>{});

/// A record: a keyed container with its fields.
template <CodedRecord Record>
struct Coding<Record> {
  static void encode(EncoderType auto& encoder, const Record& record) {
    encoder.beginRecord();
    encodeFields(encoder, record);
    encoder.endRecord();
  }
  static void decode(Decoder& decoder, Record& record) {
    static_assert(kFieldDecoders<Record>.size() <= 64, "decoders keep a bit a field");
    decoder.record(kFieldDecoders<Record>, &record);
  }
};

}  // namespace tavlen
