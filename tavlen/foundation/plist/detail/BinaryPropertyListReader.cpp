#include "tavlen/foundation/plist/detail/BinaryPropertyListReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

using Index = PropertyList::Index;

constexpr std::size_t kMagicSize = 8;
constexpr std::size_t kTrailerSize = 32;

/// Reads the format with its own names: 8 bytes of magic, the objects, the offset table at
/// `offsetTableOffset` with `numObjects` entries of `offsetIntSize` bytes, and the trailer.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  PropertyList read() {
    readTrailer();
    reserve();
    for (std::uint64_t i = 0; i < numObjects_; ++i) {
      position_ = objectOffset(i);
      const std::size_t start = position_;
      readObject();
      // Objects of a valid list do not overlap. Checking that bounds the table by the size of the
      // file.
      const std::size_t used = position_ - start;
      if (used > unread_) throw invalidPropertyList("Objects overlap.");
      unread_ -= used;
    }
    checkKeys();
    list_.setRoot(static_cast<Index>(topObject_));
    return std::move(list_);
  }

 private:
  /// The big-endian number of `size` bytes, from 1 to 8, at `place`. It loads eight bytes, which
  /// are always readable: the trailer follows all other numbers and itself ends in one of eight.
  std::uint64_t numberAt(std::size_t place, std::size_t size) const {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes_.data() + place, sizeof value);
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap64(value);
    return value >> (64 - 8 * size);
  }

  void readTrailer() {
    if (bytes_.size() < kMagicSize + kTrailerSize || !bytes_.starts_with("bplist0")) {
      throw invalidPropertyList("It is truncated.");
    }
    const std::size_t trailerStart = bytes_.size() - kTrailerSize;
    offsetIntSize_ = static_cast<std::size_t>(numberAt(trailerStart + 6, 1));
    objectRefSize_ = static_cast<std::size_t>(numberAt(trailerStart + 7, 1));
    numObjects_ = numberAt(trailerStart + 8, 8);
    topObject_ = numberAt(trailerStart + 16, 8);
    const std::uint64_t tableOffset = numberAt(trailerStart + 24, 8);
    const auto isWidth = [](std::size_t size) { return size >= 1 && size <= 8; };
    if (!isWidth(offsetIntSize_) || !isWidth(objectRefSize_) || tableOffset < kMagicSize ||
        tableOffset > trailerStart || topObject_ >= numObjects_ ||
        numObjects_ > (trailerStart - tableOffset) / offsetIntSize_ ||
        numObjects_ > std::numeric_limits<Index>::max()) {
      throw invalidPropertyList("Its trailer is malformed.");
    }
    objectsEnd_ = static_cast<std::size_t>(tableOffset);
    unread_ = objectsEnd_ - kMagicSize;
  }

  /// Reserves the most that the file can hold, up to a limit. Unused capacity costs no physical
  /// memory, and growing would copy.
  void reserve() {
    constexpr std::size_t kMost = std::size_t{16} << 20;
    const std::size_t references = unread_ / objectRefSize_;
    list_.reserve({static_cast<std::size_t>(numObjects_), std::min(unread_, kMost),
                   std::min(references, kMost / 4), std::min(references / 2, kMost / 8)});
  }

  std::size_t objectOffset(std::uint64_t index) const {
    const std::size_t entry = objectsEnd_ + static_cast<std::size_t>(index) * offsetIntSize_;
    const std::uint64_t offset = numberAt(entry, offsetIntSize_);
    if (offset < kMagicSize || offset >= objectsEnd_) {
      throw invalidPropertyList("An object's offset is out of range.");
    }
    return static_cast<std::size_t>(offset);
  }

  std::string_view take(std::uint64_t count) {
    if (count > objectsEnd_ - position_) throw invalidPropertyList("An object is truncated.");
    const std::string_view taken(bytes_.data() + position_, static_cast<std::size_t>(count));
    position_ += taken.size();
    return taken;
  }

  std::uint64_t takeNumber(std::size_t size) {
    if (size > objectsEnd_ - position_) throw invalidPropertyList("An object is truncated.");
    const std::uint64_t number = numberAt(position_, size);
    position_ += size;
    return number;
  }

  /// The count in a marker. 15 means that an integer object with the count follows.
  std::uint64_t readCount(unsigned low) {
    if (low != 15) return low;
    const auto marker = static_cast<unsigned>(takeNumber(1));
    if (marker < 0x10 || marker > 0x13) throw invalidPropertyList("A count is malformed.");
    return takeNumber(std::size_t{1} << (marker & 15U));
  }

  /// Checks that `count` units of `unit` bytes are left, without overflow.
  void checkCount(std::uint64_t count, std::size_t unit) const {
    const std::size_t left = objectsEnd_ - position_;
    if (count > left || count * unit > left) {  // the first keeps the product from overflowing
      throw invalidPropertyList("A count is out of range.");
    }
  }

  std::string_view takeUnits(std::uint64_t count, std::size_t unit) {
    checkCount(count, unit);
    return take(count * unit);
  }

  /// Adds the object at the position to the list.
  void readObject() {
    const auto marker = static_cast<unsigned>(takeNumber(1));
    const unsigned low = marker & 15U;
    switch (marker >> 4) {
      case 0x0:
        if (marker == 8 || marker == 9) return add(marker == 9);
        break;
      case 0x1:
        if (low <= 4) return readInteger(low);
        break;
      case 0x2:
        if (low == 2) {
          const auto bits = static_cast<std::uint32_t>(takeNumber(4));
          return add(double{std::bit_cast<float>(bits)});
        }
        if (low == 3) return add(std::bit_cast<double>(takeNumber(8)));
        break;
      case 0x3:
        if (low == 3) return add(Date{std::bit_cast<double>(takeNumber(8))});
        break;
      case 0x4:
        return add(PropertyList::Data{takeUnits(readCount(low), 1)});
      case 0x5:
        return readASCII(takeUnits(readCount(low), 1));
      case 0x6:
        return readUTF16(takeUnits(readCount(low), 2));
      case 0x8:
        if (low < 8) return add(PropertyList::UID{takeNumber(low + 1)});
        break;
      case 0xA:
        return readArray(readCount(low));
      case 0xD:
        return readDictionary(readCount(low));
      default:
        break;
    }
    throw invalidPropertyList("An object is of an unknown kind.");
  }

  void add(const PropertyList::Node& node) { list_.add(node); }

  /// Integers of 1, 2 and 4 bytes are unsigned. Those of 8 and 16 are signed; the latter must fit
  /// into 64 bits.
  void readInteger(unsigned power) {
    if (power < 4) return add(static_cast<std::int64_t>(takeNumber(std::size_t{1} << power)));
    const std::uint64_t high = takeNumber(8);
    const std::uint64_t low = takeNumber(8);
    if (high == 0) return add(low);
    const auto value = static_cast<std::int64_t>(low);
    if (high == std::numeric_limits<std::uint64_t>::max() && value < 0) return add(value);
    throw invalidPropertyList("An integer is out of range.");
  }

  void readASCII(std::string_view text) {
    if (!isASCII(text)) {
      throw invalidPropertyList("A string marked as ASCII is not ASCII.");
    }
    add(text);
  }

  void readUTF16(std::string_view units) {
    std::string text;
    if (!convertToUTF8(units, TextEncoding::utf16BigEndian, text)) {
      throw invalidPropertyList("A string is not well-formed UTF-16.");
    }
    add(text);
  }

  /// Calls `store(i, reference)` for each reference at the position.
  template <class Store>
  void readReferences(std::uint64_t count, const Store& store) {
    for (std::size_t i = 0; i < count; ++i, position_ += objectRefSize_) {
      const std::uint64_t index = numberAt(position_, objectRefSize_);
      if (index >= numObjects_) throw invalidPropertyList("A reference is out of range.");
      store(i, static_cast<Index>(index));
    }
  }

  void readArray(std::uint64_t count) {
    checkCount(count, objectRefSize_);
    elements_.resize(static_cast<std::size_t>(count));
    readReferences(count, [&](std::size_t i, Index element) { elements_[i] = element; });
    add(PropertyList::Array{elements_});
  }

  void readDictionary(std::uint64_t count) {
    checkCount(count, 2 * objectRefSize_);
    members_.resize(static_cast<std::size_t>(count));
    readReferences(count, [&](std::size_t i, Index key) { members_[i].key = key; });
    readReferences(count, [&](std::size_t i, Index value) { members_[i].value = value; });
    add(PropertyList::Dictionary{members_});
  }

  void checkKeys() const {
    for (const PropertyList::Member& member : list_.allMembers()) {
      if (list_.kind(member.key) != PropertyList::Kind::string) {
        throw invalidPropertyList("A key is not a string.");
      }
    }
  }

  std::string_view bytes_;
  std::size_t position_ = 0;
  std::size_t objectsEnd_ = 0;
  std::size_t unread_ = 0;
  std::size_t offsetIntSize_ = 0;
  std::size_t objectRefSize_ = 0;
  std::uint64_t numObjects_ = 0;
  std::uint64_t topObject_ = 0;
  /// Buffers for the container being read, reused to save allocations.
  std::vector<Index> elements_;
  std::vector<PropertyList::Member> members_;
  PropertyList list_;
};

}  // namespace

PropertyList readBinaryPropertyList(std::string_view bytes) { return Reader(bytes).read(); }

}  // namespace tavlen
