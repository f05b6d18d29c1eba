#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/Decoder.h"
#include "tavlen/foundation/plist/PropertyList.h"
#include "tavlen/foundation/plist/PropertyListSerialization.h"
#include "tavlen/foundation/plist/SharedReferenceBudget.h"

namespace tavlen {

/// Decodes from a table by the platform's rules: an integer may be read from a real that is whole,
/// a real from any integer, a boolean only from a boolean; the string "$null" is a null; the last
/// of equal keys wins.
///
/// A record's fields are looked up in the order of its field table, and the first one that fails
/// ends the decoding. `members` follows the stored order. Errors of numbers contain their path.
///
/// Beyond its limits it throws DecodingError::dataCorrupted: `kDeepest` nested containers (which
/// ends a cycle) and SharedReferenceBudget. Threads: one object one thread at a time.
class TAVLEN_API PropertyListDecoder final : public Decoder {
 public:
  /// Maximum nesting of containers.
  static constexpr std::size_t kDeepest = limits::kPropertyListDepth;

  /// Starts at the root. Keeps a reference to `list`, which must not be empty and must outlive it.
  explicit PropertyListDecoder(const PropertyList& list)
      : list_(list), here_(list.root()), budget_(list) {}

  bool null() override;
  bool boolean() override;
  std::int64_t integer() override;
  std::uint64_t unsignedInteger() override;
  double real() override;
  std::string string() override;
  Date date() override;
  void record(std::span<const FieldDecoder> fields, void* record) override;
  void members(FunctionRef<void(std::string_view key)> member) override;
  void elements(FunctionRef<void()> element) override;
  void chargeMemory(std::size_t bytes) override { budget_.chargeBytes(bytes); }
  std::string_view peekString(std::string_view key) override;
  bool attempt(FunctionRef<void()> read) override;

 private:
  class Nesting;

  /// The current value, which must be a T; `expected` names it in the error.
  template <class T>
  T require(std::string_view expected);
  template <class Integer>
  Integer wholeNumber();
  bool isNull() const;
  [[noreturn]] void failMismatch(std::string_view expected) const;

  const PropertyList& list_;
  PropertyList::Index here_;
  std::size_t depth_ = 0;
  SharedReferenceBudget budget_;
};

/// Decodes a property list of either form as a T. Throws DecodingError; its path is empty when
/// `bytes` are not a property list.
template <class T>
T decodePropertyList(std::string_view bytes) {
  const PropertyList list = readPropertyList(bytes);
  PropertyListDecoder decoder(list);
  T value{};
  decode(decoder, value);
  return value;
}

}  // namespace tavlen
