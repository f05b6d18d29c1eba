#include "tests/macho/copies/ImageBytes.h"

namespace tavlen::macho {

namespace {

constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kCountAt = 16;
constexpr std::size_t kCommandsSizeAt = 20;
constexpr std::uint64_t kPage = 0x4000;

}  // namespace

std::size_t ImageBytes::commandsEnd() const {
  return kHeaderSize + get<std::uint32_t>(kCommandsSizeAt);
}

void ImageBytes::setCommandsEnd(std::size_t end, std::uint32_t count) {
  set(kCommandsSizeAt, static_cast<std::uint32_t>(end - kHeaderSize));
  set(kCountAt, count);
}

std::size_t ImageBytes::command(std::uint32_t number) const {
  std::size_t at = kHeaderSize;
  while (at < commandsEnd() && get<std::uint32_t>(at) != number) at += get<std::uint32_t>(at + 4);
  if (at >= commandsEnd()) throw std::runtime_error("the image lacks a load command");
  return at;
}

std::vector<ImageBytes::Segment> ImageBytes::segments() const {
  std::vector<Segment> segments;
  for (std::size_t at = kHeaderSize; at < commandsEnd(); at += get<std::uint32_t>(at + 4)) {
    if (get<std::uint32_t>(at) != kSegment) continue;
    segments.push_back({at, get<std::uint64_t>(at + 24), get<std::uint64_t>(at + 32),
                        get<std::uint64_t>(at + 40), get<std::uint64_t>(at + 48)});
  }
  return segments;
}

ImageBytes::Segment ImageBytes::segmentAtOffset(std::uint64_t offset) const {
  for (const Segment& each : segments()) {
    if (offset >= each.fileOffset && offset - each.fileOffset < each.fileSize) return each;
  }
  throw std::runtime_error("no segment maps an offset");
}

void ImageBytes::removeCommand(std::uint32_t number) {
  const std::size_t at = command(number);
  const std::uint32_t size = get<std::uint32_t>(at + 4);
  const std::size_t end = commandsEnd();
  bytes_.erase(at, size);
  bytes_.insert(end - size, size, '\0');
  setCommandsEnd(end - size, get<std::uint32_t>(kCountAt) - 1);
}

void ImageBytes::addCommand(std::uint32_t number, const std::vector<std::uint32_t>& words) {
  const std::size_t at = commandsEnd();
  const std::size_t size = 8 + 4 * words.size();
  // The linker was told to leave room in front of the first section.
  if (part(at, size) != std::string(size, '\0')) throw std::runtime_error("no room for a command");
  set(at, number);
  set(at + 4, static_cast<std::uint32_t>(size));
  std::memcpy(bytes_.data() + at + 8, words.data(), 4 * words.size());
  setCommandsEnd(at + size, get<std::uint32_t>(kCountAt) + 1);
}

std::uint32_t ImageBytes::appendData(std::string_view data) {
  bytes_.resize(roundedUp(bytes_.size(), 8));
  const std::size_t offset = bytes_.size();
  bytes_ += data;
  const Segment last = segments().back();
  const std::uint64_t size = bytes_.size() - last.fileOffset;
  set(last.command + 32, roundedUp(size, kPage));
  set(last.command + 48, size);
  return static_cast<std::uint32_t>(offset);
}

}  // namespace tavlen::macho
