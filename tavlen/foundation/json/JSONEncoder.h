#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// Writes JSON as the platform's encoder does at its default settings: compact, "/" escaped,
/// numbers in their shortest form; the keys of a record in the record's order.
///
/// Errors: EncodingError for a number that is not finite, a text that is not UTF-8, and nesting
/// deeper than 511 containers, more than limits::kJSONValues values. What was written until then
/// stays in `out`.
class JSONEncoder final : public Encoder {
 public:
  /// Containers in one another: the platform's limit, one less than it reads.
  static constexpr std::size_t kMaximumDepth = limits::kJSONDepth - 1;

  /// Appends to `out`, which must outlive the encoder.
  explicit JSONEncoder(std::string& out) : out_(out) {}

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
  /// The first elements of a long array, whose length tells about how much room the others take.
  struct Sample {
    std::size_t depth = 0;  ///< of the array's elements; 0 when none is being measured
    std::size_t begin = 0;  ///< of the first element, in out_
    std::size_t elementsLeft = 0;
    std::size_t elementsBehind = 0;  ///< how many the array has beyond the sample
  };

  void beginValue();
  void separate();
  void reserveForArray();
  void begin(char bracket);
  void end(char bracket);

  std::string& out_;
  std::size_t depth_ = 0;
  std::size_t values_ = 0;
  Sample sample_;
  bool first_ = true;  ///< whether what comes next needs no comma before it
};

/// Appends the JSON text of `value` to `out`. Errors as JSONEncoder's.
template <class T>
void appendJSON(std::string& out, const T& value) {
  JSONEncoder encoder(out);
  encode(encoder, value);
}

/// The JSON text of `value`. Errors as JSONEncoder's.
template <class T>
std::string encodeJSON(const T& value) {
  std::string out;
  appendJSON(out, value);
  return out;
}

/// Appends `text` as a JSON string literal. Throws EncodingError where it is not UTF-8.
void appendJSONString(std::string& out, std::string_view text);

}  // namespace tavlen
