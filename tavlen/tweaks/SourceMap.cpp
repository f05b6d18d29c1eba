#include "tavlen/tweaks/SourceMap.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/text/Base64.h"

namespace tavlen {

namespace {

constexpr std::int64_t kVersion = 3;
constexpr const char* kMappings = "mappings";

struct MapRecord {
  std::int64_t version = 0;
  std::vector<std::optional<std::string>> sources;
  std::string mappings;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("version", &MapRecord::version),
        requiredField("sources", &MapRecord::sources),
        requiredField(kMappings, &MapRecord::mappings),
    };
  }
};

std::size_t fromOne(std::int64_t number) { return static_cast<std::size_t>(number) + 1; }

}  // namespace

/// Reads mappings segment by segment.
class SourceMap::SegmentReader {
 public:
  SegmentReader(std::string_view mappings, std::size_t sourceCount, const Checkpoint& start = {})
      : mappings_(mappings), sourceCount_(sourceCount), at_(start.end), segment_(start.last) {}

  /// After the last segment that was read.
  Checkpoint checkpoint() const { return {at_, segment_}; }

  /// The next segment; nothing at the end. Throws DecodingError, after which the reader is of no
  /// use.
  std::optional<Segment> next() {
    for (; at_ < mappings_.size() && isSeparator(); ++at_) {
      if (mappings_[at_] == ',') continue;
      ++segment_.line;
      segment_.column = 0;
    }
    if (at_ == mappings_.size()) return std::nullopt;
    readSegment();
    return segment_;
  }

 private:
  bool isSeparator() const { return mappings_[at_] == ',' || mappings_[at_] == ';'; }

  [[noreturn]] void fail(const char* problem) const {
    throw DecodingError::dataCorrupted(std::string(problem) + " at character " +
                                       std::to_string(at_));
  }

  void readSegment() {
    std::array<std::int64_t, 5> numbers{};
    std::size_t count = 0;
    for (; at_ < mappings_.size() && !isSeparator(); ++count) {
      if (count == numbers.size()) fail("a segment with too many numbers");
      numbers[count] = readNumber();
    }
    if (count != 1 && count < 4) fail("a segment with too few numbers");
    advance(segment_.column, numbers[0]);
    segment_.hasSource = count > 1;
    if (!segment_.hasSource) return;
    advance(segment_.source, numbers[1]);
    if (static_cast<std::size_t>(segment_.source) >= sourceCount_) fail("an unknown source");
    advance(segment_.sourceLine, numbers[2]);
    advance(segment_.sourceColumn, numbers[3]);
    // The fifth number is the place of a name, which is not of interest here.
  }

  void advance(std::int64_t& value, std::int64_t step) const {
    value += step;
    if (value < 0 || value > kMost) fail("a number out of range");
  }

  /// A number in base 32, the lowest digit first. Bit 5 of a digit announces another one; the
  /// lowest bit of the number is its sign.
  std::int64_t readNumber() {
    std::int64_t value = 0;
    for (int shift = 0;; shift += 5) {
      if (shift > 30) fail("a number out of range");
      const auto digit = at_ < mappings_.size() ? valueOfBase64Digit(mappings_[at_]) : std::nullopt;
      if (!digit) fail("a malformed number");
      ++at_;
      value |= std::int64_t{*digit & 31} << shift;
      if ((*digit & 32) == 0) break;
    }
    return (value & 1) != 0 ? -(value >> 1) : value >> 1;
  }

  static constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();

  std::string_view mappings_;
  std::size_t sourceCount_;
  std::size_t at_;
  Segment segment_;
};

SourceMap SourceMap::decoded(std::string_view json) {
  auto record = decodeJSON<MapRecord>(json);
  if (record.version != kVersion) {
    underKey("version", [&] {
      throw DecodingError::dataCorrupted("unknown version " + std::to_string(record.version));
    });
  }
  SourceMap map;
  underKey(kMappings, [&] {
    constexpr std::size_t kInterval = 1024;
    SegmentReader reader(record.mappings, record.sources.size());
    for (std::size_t next = kInterval; reader.next();) {
      const Checkpoint checkpoint = reader.checkpoint();
      if (checkpoint.end < next) continue;
      map.checkpoints_.push_back(checkpoint);
      next = checkpoint.end + kInterval;
    }
  });
  map.mappings_ = std::move(record.mappings);
  map.sourceCount_ = record.sources.size();
  return map;
}

/// A reader that begins near the line's first segment, and not after it.
SourceMap::SegmentReader SourceMap::readerBefore(std::size_t line) const {
  const auto after = std::partition_point(
      checkpoints_.begin(), checkpoints_.end(),
      [&](const Checkpoint& checkpoint) { return fromOne(checkpoint.last.line) < line; });
  return {mappings_, sourceCount_, after == checkpoints_.begin() ? Checkpoint{} : *(after - 1)};
}

std::optional<TextPosition> SourceMap::sourceOf(TextPosition generated) const {
  SegmentReader reader = readerBefore(generated.line);
  std::optional<Segment> nearest;
  std::optional<Segment> next;
  while (const auto segment = reader.next()) {
    const std::size_t line = fromOne(segment->line);
    if (line > generated.line) break;
    if (line < generated.line) continue;
    // Segments need not be in order.
    if (fromOne(segment->column) > generated.column) {
      if (!next || segment->column < next->column) next = segment;
    } else if (!nearest || segment->column >= nearest->column) {
      nearest = segment;
    }
  }
  if (!nearest) nearest = next;
  if (!nearest || !nearest->hasSource || nearest->source != 0) return std::nullopt;
  return TextPosition{fromOne(nearest->sourceLine), fromOne(nearest->sourceColumn)};
}

}  // namespace tavlen
