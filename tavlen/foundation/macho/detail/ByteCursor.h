#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/macho/MachOImage.h"

namespace tavlen {

/// Reads a table of an image from its beginning on, and never beyond its end.
class ByteCursor {
 public:
  /// `table` names the bytes in errors, such as "the load commands"; a constant.
  ByteCursor(std::string_view bytes, std::string_view table) : bytes_(bytes), table_(table) {}

  /// The number of bytes before the next one.
  std::size_t position() const { return position_; }
  /// Whether all bytes are read.
  bool isAtEnd() const { return position_ == bytes_.size(); }

  /// The next `count` bytes. Throws MachOImage::Error::damaged().
  std::string_view bytes(std::size_t count) {
    if (count > bytes_.size() - position_) fail("end too early");
    const std::string_view next = bytes_.substr(position_, count);
    position_ += count;
    return next;
  }
  /// The next number, which is little-endian. Throws as above.
  template <class Unsigned>
  Unsigned number() {
    return littleEndian<Unsigned>(bytes(sizeof(Unsigned)), 0);
  }
  /// The next text; its NUL is skipped. Throws as above.
  std::string_view text() {
    const std::size_t end = bytes_.find('\0', position_);
    if (end == std::string_view::npos) fail("have a text without an end");
    const std::string_view text = bytes_.substr(position_, end - position_);
    position_ = end + 1;
    return text;
  }
  /// The next unsigned number in groups of seven bits, the lowest first (ULEB128). Bits above 64
  /// are dropped: negative steps are written so. Throws as above, and for more than ten bytes.
  std::uint64_t groupedNumber() {
    constexpr unsigned kGroup = 7;
    constexpr unsigned kMostBits = 70;
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < kMostBits; shift += kGroup) {
      const auto byte = number<std::uint8_t>();
      if (shift < 64) value |= std::uint64_t{byte & 0x7FU} << shift;
      if ((byte & 0x80U) == 0) return value;
    }
    fail("have a number of more than ten bytes");
  }
  /// Throws MachOImage::Error::damaged() with the name of the bytes and `fault`.
  [[noreturn]] void fail(std::string_view fault) const {
    throw MachOImage::Error::damaged(std::string(table_) + " " + std::string(fault));
  }

 private:
  std::string_view bytes_;
  std::string_view table_;
  std::size_t position_ = 0;
};

}  // namespace tavlen
