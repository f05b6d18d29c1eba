#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

class Decoder;

/// One row of a record's table of coded fields, with the record's type forgotten.
struct FieldDecoder {
  std::string_view key;
  /// An optional field is left as it is when its key is absent, and becomes empty when a null
  /// stands there.
  bool required;
  void (*decode)(Decoder& decoder, void* record);
};

/// What a record reads itself from: one implementation a format.
///
/// A decoder stands before one value; each call below reads that value and moves past it. Inside
/// the callbacks of a container it stands before the member or element, which the callback may
/// leave unread. A wrong kind of value, a missing key and a malformed number are DecodingErrors;
/// the path is added on the error's way out. Bounded by the limits of the format in Limits.h.
class Decoder {
 public:
  virtual ~Decoder() = default;

  /// Reads a null if one stands here, else reads nothing.
  virtual bool null() = 0;
  virtual bool boolean() = 0;
  virtual std::int64_t integer() = 0;
  virtual std::uint64_t unsignedInteger() = 0;
  virtual double real() = 0;
  virtual std::string string() = 0;
  virtual Date date() = 0;

  /// Reads a keyed container into `record` by its table. Keys that the table does not hold are
  /// ignored.
  virtual void record(std::span<const FieldDecoder> fields, void* record) = 0;
  /// Reads a keyed container of unknown keys: `member` is called for each. A key may come again
  /// where the format lets it; the value that counts comes first. The key's text is valid during
  /// the call.
  virtual void members(FunctionRef<void(std::string_view key)> member) = 0;
  /// Reads an array: `element` is called for each.
  virtual void elements(FunctionRef<void()> element) = 0;

  /// Told by a caller before it takes that much memory for a value, which no callback gives back. A
  /// decoder whose format can share values throws where it becomes too much for the document.
  virtual void chargeMemory(std::size_t /*bytes*/) {}

  /// The text under `key` in the keyed container that stands here, which stays unread. Valid until
  /// the next call.
  virtual std::string_view peekString(std::string_view key) = 0;
  /// Runs `read`; if it ends with a DecodingError, the error is dropped, the decoder stands where
  /// it stood before, and the answer is false.
  virtual bool attempt(FunctionRef<void()> read) = 0;
};

}  // namespace tavlen
