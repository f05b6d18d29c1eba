#include "tavlen/foundation/BinaryPropertyListReader.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "tavlen/foundation/Unicode.h"

namespace tavlen {

namespace {

using Index = PropertyList::Index;

constexpr std::size_t kMagicSize = 8;
constexpr std::size_t kTrailerSize = 32;

/// The big-endian number in `bytes`, which are eight at most.
std::uint64_t number(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

/// Layout, with the format's own names: 8 bytes of magic, the objects, the offset table at
/// `offsetTableOffset` with `numObjects` entries of `offsetIntSize` bytes, and the trailer.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  PropertyList read() {
    readTrailer();
    list_.reserve(static_cast<std::size_t>(numObjects_));
    for (std::uint64_t i = 0; i < numObjects_; ++i) {
      position_ = objectOffset(i);
      const std::size_t start = position_;
      readObject();
      // Objects of a proper list do not overlap; here that keeps what is read as small as the file.
      const std::size_t used = position_ - start;
      if (used > unread_) throw invalidPropertyList("Objects overlap.");
      unread_ -= used;
    }
    checkKeys();
    list_.setRoot(static_cast<Index>(topObject_));
    return std::move(list_);
  }

 private:
  void readTrailer() {
    if (bytes_.size() < kMagicSize + kTrailerSize || !bytes_.starts_with("bplist0")) {
      throw invalidPropertyList("It is cut short.");
    }
    const std::size_t trailerStart = bytes_.size() - kTrailerSize;
    const std::string_view trailer = bytes_.substr(trailerStart);
    offsetIntSize_ = static_cast<std::size_t>(number(trailer.substr(6, 1)));
    objectRefSize_ = static_cast<std::size_t>(number(trailer.substr(7, 1)));
    numObjects_ = number(trailer.substr(8, 8));
    topObject_ = number(trailer.substr(16, 8));
    const std::uint64_t tableOffset = number(trailer.substr(24, 8));
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

  std::size_t objectOffset(std::uint64_t index) const {
    const std::size_t entry = objectsEnd_ + static_cast<std::size_t>(index) * offsetIntSize_;
    const std::uint64_t offset = number(bytes_.substr(entry, offsetIntSize_));
    if (offset < kMagicSize || offset >= objectsEnd_) {
      throw invalidPropertyList("An object's offset is out of range.");
    }
    return static_cast<std::size_t>(offset);
  }

  std::string_view take(std::uint64_t count) {
    if (count > objectsEnd_ - position_) throw invalidPropertyList("An object is cut short.");
    const std::string_view taken = bytes_.substr(position_, static_cast<std::size_t>(count));
    position_ += taken.size();
    return taken;
  }

  /// The count of a marker; 15 means that an integer object holds it.
  std::uint64_t readCount(unsigned low) {
    if (low != 15) return low;
    const auto marker = static_cast<unsigned>(number(take(1)));
    if (marker < 0x10 || marker > 0x13) throw invalidPropertyList("A count is malformed.");
    return number(take(1ULL << (marker & 15U)));
  }

  /// The bytes of `count` units of `unit` bytes, without an overflow for any count.
  std::string_view takeUnits(std::uint64_t count, std::size_t unit) {
    if (count > objectsEnd_) throw invalidPropertyList("A count is out of range.");
    return take(count * unit);
  }

  /// Adds the object that stands here to the list.
  void readObject() {
    const auto marker = static_cast<unsigned>(number(take(1)));
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
          const auto bits = static_cast<std::uint32_t>(number(take(4)));
          return add(double{std::bit_cast<float>(bits)});
        }
        if (low == 3) return add(std::bit_cast<double>(number(take(8))));
        break;
      case 0x3:
        if (low == 3) return add(Date{std::bit_cast<double>(number(take(8)))});
        break;
      case 0x4:
        return add(PropertyList::Data{takeUnits(readCount(low), 1)});
      case 0x5:
        return readASCII(takeUnits(readCount(low), 1));
      case 0x6:
        return readUTF16(takeUnits(readCount(low), 2));
      case 0x8:
        if (low < 8) return add(PropertyList::UID{number(take(low + 1))});
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

  /// 1, 2 and 4 bytes are unsigned, 8 are signed, 16 are signed again and hold what 64 bits can.
  void readInteger(unsigned power) {
    if (power < 4) return add(static_cast<std::int64_t>(number(take(1ULL << power))));
    const std::uint64_t high = number(take(8));
    const std::uint64_t low = number(take(8));
    if (high == 0) return add(low);
    const auto value = static_cast<std::int64_t>(low);
    if (high == std::numeric_limits<std::uint64_t>::max() && value < 0) return add(value);
    throw invalidPropertyList("An integer is out of range.");
  }

  void readASCII(std::string_view text) {
    if (std::any_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) != 0; })) {
      throw invalidPropertyList("A string is not ASCII, as its object says.");
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

  Index reference(std::string_view references, std::size_t i) const {
    const std::uint64_t index = number(references.substr(i * objectRefSize_, objectRefSize_));
    if (index >= numObjects_) throw invalidPropertyList("A reference is out of range.");
    return static_cast<Index>(index);
  }

  void readArray(std::uint64_t count) {
    const std::string_view references = takeUnits(count, objectRefSize_);
    elements_.clear();
    for (std::size_t i = 0; i < count; ++i) elements_.push_back(reference(references, i));
    add(PropertyList::Array{elements_});
  }

  void readDictionary(std::uint64_t count) {
    const std::string_view keys = takeUnits(count, objectRefSize_);
    const std::string_view values = takeUnits(count, objectRefSize_);
    members_.clear();
    for (std::size_t i = 0; i < count; ++i) {
      members_.push_back({reference(keys, i), reference(values, i)});
    }
    add(PropertyList::Dictionary{members_});
  }

  void checkKeys() const {
    for (Index i = 0; i < list_.size(); ++i) {
      const auto dictionary = list_.get<PropertyList::Dictionary>(i);
      if (!dictionary) continue;
      for (const PropertyList::Member& member : dictionary->members) {
        if (list_.kind(member.key) != PropertyList::Kind::string) {
          throw invalidPropertyList("A key is not a string.");
        }
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
  /// Of the container that is being read.
  std::vector<Index> elements_;
  std::vector<PropertyList::Member> members_;
  PropertyList list_;
};

}  // namespace

PropertyList readBinaryPropertyList(std::string_view bytes) { return Reader(bytes).read(); }

}  // namespace tavlen
