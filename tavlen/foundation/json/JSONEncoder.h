#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/text/TextBuffer.h"

namespace tavlen {

/// Writes JSON as the platform's encoder does with its default settings: compact, "/" escaped,
/// numbers in their shortest form; the keys of a record in the record's order.
///
/// Errors: EncodingError for a number that is not finite, text that is not UTF-8, nesting deeper
/// than 511 containers, and, in a text that is a whole, more than limits::kJSONValues values. The
/// text written so far stays in `out`, or with the receiver of the pieces. Threads: one object one
/// thread at a time.
class TAVLEN_API JSONEncoder final : public Encoder {
 public:
  /// Maximum nesting of containers: the platform's limit, one less than it reads.
  static constexpr std::size_t kMaximumDepth = limits::kJSONDepth - 1;
  /// The size of a piece, in bytes. Only the last is smaller; one is larger by the value that fills
  /// it.
  static constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
  /// Receives a piece of the text, which is valid during the call.
  using Receiver = std::function<void(std::string_view piece)>;

  /// Appends to `out`, which must outlive the encoder. It has the text after finish() or the
  /// destructor, and must not be used before.
  explicit JSONEncoder(std::string& out) : out_(out), mostValues_(limits::kJSONValues) {}
  /// Passes the text to `receive` in pieces, so that it may have any length. A piece ends before a
  /// key or a value, and so never within a character.
  explicit JSONEncoder(Receiver receive)
      : out_(piece_), fullSize_(kPieceBytes), receive_(std::move(receive)) {}
  JSONEncoder(const JSONEncoder&) = delete;
  JSONEncoder& operator=(const JSONEncoder&) = delete;
  /// To be called after the value: gives the string the text, or passes the last piece.
  void finish();

  void beginRecord() override { begin('{'); }
  /// One check of the room for all of it: a box is the most frequent value of a manifest.
  [[gnu::always_inline]] void beginTypedRecord(std::string_view typeKey,
                                               std::string_view type) override {
    char* to = beginValue(typeKey.size() + type.size() + 6);
    if (++depth_ > kMaximumDepth) failForDepth();
    countValue();
    *to++ = '{';
    to = writeQuoted(to, typeKey);
    *to++ = ':';
    out_.advance(writeQuoted(to, type));
    comma_ = 1;
  }
  void key(std::string_view key) override;
  [[gnu::always_inline]] void plainKey(std::string_view key) override {
    char* const to = writeQuoted(separate(key.size() + 3), key);
    *to = ':';
    out_.advance(to + 1);
    comma_ = 0;
  }
  void endRecord() override { end('}'); }
  void beginArray(std::size_t count) override;
  void endArray() override { end(']'); }
  void null() override { constant("null"); }
  void boolean(bool value) override { constant(value ? "true" : "false"); }
  void integer(std::int64_t value) override;
  void unsignedInteger(std::uint64_t value) override;
  void real(double value) override;
  void string(std::string_view value) override;
  [[gnu::always_inline]] void plainString(std::string_view value) override {
    out_.advance(writeQuoted(beginValue(value.size() + 2), value));
  }
  void date(Date value) override;

 private:
  /// No array is measured.
  static constexpr std::size_t kNoDepth = std::numeric_limits<std::size_t>::max();

  /// Measures the first elements of a long array, to estimate the size of the rest.
  struct Sample {
    std::size_t depth = kNoDepth;  ///< of the array's elements, or kNoDepth
    std::size_t begin = 0;         ///< offset of the first element in out_
    std::size_t elementsLeft = 0;
    std::size_t elementsAfter = 0;  ///< the number of elements after the sample
  };

  /// Begins a value: a pointer to which `room` bytes may be written, up to advance().
  [[gnu::always_inline]] char* beginValue(std::size_t room) {
    countValue();
    if (depth_ == sample_.depth && sample_.elementsLeft-- == 0) reserveForArray();
    return separate(room);
  }
  void countValue() {
    if (++values_ > mostValues_) failForValues();
  }
  /// The same for a key. Writes the comma before it.
  char* separate(std::size_t room) {
    if (out_.size() >= fullSize_) passPiece();
    char* const to = out_.room(room + 1);
    *to = ',';
    return to + std::exchange(comma_, 1);
  }
  void begin(char bracket) {
    char* const to = beginValue(1);
    if (++depth_ > kMaximumDepth) failForDepth();
    *to = bracket;
    out_.advance(to + 1);
    comma_ = 0;
  }
  void end(char bracket) {
    out_ += bracket;
    --depth_;
    comma_ = 1;
  }
  /// Writes what needs no escape to `to`, and returns its end.
  [[gnu::always_inline]] static char* writeQuoted(char* to, std::string_view text) {
    *to++ = '"';
    std::memcpy(to, text.data(), text.size());
    to += text.size();
    *to++ = '"';
    return to;
  }
  void constant(std::string_view text) {
    char* const to = beginValue(text.size());
    std::memcpy(to, text.data(), text.size());
    out_.advance(to + text.size());
  }
  void reserveForArray();
  void passPiece();
  [[noreturn]] static void failForValues();
  [[noreturn]] static void failForDepth();

  bool isWhole() const { return receive_ == nullptr; }

  std::string piece_;  ///< what out_ appends to when the text is passed on in pieces
  TextBuffer out_;
  std::size_t fullSize_ = std::numeric_limits<std::size_t>::max();  ///< of out_, to be passed on
  std::size_t mostValues_ = std::numeric_limits<std::size_t>::max();
  Receiver receive_;
  std::size_t depth_ = 0;
  std::size_t values_ = 0;
  Sample sample_;
  std::size_t comma_ = 0;  ///< the number of commas before the next key or value
};

/// Appends the JSON text of `value` to `out`. Errors as for JSONEncoder.
template <class T>
void appendJSON(std::string& out, const T& value) {
  JSONEncoder encoder(out);
  encode(encoder, value);
  encoder.finish();
}

/// Passes the JSON text of `value` to `receive` in pieces. Errors as for JSONEncoder, and what
/// `receive` throws.
template <class T>
void writeJSON(const T& value, JSONEncoder::Receiver receive) {
  JSONEncoder encoder(std::move(receive));
  encode(encoder, value);
  encoder.finish();
}

/// The JSON text of `value`. Errors as for JSONEncoder.
template <class T>
std::string encodeJSON(const T& value) {
  std::string out;
  appendJSON(out, value);
  return out;
}

/// Appends the JSON text of a scalar. Throws EncodingError for text that is not UTF-8, and for a
/// number that is not finite.
TAVLEN_API void appendJSON(TextBuffer& out, std::string_view text);
TAVLEN_API void appendJSON(TextBuffer& out, double value);
TAVLEN_API void appendJSON(TextBuffer& out, std::int64_t value);
TAVLEN_API void appendJSON(TextBuffer& out, std::uint64_t value);
void appendJSON(TextBuffer& out, std::same_as<bool> auto value) { out += value ? "true" : "false"; }

}  // namespace tavlen
