#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// The bytes of a JSON document as well-formed UTF-8 without a byte order mark.
///
/// The encoding, UTF-8, UTF-16 or UTF-32, follows from a byte order mark or from the zeros among
/// the first four bytes, as on the platform. Refers to `bytes`; copies only to convert them.
class JSONText {
 public:
  /// Throws DecodingError::dataCorrupted when the bytes are malformed in their encoding.
  explicit JSONText(std::string_view bytes);
  JSONText(const JSONText&) = delete;
  JSONText& operator=(const JSONText&) = delete;

  std::string_view view() const { return view_; }

 private:
  std::string converted_;
  std::string_view view_;
};

}  // namespace tavlen
