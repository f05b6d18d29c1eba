#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

/// Whether all characters of `text` are printable ASCII that JSON does not escape: as the keys of
/// records are, and whole numbers.
constexpr bool isPlainText(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\' && c != '/';
  });
}

/// The target into which records encode themselves; each format implements it.
///
/// The calls form one value: a scalar; or `beginArray`, values, `endArray`; or `beginRecord`, pairs
/// of `key` and a value, `endRecord`. Throws EncodingError for a value that the format cannot hold;
/// its path is completed while it propagates. Threads: one object one thread at a time.
class TAVLEN_API Encoder {
 public:
  virtual ~Encoder() = default;

  /// Begins a keyed container, written in the order of its keys. The caller writes each key once.
  virtual void beginRecord() = 0;
  /// The same, and writes its first member, a text. It and its key are isPlainText().
  virtual void beginTypedRecord(std::string_view typeKey, std::string_view type) {
    beginRecord();
    plainKey(typeKey);
    plainString(type);
  }
  /// Writes the key of the next value.
  virtual void key(std::string_view key) = 0;
  /// The same for a key that isPlainText(), which needs no check.
  virtual void plainKey(std::string_view key) { this->key(key); }
  /// Ends the keyed container.
  virtual void endRecord() = 0;

  /// Begins an array of `count` elements.
  virtual void beginArray(std::size_t count) = 0;
  /// Ends the array.
  virtual void endArray() = 0;

  /// Writes a null.
  virtual void null() = 0;
  /// Writes a boolean.
  virtual void boolean(bool value) = 0;
  /// Writes a signed integer.
  virtual void integer(std::int64_t value) = 0;
  /// Writes an unsigned integer.
  virtual void unsignedInteger(std::uint64_t value) = 0;
  /// Writes a floating-point number.
  virtual void real(double value) = 0;
  /// Writes a UTF-8 text.
  virtual void string(std::string_view value) = 0;
  /// Writes a text that isPlainText(), which needs no check.
  virtual void plainString(std::string_view value) { string(value); }
  /// Writes a date.
  virtual void date(Date value) = 0;
};

/// An encoder: the interface, or one that is known at compile time, whose calls are then direct.
template <class T>
concept EncoderType = std::derived_from<T, Encoder>;

}  // namespace tavlen
