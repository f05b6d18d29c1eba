#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavlen::macho {

/// The bytes of a thin 64-bit image that a linker made, to be changed. What is not there throws
/// std::runtime_error: a test image without it would test nothing.
class ImageBytes {
 public:
  // Load commands.
  static constexpr std::uint32_t kSegment = 0x19;
  static constexpr std::uint32_t kEncryption = 0x2C;
  static constexpr std::uint32_t kDyldInfo = 0x80000022;
  static constexpr std::uint32_t kExports = 0x80000033;
  static constexpr std::uint32_t kChainedFixups = 0x80000034;
  // Offsets in the header.
  static constexpr std::size_t kSubtypeAt = 8;
  static constexpr std::size_t kFileTypeAt = 12;

  struct Segment {
    std::size_t command;  ///< the offset of its load command
    std::uint64_t address, memorySize, fileOffset, fileSize;
  };

  explicit ImageBytes(std::string bytes) : bytes_(std::move(bytes)) {}

  const std::string& bytes() const { return bytes_; }

  template <class Number>
  Number get(std::size_t offset) const {
    Number value;
    requireRange(offset, sizeof value);
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
  }
  template <class Number>
  void set(std::size_t offset, Number value) {
    requireRange(offset, sizeof value);
    std::memcpy(bytes_.data() + offset, &value, sizeof value);
  }
  std::string_view text(std::size_t offset) const { return bytes_.c_str() + offset; }
  std::string_view part(std::size_t offset, std::size_t size) const {
    requireRange(offset, size);
    return std::string_view(bytes_).substr(offset, size);
  }

  /// The offset of the first load command of that number.
  std::size_t command(std::uint32_t number) const;
  /// The segments in file order.
  std::vector<Segment> segments() const;
  /// The address of the header.
  std::uint64_t base() const { return segmentAtOffset(0).address; }

  /// Removes the first load command of that number.
  void removeCommand(std::uint32_t number);
  /// Appends a load command of these words after its number and size.
  void addCommand(std::uint32_t number, const std::vector<std::uint32_t>& words);
  /// Appends bytes to the last segment, which is that of the linker's own data; returns their
  /// offset.
  std::uint32_t appendData(std::string_view data);

 private:
  void requireRange(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) {
      throw std::runtime_error("the image ends before what is to be changed");
    }
  }
  Segment segmentAtOffset(std::uint64_t offset) const;
  std::size_t commandsEnd() const;
  void setCommandsEnd(std::size_t end, std::uint32_t count);

  std::string bytes_;
};

/// The lowest multiple of `unit` from `value` on.
constexpr std::uint64_t roundedUp(std::uint64_t value, std::uint64_t unit) {
  return (value + unit - 1) / unit * unit;
}

/// `value` as bytes.
template <class Number>
std::string bytesOf(Number value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace tavlen::macho
