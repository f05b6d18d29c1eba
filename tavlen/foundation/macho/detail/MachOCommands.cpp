#include "tavlen/foundation/macho/detail/MachOCommands.h"

#include <algorithm>
#include <string_view>

#include "tavlen/foundation/macho/detail/ByteCursor.h"

namespace tavlen {

namespace {

constexpr std::size_t kHeaderSize = 32;
/// Large apps have some 20 kB.
constexpr std::uint32_t kMostBytes = std::uint32_t{1} << 20;
constexpr std::string_view kTable = "the load commands";

/// The numbers of the commands, as in <mach-o/loader.h>.
enum class Number : std::uint32_t {
  loadDylib = 0x0C,
  ownDylib = 0x0D,
  segment = 0x19,
  lazyLoadDylib = 0x20,
  dyldInfo = 0x22,
  minimumMacOS = 0x24,
  minimumIOS = 0x25,
  encryption = 0x2C,
  minimumTVOS = 0x2F,
  minimumWatchOS = 0x30,
  build = 0x32,
  loadWeakDylib = 0x80000018,
  runPath = 0x8000001C,
  reexportDylib = 0x8000001F,
  dyldInfoOnly = 0x80000022,
  loadUpwardDylib = 0x80000023,
  chainedFixups = 0x80000034,
};

enum Platform : std::uint32_t { macOS = 1, iOS = 2, tvOS = 3, watchOS = 4 };

/// Reads one command after the other into the result.
class CommandReader {
 public:
  CommandReader(MachOCommands& commands, const FilePages& image)
      : commands_(commands), imageSize_(image.size()) {}

  void read(Number number, std::string_view command) {
    ByteCursor cursor(command, kTable);
    cursor.bytes(kCommandStart);
    switch (number) {
      case Number::segment:
        return readSegment(cursor);
      case Number::ownDylib:
        commands_.installName = nameIn(command, cursor);
        return;
      case Number::loadDylib:
      case Number::lazyLoadDylib:
      case Number::reexportDylib:
      case Number::loadUpwardDylib:
      case Number::loadWeakDylib:
        commands_.libraries.push_back({nameIn(command, cursor), number == Number::loadWeakDylib});
        return;
      case Number::runPath:
        commands_.runPaths.push_back(nameIn(command, cursor));
        return;
      case Number::dyldInfo:
      case Number::dyldInfoOnly:
        cursor.bytes(sizeof(MachOCommands::Range));  // the rebases
        commands_.binds = readRange(cursor);
        return;
      case Number::chainedFixups:
        commands_.chainedFixups = readRange(cursor);
        return;
      case Number::encryption:
        cursor.bytes(sizeof(MachOCommands::Range));
        commands_.isEncrypted |= cursor.number<std::uint32_t>() != 0;
        return;
      case Number::build:
        commands_.platform = cursor.number<std::uint32_t>();
        commands_.minimumOS = cursor.number<std::uint32_t>();
        return;
      case Number::minimumMacOS:
        return readMinimum(macOS, cursor);
      case Number::minimumIOS:
        return readMinimum(iOS, cursor);
      case Number::minimumTVOS:
        return readMinimum(tvOS, cursor);
      case Number::minimumWatchOS:
        return readMinimum(watchOS, cursor);
    }
  }

  static constexpr std::size_t kCommandStart = 8;  // its number and size

 private:
  static MachOCommands::Range readRange(ByteCursor& cursor) {
    const auto offset = cursor.number<std::uint32_t>();
    return {offset, cursor.number<std::uint32_t>()};
  }

  /// The text whose place in `command` is the next number.
  static std::string nameIn(std::string_view command, ByteCursor& cursor) {
    const auto offset = cursor.number<std::uint32_t>();
    if (offset > command.size()) cursor.fail("have a name outside of its command");
    const std::string_view name = command.substr(offset);
    return std::string(name.substr(0, name.find('\0')));
  }

  void readMinimum(Platform platform, ByteCursor& cursor) {
    if (commands_.platform != 0) return;  // the newer command tells more
    commands_.platform = platform;
    commands_.minimumOS = cursor.number<std::uint32_t>();
  }

  void readSegment(ByteCursor& cursor) {
    constexpr std::size_t kNameSize = 16;
    constexpr std::size_t kProtections = 8;
    constexpr std::size_t kSectionRest = 32;  // after the section's size
    cursor.bytes(kNameSize);
    const auto address = cursor.number<std::uint64_t>();
    const auto sizeInMemory = cursor.number<std::uint64_t>();
    const auto offset = cursor.number<std::uint64_t>();
    const auto sizeInFile = cursor.number<std::uint64_t>();
    addSegment(address, offset, std::min(sizeInMemory, sizeInFile));
    cursor.bytes(kProtections);
    const auto count = cursor.number<std::uint32_t>();
    cursor.number<std::uint32_t>();  // flags
    for (std::uint32_t i = 0; i < count; ++i) {
      MachOImage::Section section;
      const std::string_view name = cursor.bytes(kNameSize);
      section.name = name.substr(0, name.find('\0'));
      cursor.bytes(kNameSize);
      section.address = cursor.number<std::uint64_t>();
      section.size = cursor.number<std::uint64_t>();
      cursor.bytes(kSectionRest);
      commands_.sections.push_back(std::move(section));
    }
  }

  void addSegment(std::uint64_t address, std::uint64_t offset, std::uint64_t size) {
    const std::uint32_t index = segmentCount_++;
    if (offset >= imageSize_ || size == 0) return;
    const std::uint64_t available = std::min(size, imageSize_ - offset);
    // The last address of the address space is the last one of a segment.
    commands_.segments.push_back({address, std::min(available, 0 - address - 1), offset, index});
    if (offset == 0) commands_.base = address;
  }

  MachOCommands& commands_;
  std::uint64_t imageSize_;
  std::uint32_t segmentCount_ = 0;
};

}  // namespace

MachOCommands MachOCommands::read(FilePages& image) {
  constexpr std::size_t kCountOffset = 16;
  constexpr std::size_t kAlignment = 8;
  if (image.size() < kHeaderSize) throw MachOImage::Error::damaged("the header ends too early");
  const std::string_view header = image.bytes(0, kHeaderSize);
  const auto count = littleEndian<std::uint32_t>(header, kCountOffset);
  const auto size = littleEndian<std::uint32_t>(header, kCountOffset + sizeof count);
  const std::size_t available = std::min<std::size_t>(image.size() - kHeaderSize, kMostBytes);
  if (size > available) throw MachOImage::Error::damaged("the load commands are cut off");
  ByteCursor cursor(image.bytes(kHeaderSize, size), kTable);
  MachOCommands commands;
  CommandReader reader(commands, image);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t start = cursor.position();
    const Number number{cursor.number<std::uint32_t>()};
    const auto commandSize = cursor.number<std::uint32_t>();
    if (commandSize < CommandReader::kCommandStart || commandSize % kAlignment != 0) {
      cursor.fail("have a command of an impossible size");
    }
    cursor.bytes(commandSize - CommandReader::kCommandStart);
    reader.read(number, image.bytes(kHeaderSize + start, commandSize));
  }
  return commands;
}

}  // namespace tavlen
