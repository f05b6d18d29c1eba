#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tavlen/foundation/archive/KeyedArchiver.h"
#include "tavlen/foundation/archive/KeyedUnarchiver.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/files/URL.h"
#include "tavlen/foundation/plist/PropertyListSerialization.h"

/// Records in keyed archives, coded by the same field table as in every other format.
///
/// A record names its class: `static constexpr std::string_view archivedClassName`. All fields are
/// written, absent ones as nil. When reading, absent and nil fields are empty, even if the table
/// requires them, as on the platform. A std::shared_ptr to a record keeps its identity: a shared
/// record is written once and is shared again after reading.
namespace tavlen {

/// A record that names its archived class.
template <class T>
concept ArchivedRecord = CodedRecord<T> && requires {
  { T::archivedClassName } -> std::convertible_to<std::string_view>;
};

/// The archived form of one type: `encode(archiver, value)` returns the value to store under a key,
/// and `decode(unarchiver, stored, value&)` fills a default-constructed `value`. `stored` is the
/// value under the key; for objects it is the object itself, which is not nil.
template <class T>
struct ArchiveCoding;

/// Types stored as references to objects: texts, arrays, records. Arrays hold only these.
template <class T>
concept ArchivedObject = ArchiveCoding<T>::isObject;

/// A boolean, stored inline.
template <>
struct ArchiveCoding<bool> {
  static constexpr bool isObject = false;
  static PropertyList::Index encode(KeyedArchiver& archiver, bool value) {
    return archiver.boolean(value);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored, bool& value) {
    value = unarchiver.boolean(stored);
  }
};

/// A text.
template <>
struct ArchiveCoding<std::string> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const std::string& value) {
    return archiver.text(value);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored, std::string& value) {
    value = unarchiver.text(stored);
  }
};

/// A text that shares one block with the other texts of its archive.
template <>
struct ArchiveCoding<SharedText> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const SharedText& value) {
    return archiver.text(value);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored, SharedText& value) {
    value = unarchiver.sharedText(stored);
  }
};

/// A URL.
template <>
struct ArchiveCoding<URL> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const URL& value) {
    return archiver.url(value.absoluteString);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored, URL& value) {
    value = unarchiver.url(stored);
  }
};

/// An object or nil.
template <ArchivedObject Value>
struct ArchiveCoding<std::optional<Value>> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const std::optional<Value>& value) {
    return value ? ArchiveCoding<Value>::encode(archiver, *value) : archiver.null();
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored,
                     std::optional<Value>& value) {
    ArchiveCoding<Value>::decode(unarchiver, stored, value.emplace());
  }
};

/// An array of objects.
template <ArchivedObject Element>
struct ArchiveCoding<std::vector<Element>> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const std::vector<Element>& value) {
    return archiver.array(value.size(), [&](std::size_t i) {
      return underIndex(i, [&] { return ArchiveCoding<Element>::encode(archiver, value[i]); });
    });
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored,
                     std::vector<Element>& value) {
    // Do not reserve for all: the count may be large and each element a reference to the same empty
    // object.
    constexpr std::size_t kExpected = 64;
    unarchiver.elements(stored, [&](PropertyList::Index element, std::size_t count) {
      if (value.empty()) value.reserve(std::min(count, kExpected));
      unarchiver.chargeBytes(Coding<std::vector<Element>>::kElementBytes);
      ArchiveCoding<Element>::decode(unarchiver, element, value.emplace_back());
    });
  }
};

/// The record's table of fields in the form that the unarchiver uses; compare kFieldDecoders.
template <ArchivedRecord Record>
inline constexpr auto kArchivedFields = []<std::size_t... I>(std::index_sequence<I...>) {
  return std::array<KeyedUnarchiver::Field, sizeof...(I)>{KeyedUnarchiver::Field{
      std::get<I>(Record::codedFields()).key,
      [](KeyedUnarchiver& unarchiver, PropertyList::Index stored, void* record) {
        auto& value = static_cast<Record*>(record)->*std::get<I>(Record::codedFields()).member;
        using Member = std::remove_reference_t<decltype(value)>;
        if constexpr (ArchivedObject<Member>) {
          const auto object = unarchiver.object(stored);
          if (object) ArchiveCoding<Member>::decode(unarchiver, *object, value);
        } else {
          ArchiveCoding<Member>::decode(unarchiver, stored, value);
        }
      },
  }...};
}
(std::make_index_sequence<std::tuple_size_v<decltype(Record::codedFields())>>{});

/// A record: an object of its class.
template <ArchivedRecord Record>
struct ArchiveCoding<Record> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const Record& record,
                                    const void* identity = nullptr) {
    const auto encodeField = [&](const auto& field) {
      const auto& value = record.*field.member;
      using Member = std::remove_cvref_t<decltype(value)>;
      archiver.member(field.key, underKey(field.key, [&] {
                        return ArchiveCoding<Member>::encode(archiver, value);
                      }));
    };
    const auto encodeFields = [&] {
      std::apply([&](const auto&... field) { (encodeField(field), ...); }, Record::codedFields());
    };
    return archiver.object(Record::archivedClassName, encodeFields, identity);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored, Record& record) {
    static_assert(kArchivedFields<Record>.size() <= KeyedUnarchiver::kMostFields);
    unarchiver.record(stored, Record::archivedClassName, kArchivedFields<Record>, &record);
  }
};

/// A shared record; null is nil.
template <ArchivedRecord Record>
struct ArchiveCoding<std::shared_ptr<Record>> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const std::shared_ptr<Record>& value) {
    if (value == nullptr) return archiver.null();
    // A record with a single owner is met only once.
    const void* const identity = value.use_count() == 1 ? nullptr : value.get();
    return ArchiveCoding<Record>::encode(archiver, *value, identity);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored,
                     std::shared_ptr<Record>& value) {
    const void* const type = &kArchivedFields<Record>;
    const bool isShared = unarchiver.isShared(stored);
    if (isShared) value = std::static_pointer_cast<Record>(unarchiver.sharedResult(stored, type));
    if (value != nullptr) return;
    const std::size_t expansion = unarchiver.expansion();
    unarchiver.chargeBytes(sizeof(Record));
    value = std::make_shared<Record>();
    ArchiveCoding<Record>::decode(unarchiver, stored, *value);
    if (isShared) unarchiver.keepSharedResult(stored, type, value, expansion);
  }
};

/// Encodes `value`, a record or a vector, as the root of a binary keyed archive. Throws
/// EncodingError.
template <ArchivedObject T>
std::string encodeKeyedArchive(const T& value) {
  KeyedArchiver archiver;
  return archiver.finish(ArchiveCoding<T>::encode(archiver, value));
}

/// Decodes the root of a keyed archive, in either form of property list, as a T. Throws
/// DecodingError; valueNotFound for a nil root.
template <ArchivedObject T>
T decodeKeyedArchive(std::string_view bytes) {
  const PropertyList list = readPropertyList(bytes);
  KeyedUnarchiver unarchiver(list);
  const auto root = unarchiver.object(unarchiver.root());
  if (!root) throw DecodingError::valueNotFound("an object");
  T value{};
  ArchiveCoding<T>::decode(unarchiver, *root, value);
  return value;
}

}  // namespace tavlen
