#pragma once

#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"

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

  /// Appends to `out`, which must outlive the encoder.
  explicit JSONEncoder(std::string& out) : out_(out) {}
  /// Passes the text to `receive` in pieces, so that it may have any length. A piece ends before a
  /// key or a value, and so never within a character.
  explicit JSONEncoder(Receiver receive)
      : out_(piece_), fullSize_(kPieceBytes), receive_(std::move(receive)) {}
  JSONEncoder(const JSONEncoder&) = delete;
  JSONEncoder& operator=(const JSONEncoder&) = delete;
  /// To be called after the value when the text is passed on in pieces: passes the last one.
  void finish() { passPiece(); }

  void beginRecord() override;
  void key(std::string_view key) override;
  void endRecord() override;
  void beginArray(std::size_t count) override;
  void endArray() override;
  void null() override;
  void boolean(bool value) override;
  void integer(std::int64_t value) override;
  void unsignedInteger(std::uint64_t value) override;
  void real(double value) override;
  void string(std::string_view value) override;
  void date(Date value) override;

 private:
  /// Measures the first elements of a long array, to estimate the size of the rest.
  struct Sample {
    std::size_t depth = 0;  ///< of the array's elements; 0 when no array is measured
    std::size_t begin = 0;  ///< offset of the first element in out_
    std::size_t elementsLeft = 0;
    std::size_t elementsAfter = 0;  ///< the number of elements after the sample
  };

  void beginValue();
  void separate();
  void reserveForArray();
  void passPiece();
  void begin(char bracket);
  void end(char bracket);

  bool isWhole() const { return receive_ == nullptr; }

  std::string piece_;  ///< what out_ refers to when the text is passed on in pieces
  std::string& out_;
  std::size_t fullSize_ = std::numeric_limits<std::size_t>::max();  ///< of out_, to be passed on
  Receiver receive_;
  std::size_t depth_ = 0;
  std::size_t values_ = 0;
  Sample sample_;
  bool first_ = true;  ///< whether the next value needs no comma before it
};

/// Appends the JSON text of `value` to `out`. Errors as for JSONEncoder.
template <class T>
void appendJSON(std::string& out, const T& value) {
  JSONEncoder encoder(out);
  encode(encoder, value);
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

/// Appends `text` as a JSON string literal. Throws EncodingError when it is not UTF-8.
TAVLEN_API void appendJSONString(std::string& out, std::string_view text);

}  // namespace tavlen
