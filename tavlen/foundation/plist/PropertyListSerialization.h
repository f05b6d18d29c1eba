#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

enum class PropertyListFormat { binary, xml };

/// Reads a list of either form, told by its first bytes. Throws invalidPropertyList().
PropertyList readPropertyList(std::string_view bytes);

/// Writes `list`, which must not be empty. Throws EncodingError for what the form cannot hold.
std::string writePropertyList(const PropertyList& list, PropertyListFormat format);

}  // namespace tavlen
