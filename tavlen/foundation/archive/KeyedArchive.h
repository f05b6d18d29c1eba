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

/// Records in keyed archives, by the same table as in every other format.
///
/// A record names its class, `static constexpr std::string_view archivedClassName`. Every field is
/// written, an absent one as nil; when reading, an absent or nil field is empty, whether the table
/// requires it or not, as on the platform. A std::shared_ptr to a record keeps its identity: what
/// is shared is written once and is shared again after reading.
namespace tavlen {

template <class T>
concept ArchivedRecord = CodedRecord<T> && requires {
  { T::archivedClassName } -> std::convertible_to<std::string_view>;
};

/// The archived form of one type: `encode(archiver, value)`, which gives what stands under a key,
/// and `decode(unarchiver, stored, value&)`, with `value` as it was made. `stored` is what stands
/// under the key, or for an object that object itself, which is not nil.
template <class T>
struct ArchiveCoding;

/// Texts, arrays, records: what stands under a key is a reference. Arrays hold nothing else.
template <class T>
concept ArchivedObject = ArchiveCoding<T>::isObject;

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
    // Room for more is made while they come: each may be a mere reference to the same nothing.
    constexpr std::size_t kExpected = 64;
    unarchiver.elements(stored, [&](PropertyList::Index element, std::size_t count) {
      if (value.empty()) value.reserve(std::min(count, kExpected));
      unarchiver.chargeBytes(Coding<std::vector<Element>>::kElementBytes);
      ArchiveCoding<Element>::decode(unarchiver, element, value.emplace_back());
    });
  }
};

/// The record's table in the form that the unarchiver walks.
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

template <ArchivedRecord Record>
struct ArchiveCoding<std::shared_ptr<Record>> {
  static constexpr bool isObject = true;
  static PropertyList::Index encode(KeyedArchiver& archiver, const std::shared_ptr<Record>& value) {
    if (value == nullptr) return archiver.null();
    // Whoever has one owner only is met once.
    const void* const identity = value.use_count() == 1 ? nullptr : value.get();
    return ArchiveCoding<Record>::encode(archiver, *value, identity);
  }
  static void decode(KeyedUnarchiver& unarchiver, PropertyList::Index stored,
                     std::shared_ptr<Record>& value) {
    const void* const type = &kArchivedFields<Record>;
    const bool isShared = unarchiver.isShared(stored);
    if (isShared) value = std::static_pointer_cast<Record>(unarchiver.made(stored, type));
    if (value != nullptr) return;
    unarchiver.chargeBytes(sizeof(Record));
    value = std::make_shared<Record>();
    ArchiveCoding<Record>::decode(unarchiver, stored, *value);
    if (isShared) unarchiver.made(stored, type) = value;
  }
};

/// A keyed archive, in binary, whose root is `value`: a record or a vector. Throws EncodingError.
template <ArchivedObject T>
std::string encodeKeyedArchive(const T& value) {
  KeyedArchiver archiver;
  return archiver.finish(ArchiveCoding<T>::encode(archiver, value));
}

/// The root of a keyed archive of either form, as a T. Throws DecodingError; a root that is nil is
/// valueNotFound.
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
