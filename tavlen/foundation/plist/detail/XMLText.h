#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// The bytes of an XML document, in an encoding that keeps the meaning of ASCII.
///
/// UTF-16 and UTF-32, which a byte order mark or the zeros among the first four bytes tell, become
/// UTF-8. Without either, the XML declaration may name UTF-8, ASCII, a part of ISO 8859 or a
/// Windows code page; in others markup could hide from who looks for ASCII. `bytes` is referred to,
/// not copied, unless it has to be converted.
class XMLText {
 public:
  /// Throws invalidPropertyList() for another encoding, text malformed in its encoding, or U+0000.
  explicit XMLText(std::string_view bytes);
  XMLText(const XMLText&) = delete;
  XMLText& operator=(const XMLText&) = delete;

  /// Without a byte order mark.
  std::string_view view() const { return view_; }
  /// Whether view() is UTF-8 whatever its XML declaration says.
  bool isUTF8() const { return isUTF8_; }

 private:
  std::string converted_;
  std::string_view view_;
  bool isUTF8_ = false;
};

}  // namespace tavlen
