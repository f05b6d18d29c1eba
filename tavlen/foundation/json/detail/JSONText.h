#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// JSON bytes as well-formed UTF-8 without a byte order mark.
///
/// A document may stand in UTF-8, UTF-16 or UTF-32; a mark or the zeros among its first four bytes
/// tell, as on the platform. `bytes` is referred to, not copied, unless it has to be converted.
class JSONText {
 public:
  /// Throws DecodingError::dataCorrupted where the bytes are malformed in their encoding.
  explicit JSONText(std::string_view bytes);
  JSONText(const JSONText&) = delete;
  JSONText& operator=(const JSONText&) = delete;

  std::string_view view() const { return view_; }

 private:
  std::string converted_;
  std::string_view view_;
};

}  // namespace tavlen
