#pragma once

#include <string_view>

namespace tavlen {

/// Refuses XML that no property list needs and that takes the XML library more than linear time: a
/// document type with declarations, a tag with many attributes, and a document with many attributes
/// or instructions.
///
/// Makes one linear pass over `text`, whose encoding must be ASCII-compatible (XMLText). It only
/// finds where markup begins and ends; the XML library checks the syntax. Throws
/// invalidPropertyList().
void prescanXML(std::string_view text);

}  // namespace tavlen
