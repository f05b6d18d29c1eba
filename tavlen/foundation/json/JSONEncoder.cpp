#include "tavlen/foundation/json/JSONEncoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/errors/Placeholders.h"
#include "tavlen/foundation/json/detail/JSONStringWriter.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

/// The number of elements of a long array that are measured to estimate its size.
constexpr std::size_t kSampledElements = 32;

[[noreturn]] void failToRepresent(std::string_view text) {
  const std::array<std::string, 1> shown = {wellFormedUTF8(text)};
  throw EncodingError::invalidValue(fillPlaceholders(
      MainBundle::localizedString({"encodable.to_json.error", "Could not represent %@ as JSON"}),
      shown));
}

/// Up to this length, the room for a text whose every byte is escaped is taken at once.
constexpr std::size_t kShortText = 256;

constexpr std::size_t roomForJSONString(std::size_t length) {
  return roomForJSONCharacters(length) + 2;
}

/// Writes a text of at most kShortText to `to`, and returns its end.
char* writeShortString(char* to, std::string_view text) {
  bool isASCII = true;
  *to++ = '"';
  to = writeJSONCharacters(to, text, isASCII);
  *to++ = '"';
  if (!isASCII && !isValidUTF8(text)) failToRepresent(text);
  return to;
}

/// Writes the text by parts: each byte may become six, and the room for all of them at once would
/// be several times what a long text needs.
void appendLongString(TextBuffer& out, std::string_view text) {
  if (!isValidUTF8(text)) failToRepresent(text);
  bool isASCII = true;
  out += '"';
  for (std::string_view left = text; !left.empty();) {
    const std::string_view part = left.substr(0, kShortText);
    out.advance(writeJSONCharacters(out.room(roomForJSONCharacters(part.size())), part, isASCII));
    left.remove_prefix(part.size());
  }
  out += '"';
}

/// The most bytes of an integer, with its sign.
constexpr std::size_t kMostDigits = 20;

/// Writes an integer of at most kMostDigits to `to`, and returns its end.
char* writeInteger(char* to, auto value) { return std::to_chars(to, to + kMostDigits, value).ptr; }

}  // namespace

void appendJSON(TextBuffer& out, std::string_view text) {
  if (text.size() > kShortText) return appendLongString(out, text);
  out.advance(writeShortString(out.room(roomForJSONString(text.size())), text));
}

void appendJSON(TextBuffer& out, double value) {
  if (!std::isfinite(value)) {
    std::string text;
    appendDescription(text, value);
    throw EncodingError::invalidValue("Unable to encode Double." + text + " directly in JSON.");
  }
  out.advance(writeNumber(out.room(kMostNumberBytes), value));
}

void appendJSON(TextBuffer& out, std::int64_t value) {
  out.advance(writeInteger(out.room(kMostDigits), value));
}

void appendJSON(TextBuffer& out, std::uint64_t value) {
  out.advance(writeInteger(out.room(kMostDigits), value));
}

void JSONEncoder::failForValues() {
  throw EncodingError::invalidValue("more than " + std::to_string(limits::kJSONValues) + " values");
}

void JSONEncoder::failForDepth() {
  throw EncodingError::invalidValue("nested deeper than " + std::to_string(kMaximumDepth) +
                                    " containers");
}

void JSONEncoder::finish() {
  if (isWhole()) {
    out_.commit();
  } else {
    passPiece();
  }
}

void JSONEncoder::passPiece() {
  receive_(out_.view());
  out_.clear();
}

/// Reserves memory for the rest of the array. A text that grows by doubling is copied about twice
/// over, and the page faults of this cost more than the encoding itself.
void JSONEncoder::reserveForArray() {
  // Limits the damage when the first elements are much longer than the rest.
  constexpr std::size_t kMostAtOnce = std::size_t{16} << 20;
  const std::size_t perElement = (out_.size() - sample_.begin) / kSampledElements + 1;
  const std::size_t estimate = perElement * sample_.elementsAfter / 8 * 9;
  out_.reserve(std::min(estimate, kMostAtOnce));
  sample_ = {};
}

void JSONEncoder::key(std::string_view key) {
  out_.advance(separate(0));
  appendJSON(out_, key);
  out_ += ':';
  comma_ = 0;
}

void JSONEncoder::beginArray(std::size_t count) {
  begin('[');
  if (count >= 4 * kSampledElements && sample_.depth == kNoDepth && isWhole())
    sample_ = {depth_, out_.size(), kSampledElements, count - kSampledElements};
}

void JSONEncoder::integer(std::int64_t value) {
  out_.advance(writeInteger(beginValue(kMostDigits), value));
}

void JSONEncoder::unsignedInteger(std::uint64_t value) {
  out_.advance(writeInteger(beginValue(kMostDigits), value));
}

void JSONEncoder::real(double value) {
  out_.advance(beginValue(0));
  appendJSON(out_, value);
}

void JSONEncoder::string(std::string_view value) {
  if (value.size() <= kShortText) {
    char* const to = beginValue(roomForJSONString(value.size()));
    out_.advance(writeShortString(to, value));
    return;
  }
  out_.advance(beginValue(0));
  appendLongString(out_, value);
}

void JSONEncoder::date(Date value) { real(value.secondsSinceReferenceDate); }

}  // namespace tavlen
