#pragma once

#include <string_view>

namespace tavlen {

/// Refuses XML that no property list needs and that costs the XML library more than linear time:
/// a document type with declarations of its own, a tag with many attributes, and a document with
/// many attributes or instructions.
///
/// One linear pass over `text`, in an encoding that keeps the meaning of ASCII (XMLText). It
/// decides only where markup begins and ends; the syntax is the XML library's. Throws
/// invalidPropertyList().
void prescanXML(std::string_view text);

}  // namespace tavlen
