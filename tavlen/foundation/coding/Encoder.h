#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

/// What a record writes itself into: one implementation a format.
///
/// Calls form one value: a scalar, `beginArray`, values, `endArray`, or `beginRecord`, pairs of
/// `key` and a value, `endRecord`. Errors: EncodingError for a value that the format cannot hold,
/// with the path added on its way out.
class Encoder {
 public:
  virtual ~Encoder() = default;

  /// A keyed container, written in the order of its keys. The caller writes each key once.
  virtual void beginRecord() = 0;
  virtual void key(std::string_view key) = 0;
  virtual void endRecord() = 0;

  virtual void beginArray(std::size_t count) = 0;
  virtual void endArray() = 0;

  virtual void null() = 0;
  virtual void boolean(bool value) = 0;
  virtual void integer(std::int64_t value) = 0;
  virtual void unsignedInteger(std::uint64_t value) = 0;
  virtual void real(double value) = 0;
  virtual void string(std::string_view value) = 0;
  virtual void date(Date value) = 0;
};

}  // namespace tavlen
