#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/Encoder.h"
#include "tavlen/foundation/plist/PropertyListBuilder.h"
#include "tavlen/foundation/plist/PropertyListSerialization.h"

namespace tavlen {

/// Encodes one value into a table. A null is the string "$null"; a record keeps the order of its
/// keys. Throws EncodingError for a string that is not valid UTF-8 and for more than `kDeepest`
/// nested containers. Threads: one object one thread at a time.
class TAVLEN_API PropertyListEncoder final : public Encoder {
 public:
  /// Maximum nesting of containers.
  static constexpr std::size_t kDeepest = 511;

  /// Returns the list. Throws EncodingError unless it is an array or a dictionary: the platform
  /// accepts no other root of the values that records code. The encoder must not be used
  /// afterwards.
  PropertyList finish();

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
  void checkDepth() const;

  PropertyListBuilder builder_;
};

/// Encodes `value` as a property list. Throws EncodingError for values that the format cannot hold.
template <class T>
std::string encodePropertyList(const T& value,
                               PropertyListFormat format = PropertyListFormat::binary) {
  PropertyListEncoder encoder;
  encode(encoder, value);
  return writePropertyList(encoder.finish(), format);
}

}  // namespace tavlen
