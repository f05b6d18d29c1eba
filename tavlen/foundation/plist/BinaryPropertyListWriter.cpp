#include "tavlen/foundation/plist/BinaryPropertyListWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <limits>
#include <string_view>

#include "tavlen/foundation/base/HashIndex.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

using Index = PropertyList::Index;

/// The smallest of 1, 2, 4 and 8 bytes that holds `value`, as the exponent of two that markers
/// store.
unsigned widthPower(std::uint64_t value) {
  unsigned power = 0;
  while (power < 3 && value >> (8U << power) != 0) ++power;
  return power;
}

std::size_t hashOf(const PropertyList::Scalar& scalar) {
  // The multiplication spreads small numbers, which archives contain many of, over the high bits.
  const std::uint64_t bits = (scalar.bits ^ std::uint64_t(scalar.kind) << 56) * 0x9E3779B97F4A7C15U;
  return static_cast<std::size_t>(bits ^ bits >> 32) ^ std::hash<std::string_view>()(scalar.bytes);
}

class Writer {
 public:
  explicit Writer(const PropertyList& list) : list_(list), numbers_(list.size(), kUnnumbered) {}

  std::string write() {
    numberObjects();
    referenceSize_ = std::size_t{1} << widthPower(order_.size());
    out_.reserve(list_.byteCount() + list_.referenceCount() * referenceSize_ + 9 * order_.size());
    out_ = "bplist00";
    std::vector<std::uint64_t> offsets;
    offsets.reserve(order_.size());
    for (const Index index : order_) {
      offsets.push_back(out_.size());
      appendObject(index);
    }
    const std::uint64_t tableOffset = out_.size();
    const std::size_t offsetSize = std::size_t{1} << widthPower(tableOffset);
    for (const std::uint64_t offset : offsets) appendNumber(offset, offsetSize);
    out_.append(6, '\0');
    out_ += static_cast<char>(offsetSize);
    out_ += static_cast<char>(referenceSize_);
    appendNumber(order_.size(), 8);
    appendNumber(0, 8);  // the root is object 0
    appendNumber(tableOffset, 8);
    return std::move(out_);
  }

 private:
  static constexpr Index kUnnumbered = std::numeric_limits<Index>::max();

  /// Numbers the objects in pre-order, with an explicit stack instead of recursion. An object is
  /// numbered when it is popped, so children are pushed in reverse.
  void numberObjects() {
    std::vector<Index> pending{list_.root()};
    while (!pending.empty()) {
      const Index index = pending.back();
      pending.pop_back();
      if (numbers_[index] != kUnnumbered) continue;
      const auto push = [&](Index child) {
        if (numbers_[child] == kUnnumbered) pending.push_back(child);
      };
      if (const auto array = list_.get<PropertyList::Array>(index)) {
        addObject(index);
        std::for_each(array->elements.rbegin(), array->elements.rend(), push);
      } else if (const auto dictionary = list_.get<PropertyList::Dictionary>(index)) {
        addObject(index);
        const auto members = dictionary->members;
        std::for_each(members.rbegin(), members.rend(),
                      [&](const auto& member) { push(member.value); });
        std::for_each(members.rbegin(), members.rend(),
                      [&](const auto& member) { push(member.key); });
      } else {
        addScalar(index);
      }
    }
  }

  void addObject(Index index) {
    numbers_[index] = static_cast<Index>(order_.size());
    order_.push_back(index);
  }

  /// Reuses the number of an equal scalar, if there is one.
  void addScalar(Index index) {
    const PropertyList::Scalar scalar = list_.scalar(index);
    if (scalar.kind == PropertyList::Kind::uid && scalar.bits < list_.size()) {
      return addUID(index, static_cast<std::size_t>(scalar.bits));
    }
    const std::size_t hash = hashOf(scalar);
    const Index equal =
        scalars_.find(hash, [&](Index other) { return list_.scalar(other) == scalar; });
    if (equal != HashIndex::kNone) {
      numbers_[index] = numbers_[equal];
    } else {
      scalars_.add(hash, index);
      addObject(index);
    }
  }

  void appendObject(Index index) {
    switch (list_.kind(index)) {  // frequent kinds first, without a std::visit
      case PropertyList::Kind::string:
        return append(list_.string(index));
      case PropertyList::Kind::uid:
        return append(*list_.get<PropertyList::UID>(index));
      case PropertyList::Kind::dictionary:
        return append(*list_.get<PropertyList::Dictionary>(index));
      default:
        std::visit([this](const auto& value) { append(value); }, list_.node(index));
    }
  }

  /// Numbers a UID by table look-up instead of hashing: half of the objects of an archive are UIDs,
  /// and their values are small.
  void addUID(Index index, std::size_t value) {
    if (uids_.empty()) uids_.resize(list_.size(), kUnnumbered);
    if (uids_[value] == kUnnumbered) {
      uids_[value] = index;
      addObject(index);
    } else {
      numbers_[index] = numbers_[uids_[value]];
    }
  }

  /// Appends the lowest `size` bytes of `value`, big-endian.
  void appendNumber(std::uint64_t value, std::size_t size) {
    std::array<char, 8> bytes{};
    for (std::size_t i = bytes.size(); i-- > 0; value >>= 8) bytes[i] = static_cast<char>(value);
    out_.append(bytes.data() + bytes.size() - size, size);
  }

  /// Appends the number `indexOf(part)` for each of `parts`.
  template <class Parts, class IndexOf>
  void appendReferences(const Parts& parts, const IndexOf& indexOf) {
    std::size_t place = out_.size();
    out_.resize(place + parts.size() * referenceSize_);
    for (const auto& part : parts) {
      const std::uint64_t number = numbers_[indexOf(part)];
      for (std::size_t i = referenceSize_; i-- > 0;) {
        out_[place++] = static_cast<char>(number >> (8 * i));
      }
    }
  }

  void appendMarker(unsigned high, unsigned low) { out_ += static_cast<char>(high << 4 | low); }

  void appendSized(unsigned high, std::size_t count) {
    if (count < 15) return appendMarker(high, static_cast<unsigned>(count));
    appendMarker(high, 15);
    append(static_cast<std::int64_t>(count));
  }

  void append(bool value) { appendMarker(0, value ? 9 : 8); }
  void append(std::int64_t value) {
    const unsigned power = value < 0 ? 3 : widthPower(static_cast<std::uint64_t>(value));
    appendMarker(1, power);
    appendNumber(static_cast<std::uint64_t>(value), std::size_t{1} << power);
  }
  void append(std::uint64_t value) {
    appendMarker(1, 4);
    appendNumber(0, 8);
    appendNumber(value, 8);
  }
  void append(double value) {
    appendMarker(2, 3);
    appendNumber(std::bit_cast<std::uint64_t>(value), 8);
  }
  void append(Date value) {
    appendMarker(3, 3);
    appendNumber(std::bit_cast<std::uint64_t>(value.secondsSinceReferenceDate), 8);
  }
  void append(PropertyList::Data value) {
    appendSized(4, value.bytes.size());
    out_ += value.bytes;
  }
  void append(std::string_view value) {
    if (isASCII(value)) {
      appendSized(5, value.size());
      out_ += value;
      return;
    }
    if (!isValidUTF8(value)) throw EncodingError::invalidValue("a string is not valid UTF-8");
    const std::u16string units = utf16FromUTF8(value);
    appendSized(6, units.size());
    for (const char16_t unit : units) appendNumber(unit, 2);
  }
  void append(PropertyList::UID value) {
    const std::size_t size = std::size_t{1} << widthPower(value.value);
    appendMarker(8, static_cast<unsigned>(size - 1));
    appendNumber(value.value, size);
  }
  void append(PropertyList::Array value) {
    appendSized(0xA, value.elements.size());
    appendReferences(value.elements, [](Index element) { return element; });
  }
  void append(PropertyList::Dictionary value) {
    appendSized(0xD, value.members.size());
    appendReferences(value.members, [](const auto& member) { return member.key; });
    appendReferences(value.members, [](const auto& member) { return member.value; });
  }

  const PropertyList& list_;
  std::vector<Index> numbers_;  ///< object numbers, by index in the list
  std::vector<Index> order_;    ///< the reverse: indices, by number
  HashIndex scalars_;           ///< the numbered scalars
  std::vector<Index> uids_;     ///< the numbered UIDs, by value
  std::size_t referenceSize_ = 1;
  std::string out_;
};

}  // namespace

std::string writeBinaryPropertyList(const PropertyList& list) { return Writer(list).write(); }

}  // namespace tavlen
