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

/// The big-endian number in `bytes`. Compilers make one load of it when they know the size.
template <std::size_t Size>
std::uint64_t fixedNumber(const char* bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < Size; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

/// The same for eight bytes at the most.
std::uint64_t number(std::string_view bytes) {
  switch (bytes.size()) {
    case 1:
      return fixedNumber<1>(bytes.data());
    case 2:
      return fixedNumber<2>(bytes.data());
    case 4:
      return fixedNumber<4>(bytes.data());
    case 8:
      return fixedNumber<8>(bytes.data());
    default: {
      std::uint64_t value = 0;
      for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
      return value;
    }
  }
}

/// Layout, with the format's own names: 8 bytes of magic, the objects, the offset table at
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

  /// What the file can hold at the most, up to a limit: room that is not used is not touched, and
  /// room that is there is not copied from one place to the next.
  void reserve() {
    constexpr std::size_t kMost = std::size_t{16} << 20;
    const std::size_t references = unread_ / objectRefSize_;
    list_.reserve({static_cast<std::size_t>(numObjects_), std::min(unread_, kMost),
                   std::min(references, kMost / 4), std::min(references / 2, kMost / 8)});
  }

  std::size_t objectOffset(std::uint64_t index) const {
    const std::size_t entry = objectsEnd_ + static_cast<std::size_t>(index) * offsetIntSize_;
    const std::uint64_t offset = number({bytes_.data() + entry, offsetIntSize_});
    if (offset < kMagicSize || offset >= objectsEnd_) {
      throw invalidPropertyList("An object's offset is out of range.");
    }
    return static_cast<std::size_t>(offset);
  }

  std::string_view take(std::uint64_t count) {
    if (count > objectsEnd_ - position_) throw invalidPropertyList("An object is cut short.");
    const std::string_view taken(bytes_.data() + position_, static_cast<std::size_t>(count));
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

  /// `count` units of `unit` bytes must be there. Nothing overflows for any count.
  void checkCount(std::uint64_t count, std::size_t unit) const {
    if (count > (objectsEnd_ - position_) / unit) {
      throw invalidPropertyList("A count is out of range.");
    }
  }

  std::string_view takeUnits(std::uint64_t count, std::size_t unit) {
    checkCount(count, unit);
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
    if (!isASCII(text)) {
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

  /// Calls `store(i, reference)` for each of the references, which are `Size` bytes wide.
  template <std::size_t Size, class Store>
  void storeReferences(std::string_view references, const Store& store) const {
    for (std::size_t i = 0; i < references.size() / Size; ++i) {
      const std::uint64_t index = fixedNumber<Size>(references.data() + i * Size);
      if (index >= numObjects_) throw invalidPropertyList("A reference is out of range.");
      store(i, static_cast<Index>(index));
    }
  }

  template <class Store>
  void readReferences(std::uint64_t count, const Store& store) {
    const std::string_view references = takeUnits(count, objectRefSize_);
    switch (objectRefSize_) {
      case 1:
        return storeReferences<1>(references, store);
      case 2:
        return storeReferences<2>(references, store);
      case 3:
        return storeReferences<3>(references, store);
      case 4:
        return storeReferences<4>(references, store);
      case 5:
        return storeReferences<5>(references, store);
      case 6:
        return storeReferences<6>(references, store);
      case 7:
        return storeReferences<7>(references, store);
      default:
        return storeReferences<8>(references, store);
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
