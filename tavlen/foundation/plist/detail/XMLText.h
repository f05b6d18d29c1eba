#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// The bytes of an XML document in an ASCII-compatible encoding.
///
/// UTF-16 and UTF-32, recognised by a byte order mark or by zeros among the first four bytes, are
/// converted to UTF-8. Otherwise the XML declaration may name UTF-8, ASCII, a part of ISO 8859 or a
/// Windows code page. Other encodings are rejected: an ASCII scan (XMLPrescan) could miss markup in
/// them. Refers to `bytes`; copies only to convert them.
class XMLText {
 public:
  /// Throws invalidPropertyList() for another encoding, text malformed in its encoding, or U+0000.
  explicit XMLText(std::string_view bytes);
  XMLText(const XMLText&) = delete;
  XMLText& operator=(const XMLText&) = delete;

  /// The text without a byte order mark.
  std::string_view view() const { return view_; }
  /// Whether view() is UTF-8, whatever its XML declaration says.
  bool isUTF8() const { return isUTF8_; }

 private:
  std::string converted_;
  std::string_view view_;
  bool isUTF8_ = false;
};

}  // namespace tavlen
