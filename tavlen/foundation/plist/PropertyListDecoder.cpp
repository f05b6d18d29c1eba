#include "tavlen/foundation/plist/PropertyListDecoder.h"

#include <cmath>
#include <limits>
#include <unordered_map>

namespace tavlen {

namespace {

using Index = PropertyList::Index;

constexpr std::string_view kNull = "$null";

/// `value` as an Integer if it is whole and in range.
template <class Integer>
std::optional<Integer> exactly(double value) {
  // The largest values round up as doubles, so the exclusive bound is the next power of two.
  constexpr double kLimit = std::is_signed_v<Integer> ? 0x1p63 : 0x1p64;
  const bool fits = value >= (std::is_signed_v<Integer> ? -kLimit : 0) && value < kLimit;
  if (!fits || std::trunc(value) != value) return std::nullopt;
  return static_cast<Integer>(value);
}

}  // namespace

/// RAII nesting counter. Restores the decoder's position when the container ends.
class PropertyListDecoder::Nesting {
 public:
  explicit Nesting(PropertyListDecoder& decoder) : decoder_(decoder), container_(decoder.here_) {
    if (decoder_.depth_ == kDeepest) {
      throw DecodingError::dataCorrupted("nested deeper than " + std::to_string(kDeepest) +
                                         " containers");
    }
    ++decoder_.depth_;
  }
  ~Nesting() {
    decoder_.here_ = container_;
    --decoder_.depth_;
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

  void moveTo(Index index) { decoder_.here_ = index; }

 private:
  PropertyListDecoder& decoder_;
  Index container_;
};

bool PropertyListDecoder::isNull() const {
  return list_.kind(here_) == PropertyList::Kind::string && list_.string(here_) == kNull;
}

void PropertyListDecoder::failMismatch(std::string_view expected) const {
  if (isNull()) throw DecodingError::valueNotFound(expected);
  throw DecodingError::typeMismatch(expected, description(list_.kind(here_)));
}

template <class T>
T PropertyListDecoder::require(std::string_view expected) {
  budget_.chargeVisits(1);
  const std::optional<T> value = list_.get<T>(here_);
  if (!value || isNull()) failMismatch(expected);
  return *value;
}

bool PropertyListDecoder::null() {
  budget_.chargeVisits(1);
  return isNull();
}

bool PropertyListDecoder::boolean() { return require<bool>("a boolean"); }

template <class Integer>
Integer PropertyListDecoder::wholeNumber() {
  budget_.chargeVisits(1);
  std::optional<Integer> value;
  if (const auto signedValue = list_.get<std::int64_t>(here_)) {
    if (std::in_range<Integer>(*signedValue)) value = static_cast<Integer>(*signedValue);
  } else if (const auto unsignedValue = list_.get<std::uint64_t>(here_)) {
    if (std::in_range<Integer>(*unsignedValue)) value = static_cast<Integer>(*unsignedValue);
  } else if (const auto realValue = list_.get<double>(here_)) {
    value = exactly<Integer>(*realValue);
  } else {
    failMismatch("an integer");
  }
  if (!value) {
    throw DecodingError::dataCorrupted(std::is_signed_v<Integer>
                                           ? "the number is not a signed 64-bit integer"
                                           : "the number is not an unsigned 64-bit integer");
  }
  return *value;
}

std::int64_t PropertyListDecoder::integer() { return wholeNumber<std::int64_t>(); }

std::uint64_t PropertyListDecoder::unsignedInteger() { return wholeNumber<std::uint64_t>(); }

double PropertyListDecoder::real() {
  budget_.chargeVisits(1);
  if (const auto value = list_.get<std::int64_t>(here_)) return static_cast<double>(*value);
  if (const auto value = list_.get<std::uint64_t>(here_)) return static_cast<double>(*value);
  return require<double>("a number");
}

std::string PropertyListDecoder::string() {
  return std::string(budget_.chargedString(require<std::string_view>("a string")));
}

Date PropertyListDecoder::date() { return require<Date>("a date"); }

void PropertyListDecoder::record(std::span<const FieldDecoder> fields, void* record) {
  const auto members = require<PropertyList::Dictionary>("a dictionary").members;
  budget_.chargeVisits(members.size());
  std::vector<std::optional<Index>> values(fields.size());
  for (const PropertyList::Member& member : members) {
    const std::string_view key = list_.string(member.key);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].key == key) values[i] = member.value;
    }
  }
  Nesting nesting(*this);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (!values[i]) {
      if (fields[i].required) throw DecodingError::keyNotFound(fields[i].key);
      continue;
    }
    nesting.moveTo(*values[i]);
    underKey(fields[i].key, [&] { fields[i].decode(*this, record); });
  }
}

void PropertyListDecoder::members(FunctionRef<void(std::string_view key)> member) {
  const auto members = require<PropertyList::Dictionary>("a dictionary").members;
  budget_.chargeVisits(2 * members.size());
  constexpr std::size_t kEntryBytes = 64;  // a cycle opens many of these tables
  std::unordered_map<std::string_view, std::size_t> lastOf;
  for (std::size_t i = 0; i < members.size(); ++i) {
    // Charged here, because hashing reads the text, and callers copy it.
    const std::string_view key = budget_.chargedText(list_.string(members[i].key));
    if (lastOf.insert_or_assign(key, i).second) budget_.chargeBytes(kEntryBytes);
  }
  Nesting nesting(*this);
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::string_view key = list_.string(members[i].key);
    if (lastOf[key] != i) continue;
    nesting.moveTo(members[i].value);
    underKey(key, [&] { member(key); });
  }
}

void PropertyListDecoder::elements(FunctionRef<void()> element) {
  const auto elements = require<PropertyList::Array>("an array").elements;
  budget_.chargeVisits(elements.size());
  Nesting nesting(*this);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    nesting.moveTo(elements[i]);
    underIndex(i, element);
  }
}

std::string_view PropertyListDecoder::peekString(std::string_view key) {
  budget_.chargeVisits(require<PropertyList::Dictionary>("a dictionary").members.size());
  const std::optional<Index> value = list_.find(here_, key);
  if (!value) throw DecodingError::keyNotFound(key);
  Nesting nesting(*this);
  nesting.moveTo(*value);
  return underKey(key, [this]() -> std::string_view {
    return budget_.chargedText(require<std::string_view>("a string"));
  });
}

bool PropertyListDecoder::attempt(FunctionRef<void()> read) {
  try {
    read();
    return true;
  } catch (const DecodingError&) {
    return false;  // the nesting counters have restored the position
  }
}

}  // namespace tavlen
