#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextLines.h"

namespace tavlen {

/// A source map of version 3, which leads from places in generated code to places in its source. A
/// value. Threads: one object one thread at a time; const functions any.
class TAVLEN_API SourceMap {
 public:
  /// Reads the JSON text of a map. Any map is safe to read: it is checked as a whole, and numbers
  /// that do not fit in 31 bits are refused, as engines do. Throws DecodingError. Memory: that of
  /// readJSON(), of which the map keeps about the size of `json`.
  static SourceMap decoded(std::string_view json);

  /// The place in the map's first source that the code at `generated` came from: the beginning of
  /// the piece of source of the nearest segment at or before it in its line, or else of the first
  /// one after it. Returns nothing for a line without segments, and where the segment leads to no
  /// source or to another one. Takes a walk over the segments of that line, and some before them.
  std::optional<TextPosition> sourceOf(TextPosition generated) const;

 private:
  class SegmentReader;
  /// All numbers count from 0.
  struct Segment {
    std::int64_t line = 0;
    std::int64_t column = 0;
    bool hasSource = false;
    std::int64_t source = 0;
    std::int64_t sourceLine = 0;
    std::int64_t sourceColumn = 0;
  };
  /// Where a walk can begin.
  struct Checkpoint {
    std::size_t end;  ///< that of `last` in the mappings
    Segment last;
  };

  SourceMap() = default;
  SegmentReader readerBefore(std::size_t line) const;

  std::string mappings_;
  std::size_t sourceCount_ = 0;
  std::vector<Checkpoint> checkpoints_;
};

}  // namespace tavlen
