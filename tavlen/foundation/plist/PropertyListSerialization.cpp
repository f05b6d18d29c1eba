#include "tavlen/foundation/plist/PropertyListSerialization.h"

#include "tavlen/foundation/plist/BinaryPropertyListWriter.h"
#include "tavlen/foundation/plist/detail/BinaryPropertyListReader.h"
#include "tavlen/foundation/plist/detail/XMLPropertyListReader.h"
#include "tavlen/foundation/plist/detail/XMLPropertyListWriter.h"

namespace tavlen {

namespace {

/// Whether the first character that is neither blank nor part of a byte order mark is '<', in any
/// encoding.
bool looksLikeXML(std::string_view bytes) {
  const std::size_t first =
      bytes.find_first_not_of(std::string_view(" \t\r\n\0\xEF\xBB\xBF\xFE\xFF", 10));
  return first != std::string_view::npos && bytes[first] == '<';
}

}  // namespace

std::optional<PropertyListFormat> propertyListFormatOf(std::string_view bytes) {
  if (bytes.starts_with("bplist0")) return PropertyListFormat::binary;
  if (looksLikeXML(bytes)) return PropertyListFormat::xml;
  return std::nullopt;
}

PropertyList readPropertyList(std::string_view bytes) {
  const std::optional<PropertyListFormat> format = propertyListFormatOf(bytes);
  if (!format) throw invalidPropertyList("It is neither binary nor XML.");
  return *format == PropertyListFormat::binary ? readBinaryPropertyList(bytes)
                                               : readXMLPropertyList(bytes);
}

std::string writePropertyList(const PropertyList& list, PropertyListFormat format) {
  return format == PropertyListFormat::binary ? writeBinaryPropertyList(list)
                                              : writeXMLPropertyList(list);
}

}  // namespace tavlen
