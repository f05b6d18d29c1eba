#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

class Decoder;

/// A row of a record's table of coded fields, with the record's type erased.
struct TAVLEN_API FieldDecoder {
  /// The field's key.
  std::string_view key;
  /// Whether the key must exist. An optional field keeps its value when the key is absent, and
  /// becomes empty when the value is null.
  bool required;
  /// Decodes the field of `record`.
  void (*decode)(Decoder& decoder, void* record);
};

/// The source from which records decode themselves; each format implements it.
///
/// A decoder is positioned at one value. Each call below reads that value and moves past it. The
/// callback of a container is called at each member or element, and may leave it unread. A value of
/// the wrong kind, a missing key and a malformed number throw DecodingError; its path is completed
/// while it propagates. Limits.h has the limits of each format. Threads: one object one thread at a
/// time.
class TAVLEN_API Decoder {
 public:
  virtual ~Decoder() = default;

  /// Reads a null if there is one; returns whether it did.
  virtual bool null() = 0;
  /// Reads a boolean.
  virtual bool boolean() = 0;
  /// Reads an integer that fits.
  virtual std::int64_t integer() = 0;
  /// Reads an unsigned integer that fits.
  virtual std::uint64_t unsignedInteger() = 0;
  /// Reads a number.
  virtual double real() = 0;
  /// Reads a text, in UTF-8.
  virtual std::string string() = 0;
  /// Reads a date.
  virtual Date date() = 0;

  /// Reads a keyed container into `record` by its table. Other keys are ignored.
  virtual void record(std::span<const FieldDecoder> fields, void* record) = 0;
  /// Reads a keyed container of unknown keys: calls `member` for each. Where the format allows
  /// equal keys, the first call for a key has the value that counts. `key` is valid during the
  /// call.
  virtual void members(FunctionRef<void(std::string_view key)> member) = 0;
  /// Reads an array: calls `element` for each element.
  virtual void elements(FunctionRef<void()> element) = 0;

  /// To be called before memory of `bytes` is taken for a value. A decoder whose format can share
  /// values throws DecodingError when the total is out of proportion to the document.
  virtual void chargeMemory(std::size_t /*bytes*/) {}

  /// The text under `key` in the keyed container at the position, which is not moved. Valid until
  /// the next call. Throws DecodingError when the key is missing or its value is not a text.
  virtual std::string_view peekString(std::string_view key) = 0;
  /// Runs `read`. If that throws DecodingError, drops the error, restores the position and returns
  /// false.
  virtual bool attempt(FunctionRef<void()> read) = 0;
};

}  // namespace tavlen
